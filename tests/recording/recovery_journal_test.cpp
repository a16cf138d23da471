#include "recording/recovery_journal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/temp_dir.h"

namespace {

using namespace lv;
namespace fs = std::filesystem;
using Header = RecoveryJournal::Header;

const Header kHeader{50829, 8831, 44100, 1, 4, "Rec007"};

lvdRecord frame(std::int32_t timeMs) {
    return {.TimeMs = timeMs, .RawData = -3, .StatusFlags = 0x20, .FrameType = 'P'};
}

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A journal written and then left as a crash leaves it: flushed, never discarded.
void crash(const fs::path& folder, int records, const Header& header = kHeader) {
    RecoveryJournal journal;
    ASSERT_TRUE(journal.open(folder, header));
    for (int i = 1; i <= records; ++i) journal.appendRecord(frame(i * 20));
    journal.appendAudio("LEAD");
    journal.appendAudio("pcm-data");
    ASSERT_TRUE(journal.flush());
}

TEST(RecoveryJournal, ACrashLeavesTheRecordsAndTheSoundToRecover) {
    test::TempDir dir("lv_journal");
    crash(dir.path(), 3);

    RecordingState state;
    const auto got = RecoveryJournal::recover(dir.path(), state);
    ASSERT_TRUE(got);
    EXPECT_EQ(got->header, kHeader);
    EXPECT_EQ(got->recordCount, 3);
    ASSERT_EQ(state.buffer.RecCount, 3);
    for (std::int32_t i = 1; i <= 3; ++i) EXPECT_EQ(state.buffer(i), frame(i * 20));
    EXPECT_EQ(state.buffer.TotalTimeMs, 60);
    EXPECT_EQ(state.buffer.StartTimeSecs, 50829);
    EXPECT_EQ(state.buffer.RecordingDate, dateFromDays(8831));
    EXPECT_TRUE(state.RecNotSaved && state.RecHasData);
    EXPECT_EQ(state.playEnd, 3);
    EXPECT_EQ(state.SaveName, "Rec007");

    // The sound less its lead-in, as a 22050 Hz 16-bit mono PCM wave.
    ASSERT_TRUE(got->waveFile);
    const char header[] =
        "RIFF\x2c\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x22\x56\0\0\x44\xac\0\0\x02\0\x10\0"
        "data\x08\0\0\0";
    EXPECT_EQ(readFile(*got->waveFile), std::string(header, 44) + "pcm-data");
}

TEST(RecoveryJournal, ATornOrUnwrittenTailIsDroppedAndATornHeaderIsNothing) {
    // A record cut short, all but its last byte, zeros where a write never landed.
    for (const std::string& tail :
         {std::string(), std::string(7, 'x'), std::string(19, 'P'), std::string(40, '\0')}) {
        test::TempDir dir("lv_journal");
        crash(dir.path(), 3);
        std::ofstream(dir.path() / RecoveryJournal::kRecordsFile, std::ios::binary | std::ios::app)
            << tail;
        RecordingState state;
        const auto got = RecoveryJournal::recover(dir.path(), state);
        ASSERT_TRUE(got) << tail.size();
        EXPECT_EQ(got->recordCount, 3) << tail.size();
        EXPECT_EQ(state.buffer.RecCount, 3) << tail.size();
    }
    for (const std::uintmax_t size : {0, 100, 511}) {
        test::TempDir dir("lv_journal");
        crash(dir.path(), 3);
        fs::resize_file(dir.path() / RecoveryJournal::kRecordsFile, size);
        RecordingState state;
        EXPECT_FALSE(RecoveryJournal::recover(dir.path(), state)) << size;
        EXPECT_FALSE(state.RecNotSaved || state.buffer.RecCount != 0);
    }
}

TEST(RecoveryJournal, NothingWithoutRecordsNoSoundOnceGivenUpAndDiscardRemovesAll) {
    test::TempDir dir("lv_journal");
    EXPECT_FALSE(RecoveryJournal::find(dir.path()));
    crash(dir.path(), 0);
    EXPECT_FALSE(RecoveryJournal::find(dir.path()));

    RecoveryJournal journal;
    ASSERT_TRUE(journal.open(dir.path(), kHeader));
    journal.appendRecord(frame(20));
    journal.appendAudio("LEADpcm");
    Header later = kHeader;
    later.AudioBytesPerSec = 1000;             // the sound was given up
    later.SaveName = std::string(600, 'n');    // longer than the header holds
    ASSERT_TRUE(journal.updateHeader(later));  // in place, records kept
    journal.appendRecord(frame(40));
    journal.close();
    RecordingState state;
    const auto got = RecoveryJournal::recover(dir.path(), state);
    ASSERT_TRUE(got);
    EXPECT_EQ(got->recordCount, 2);
    EXPECT_EQ(got->header.SaveName, std::string(482, 'n'));
    EXPECT_FALSE(got->pcmFile || got->waveFile);

    journal.discard();
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

}  // namespace
