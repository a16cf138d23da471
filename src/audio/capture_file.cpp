#include "audio/capture_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace lv {

CaptureFile::~CaptureFile() {
    if (m_fd >= 0) ::close(m_fd);
}

bool CaptureFile::open(const std::string& folder) {
    if (m_fd >= 0) ::close(m_fd);
    m_fd = -1;
    m_written = 0;
    m_waiting.clear();
    const std::string dir = folder.empty() ? "." : folder;
    // A file without a name leaves nothing behind, however the process ends.
    m_fd = ::open(dir.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (m_fd >= 0) return true;
    // Some file systems have no unnamed files: name one and unlink it at once.
    std::string name = dir + "/.lv_capture_XXXXXX";
    m_fd = ::mkostemp(name.data(), O_CLOEXEC);
    if (m_fd < 0) return false;
    ::unlink(name.c_str());
    return true;
}

void CaptureFile::flushWaiting() {
    std::size_t done = 0;
    while (done < m_waiting.size()) {
        const ssize_t n = ::pwrite(m_fd, m_waiting.data() + done, m_waiting.size() - done,
                                   static_cast<off_t>(m_written));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += static_cast<std::size_t>(n);
        m_written += n;
    }
    m_waiting.erase(0, done);
}

void CaptureFile::append(std::string_view bytes) {
    m_waiting.append(bytes);
    if (m_fd >= 0) flushWaiting();
}

std::int64_t CaptureFile::readAt(std::int64_t offset, char* out, std::int64_t n) const {
    n = std::max<std::int64_t>(0, std::min(n, size() - offset));
    std::int64_t done = 0;
    while (done < n && offset + done < m_written) {
        const std::int64_t want = std::min(n - done, m_written - (offset + done));
        const ssize_t got = ::pread(m_fd, out + done, static_cast<std::size_t>(want),
                                    static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return -1;
        done += got;
    }
    if (done < n) {
        const std::int64_t from = offset + done - m_written;
        std::memcpy(out + done, m_waiting.data() + from, static_cast<std::size_t>(n - done));
        done = n;
    }
    return done;
}

namespace {

class CaptureDecoder : public SoundDecoder {
public:
    CaptureDecoder(std::shared_ptr<const CaptureFile> file, std::int64_t from, int rate,
                   int channels)
        : m_file(std::move(file)), m_from(from) {
        m_info.sampleRate = rate;
        m_info.channels = channels;
        m_info.bitsPerSample = 16;
        m_info.isWave = true;
        m_info.kind = "wav";
    }

    const SoundInfo& info() const override { return m_info; }

    std::int64_t read(std::int16_t* out, std::int64_t frames) override {
        const std::int64_t frameBytes = 2 * m_info.channels;
        const std::int64_t n = std::min(frames, this->frames() - m_frame);
        if (n <= 0) return 0;
        const std::int64_t got = m_file->readAt(m_from + m_frame * frameBytes,
                                                reinterpret_cast<char*>(out), n * frameBytes);
        if (got < 0) return -1;
        m_frame += got / frameBytes;
        return got / frameBytes;
    }

    bool seek(std::int64_t frame) override {
        m_frame = std::clamp<std::int64_t>(frame, 0, frames());
        return true;
    }

    std::int64_t frames() const override {
        return std::max<std::int64_t>(0, m_file->size() - m_from) / (2 * m_info.channels);
    }
    std::int64_t waitForFrames() override { return frames(); }

private:
    std::shared_ptr<const CaptureFile> m_file;
    std::int64_t m_from;
    std::int64_t m_frame = 0;
    SoundInfo m_info;
};

}  // namespace

std::unique_ptr<SoundDecoder> captureDecoder(std::shared_ptr<const CaptureFile> file,
                                             std::int64_t fromByte, int sampleRate, int channels) {
    return std::make_unique<CaptureDecoder>(std::move(file), fromByte, sampleRate, channels);
}

}  // namespace lv
