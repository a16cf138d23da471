#include "recording/recovery_journal.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>

#include "recording/lvd_file.h"
#include "support/lvd_files.h"
#include "support/temp_dir.h"

namespace {

using namespace lv;
namespace fs = std::filesystem;
using Header = RecoveryJournal::Header;

const Header kHeader{50829, 8831, 44100, 1, 4, "Rec007"};

// A journal written and then left as a crash leaves it: flushed, never discarded.
void crash(const fs::path& folder, int records) {
    RecoveryJournal journal;
    ASSERT_TRUE(journal.open(folder, kHeader));
    for (const lvdRecord& r : test::steady(records)) journal.appendRecord(r);
    journal.appendAudio("LEAD");
    journal.appendAudio("pcm-data");
    ASSERT_TRUE(journal.flush());
}

TEST(RecoveryJournal, ACrashIsKeptAsAStampedPairNamedByItsStartNeverOverAnotherFile) {
    test::TempDir dir("lv_journal");
    const fs::path into = dir.path() / RecoveryJournal::kRecoveredFolder;
    const Settings cfg;
    const std::string names[] = {"24-03-05__14.07.09", "24-03-05__14.07.09_2"};
    for (const std::string& name : names) {
        crash(dir.path(), 5);
        // A second journal with the same start lands beside the first.
        const auto kept = RecoveryJournal::preserve(dir.path(), into, cfg);
        ASSERT_EQ(std::tuple(kept.outcome, kept.lvdFile, kept.wavFile),
                  std::tuple(RecoveryJournal::Preserved::Outcome::Kept, into / (name + ".lvd"),
                             std::optional(into / (name + ".wav"))))
            << kept.error;
        EXPECT_FALSE(RecoveryJournal::find(dir.path())) << "the journal goes once kept";

        // An ordinary recording: the loader takes it, with its start.
        RecBuffer buffer;
        ASSERT_TRUE(loadLvdFile(kept.lvdFile, 1, buffer).ok());
        EXPECT_EQ(
            std::tuple(buffer.RecCount, buffer.TotalTimeMs, buffer.StartTimeSecs, buffer.StartDays),
            std::tuple(5, 100, 50829, 8831));
        // The sound less its lead-in, as a 22050 Hz 16-bit mono PCM wave.
        const char header[] =
            "RIFF\x2c\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x22\x56\0\0\x44\xac\0\0\x02\0\x10\0"
            "data\x08\0\0\0";
        EXPECT_EQ(test::readFile(*kept.wavFile), std::string(header, 44) + "pcm-data");
    }
    EXPECT_EQ(RecoveryJournal::preserve(dir.path(), into, cfg).outcome,
              RecoveryJournal::Preserved::Outcome::Nothing);

    // A place that cannot take it: the journal stays, and no new one replaces it.
    crash(dir.path(), 2);
    test::writeFile(dir.path() / "blocked", "x");
    const auto failed = RecoveryJournal::preserve(dir.path(), dir.path() / "blocked" / "r", cfg);
    EXPECT_EQ(std::pair(failed.outcome, failed.error.empty()),
              std::pair(RecoveryJournal::Preserved::Outcome::Failed, false));
    RecoveryJournal next;
    EXPECT_FALSE(next.open(dir.path(), kHeader));
    EXPECT_EQ(RecoveryJournal::find(dir.path()).value().recordCount, 2);
}

TEST(RecoveryJournal, ATornOrUnwrittenTailIsDroppedAndATornHeaderIsNothing) {
    // A record all but its last byte, zeros where a write never landed, a header cut short.
    const std::pair<std::string, std::optional<std::uintmax_t>> cases[] = {
        {std::string(19, 'P'), {}}, {std::string(40, '\0'), {}}, {"", 0}, {"", 511}};
    for (const auto& [tail, size] : cases) {
        test::TempDir dir("lv_journal");
        crash(dir.path(), 3);
        const fs::path records = dir.path() / RecoveryJournal::kRecordsFile;
        test::writeFile(records, test::readFile(records) + tail);
        if (size) fs::resize_file(records, *size);
        const auto found = RecoveryJournal::find(dir.path());
        EXPECT_EQ(found.has_value(), !size);
        EXPECT_EQ(found ? found->recordCount : 0, size ? 0 : 3) << tail.size();
    }
}

TEST(RecoveryJournal, NothingWithoutRecordsNoSoundOnceGivenUpAndDiscardRemovesAll) {
    test::TempDir dir("lv_journal");
    crash(dir.path(), 0);
    EXPECT_FALSE(RecoveryJournal::find(dir.path()));
    RecoveryJournal journal;
    ASSERT_TRUE(journal.open(dir.path(), kHeader));
    journal.appendRecord(test::frame(20));
    journal.appendAudio("LEADpcm");
    // In place, records kept: the sound was given up, a name longer than the header holds.
    Header later = kHeader;
    std::tie(later.AudioBytesPerSec, later.SaveName) = std::tuple(1000, std::string(600, 'n'));
    ASSERT_TRUE(journal.updateHeader(later));
    journal.appendRecord(test::frame(40));
    // Held open: a recording in progress, here or in another instance.
    EXPECT_EQ(RecoveryJournal::preserve(dir.path(), dir.path() / "r", Settings{}).outcome,
              RecoveryJournal::Preserved::Outcome::Nothing);
    RecoveryJournal other;
    EXPECT_FALSE(other.open(dir.path(), kHeader));
    journal.close();
    const auto got = RecoveryJournal::find(dir.path());
    ASSERT_TRUE(got);
    EXPECT_EQ(std::tuple(got->recordCount, got->header.SaveName, !!got->pcmFile),
              std::tuple(2, std::string(482, 'n'), false));
    journal.discard();
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

}  // namespace
