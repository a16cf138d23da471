#pragma once
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "recording/lvd_record.h"
#include "settings/settings.h"

// A recording in progress, kept on disk as it is made, so that a crash, a
// power cut or a kill loses at most the last second of it. Two files in the
// data folder: the records behind a small header, and the raw sound as it was
// captured (16-bit mono 22050 Hz, lead-in included). A normal save removes
// them; the next start-up turns what is left into an ordinary recording in a
// folder of its own before anything else can happen.
namespace lv {

class RecoveryJournal {
public:
    static constexpr const char* kRecordsFile = "recovery.lvdj";
    static constexpr const char* kAudioFile = "recovery.pcm";
    // Where preserve() puts interrupted sessions, inside the data folder.
    static constexpr const char* kRecoveredFolder = "recovered";

    struct Header {
        std::int32_t StartTimeSecs = 0;
        std::int32_t StartDays = 0;
        std::int32_t AudioBytesPerSec = 1000;  // 44100 when sound is captured
        std::int32_t dialType = 0;
        std::int32_t audioLeadInBytes = 0;  // cut from the sound's start, as Stop cuts it
        std::string SaveName;
        friend bool operator==(const Header&, const Header&) = default;
    };

    struct Recovered {
        Header header;
        std::int32_t recordCount = 0;  // complete, valid records
        std::filesystem::path recordsFile;
        std::optional<std::filesystem::path> pcmFile;  // when sound past the lead-in is there
    };

    struct Preserved {
        enum class Outcome { Nothing, Kept, Failed } outcome = Outcome::Nothing;
        std::int32_t recordCount = 0;
        std::filesystem::path lvdFile;                 // when kept
        std::optional<std::filesystem::path> wavFile;  // when kept with its sound
        std::string error;                             // when failed
    };

    RecoveryJournal() = default;
    RecoveryJournal(const RecoveryJournal&) = delete;
    RecoveryJournal& operator=(const RecoveryJournal&) = delete;
    // Closes the files and leaves them: a journal outlives its writer.
    ~RecoveryJournal();

    // Starts a journal afresh in the folder. A journal with records already
    // there is someone's interrupted session, and one held open is another
    // instance's recording: then nothing is opened and it stays as it is. One
    // without records is replaced.
    bool open(const std::filesystem::path& folder, const Header& header);
    bool isOpen() const { return m_records >= 0; }
    // Rewrites the header in place, e.g. when the sound is given up.
    bool updateHeader(const Header& header);

    // Each goes to the file at once; flush() makes it durable.
    void appendRecord(const lvdRecord& record);
    void appendAudio(std::string_view pcm);
    // Everything written so far onto the disk itself.
    bool flush();
    // How many flushes reached the disk since open: what a crash can lose
    // is what was written after the last one.
    int durableFlushes() const { return m_flushes; }
    // Flushes and closes; the files stay for a later recovery.
    void close();
    // Closes and removes the files of the folder last opened.
    void discard();

    // The journal left in the folder, if it holds at least one record. A torn
    // last record (a write cut short) and anything after the first record
    // that is not a frame are left out.
    static std::optional<Recovered> find(const std::filesystem::path& folder);
    // Turns the journal left in `folder` into an ordinary recording in
    // `into` (created when missing): a .lvd stamped with its start, and the
    // sound less its lead-in as a .wav, named by the start's date and time and
    // never over an existing file. The journal goes only once both are on
    // the disk; a journal without records simply goes; one held open by a
    // recorder is left alone (Nothing).
    static Preserved preserve(const std::filesystem::path& folder,
                              const std::filesystem::path& into, const Settings& settings);
    static void removeFiles(const std::filesystem::path& folder);

    // A 16-bit mono 22050 Hz wave of the raw sound from `skipBytes` on.
    static bool writeWave(const std::filesystem::path& pcm, std::int64_t skipBytes,
                          const std::filesystem::path& wave);

private:
    bool writeTo(int fd, const void* data, std::size_t size);

    std::filesystem::path m_folder;
    int m_records = -1;
    int m_audio = -1;
    int m_flushes = 0;
    bool m_failed = false;  // a write failed: the journal is given up, the recording is not
};

}  // namespace lv
