#include "recording/recovery_journal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <tuple>

#include "support/temp_dir.h"

namespace {

using namespace lv;
namespace fs = std::filesystem;
using Header = RecoveryJournal::Header;

const Header kHeader{50829, 8831, 44100, 1, 4, "Rec007"};

lvdRecord frame(std::int32_t timeMs) {
    return {.TimeMs = timeMs, .RawData = -3, .StatusFlags = 0x20, .FrameType = 'P'};
}

// A journal written and then left as a crash leaves it: flushed, never discarded.
void crash(const fs::path& folder, int records) {
    RecoveryJournal journal;
    ASSERT_TRUE(journal.open(folder, kHeader));
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
    ASSERT_EQ(state.buffer.RecCount, 3);
    EXPECT_EQ(state.buffer(3), frame(60));
    EXPECT_EQ(std::tuple(state.buffer.StartTimeSecs, state.playEnd, state.SaveName),
              std::tuple(50829, 3, "Rec007"));
    EXPECT_TRUE(state.RecNotSaved && state.RecHasData);

    // The sound less its lead-in, as a 22050 Hz 16-bit mono PCM wave.
    ASSERT_TRUE(got->waveFile);
    const char header[] =
        "RIFF\x2c\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x22\x56\0\0\x44\xac\0\0\x02\0\x10\0"
        "data\x08\0\0\0";
    std::ifstream wave(*got->waveFile, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(wave), {}),
              std::string(header, 44) + "pcm-data");
}

TEST(RecoveryJournal, ATornOrUnwrittenTailIsDroppedAndATornHeaderIsNothing) {
    // A record all but its last byte, zeros where a write never landed, a header cut short.
    const std::pair<std::string, std::optional<std::uintmax_t>> cases[] = {
        {std::string(19, 'P'), {}}, {std::string(40, '\0'), {}}, {"", 0}, {"", 511}};
    for (const auto& [tail, size] : cases) {
        test::TempDir dir("lv_journal");
        crash(dir.path(), 3);
        const fs::path records = dir.path() / RecoveryJournal::kRecordsFile;
        std::ofstream(records, std::ios::binary | std::ios::app) << tail;
        if (size) fs::resize_file(records, *size);
        RecordingState state;
        EXPECT_EQ(RecoveryJournal::recover(dir.path(), state).has_value(), !size);
        EXPECT_EQ(state.buffer.RecCount, size ? 0 : 3) << tail.size();
    }
}

TEST(RecoveryJournal, NothingWithoutRecordsNoSoundOnceGivenUpAndDiscardRemovesAll) {
    test::TempDir dir("lv_journal");
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
    EXPECT_EQ(state.buffer(2), frame(40));
    EXPECT_EQ(got->header.SaveName, std::string(482, 'n'));
    EXPECT_FALSE(got->pcmFile || got->waveFile);
    journal.discard();
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

}  // namespace
