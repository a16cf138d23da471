#pragma once
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "recording/lvd_record.h"
#include "recording/recording_state.h"

// A recording in progress, kept on disk as it is made, so that a crash, a
// power cut or a kill loses at most the last second of it. Two files in the
// data folder: the records behind a small header, and the raw sound as it was
// captured (16-bit mono 22050 Hz, lead-in included). A normal save removes
// them; the next start-up finds what is left and offers it back.
namespace lv {

class RecoveryJournal {
public:
    static constexpr const char* kRecordsFile = "recovery.lvdj";
    static constexpr const char* kAudioFile = "recovery.pcm";
    // Written by recover(): the captured sound less its lead-in, as a wave.
    static constexpr const char* kWaveFile = "recovery.wav";

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
        std::optional<std::filesystem::path> pcmFile;   // when sound past the lead-in is there
        std::optional<std::filesystem::path> waveFile;  // set by recover() once written
    };

    RecoveryJournal() = default;
    RecoveryJournal(const RecoveryJournal&) = delete;
    RecoveryJournal& operator=(const RecoveryJournal&) = delete;
    // Closes the files and leaves them: a journal outlives its writer.
    ~RecoveryJournal();

    // Starts a journal afresh in the folder (any earlier one there is replaced).
    bool open(const std::filesystem::path& folder, const Header& header);
    bool isOpen() const { return m_records >= 0; }
    // Rewrites the header in place, e.g. when the sound is given up.
    bool updateHeader(const Header& header);

    // Each goes to the file at once; flush() makes it durable.
    void appendRecord(const lvdRecord& record);
    void appendAudio(std::string_view pcm);
    // Everything written so far onto the disk itself.
    bool flush();
    // Flushes and closes; the files stay for a later recovery.
    void close();
    // Closes and removes the files of the folder last opened.
    void discard();

    // The journal left in the folder, if it holds at least one record. A torn
    // last record (a write cut short) and anything after the first record
    // that is not a frame are left out.
    static std::optional<Recovered> find(const std::filesystem::path& folder);
    // Loads the journal's records into the buffer as a recording that is
    // still to be saved, and writes the sound as kWaveFile beside it.
    static std::optional<Recovered> recover(const std::filesystem::path& folder,
                                            RecordingState& state);
    static void removeFiles(const std::filesystem::path& folder);

    // A 16-bit mono 22050 Hz wave of the raw sound from `skipBytes` on.
    static bool writeWave(const std::filesystem::path& pcm, std::int64_t skipBytes,
                          const std::filesystem::path& wave);

private:
    bool writeTo(int fd, const void* data, std::size_t size);

    std::filesystem::path m_folder;
    int m_records = -1;
    int m_audio = -1;
    bool m_failed = false;  // a write failed: the journal is given up, the recording is not
};

}  // namespace lv
