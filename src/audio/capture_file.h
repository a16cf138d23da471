#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "audio/sound_decoder.h"

namespace lv {

// The sound of a recording as it arrives, kept on disk so that memory stays
// flat however long the session: an unnamed file in a folder, gone with the
// process (the recovery journal keeps its own copy for a crash). Should the
// disk refuse a write, the bytes wait in memory and are written with the next
// ones: nothing recorded is dropped.
class CaptureFile {
public:
    CaptureFile() = default;
    ~CaptureFile();
    CaptureFile(const CaptureFile&) = delete;
    CaptureFile& operator=(const CaptureFile&) = delete;

    // Creates the file in folder. False if the folder takes no files.
    bool open(const std::string& folder);
    bool isOpen() const { return m_fd >= 0; }
    void append(std::string_view bytes);
    // Bytes captured so far, written or waiting.
    std::int64_t size() const { return m_written + static_cast<std::int64_t>(m_waiting.size()); }
    // Up to n bytes from offset; the count read, -1 if the file fails.
    std::int64_t readAt(std::int64_t offset, char* out, std::int64_t n) const;

private:
    void flushWaiting();

    int m_fd = -1;
    std::int64_t m_written = 0;
    std::string m_waiting;
};

// The captured 16-bit samples from a byte offset on, read as a sound.
std::unique_ptr<SoundDecoder> captureDecoder(std::shared_ptr<const CaptureFile> file,
                                             std::int64_t fromByte, int sampleRate, int channels);

}  // namespace lv
