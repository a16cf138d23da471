#include "audio/mpg123_decoder.h"

#include <fcntl.h>
#include <mpg123.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

namespace lv {
namespace {

// The file as libmpg123 reads it: a descriptor, and a flag that makes every
// further read fail, so that a scan still running when the decoder goes
// away ends at once.
struct Source {
    Source(int f, const std::atomic<bool>* c) : fd(f), cancelled(c) {}
    ~Source() {
        if (fd >= 0) ::close(fd);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    int fd;
    const std::atomic<bool>* cancelled;
};

mpg123_ssize_t readSource(void* handle, void* buffer, size_t bytes) {
    auto* source = static_cast<Source*>(handle);
    if (source->cancelled && source->cancelled->load(std::memory_order_relaxed)) return -1;
    return ::read(source->fd, buffer, bytes);
}

off_t seekSource(void* handle, off_t offset, int whence) {
    return ::lseek(static_cast<Source*>(handle)->fd, offset, whence);
}

struct HandleDeleter {
    void operator()(mpg123_handle* h) const {
        mpg123_close(h);
        mpg123_delete(h);
    }
};
using HandlePtr = std::unique_ptr<mpg123_handle, HandleDeleter>;

// A handle and the file it reads, which must outlive it.
struct Stream {
    std::unique_ptr<Source> source;
    HandlePtr handle;
    explicit operator bool() const { return handle != nullptr; }
};

// A handle on path that gives 16-bit samples at the file's own rate and
// channels, gapless (encoder delay and padding cut where the file says so).
Stream openStream(const std::string& path, const std::atomic<bool>* cancelled, long& rate,
                  int& channels) {
    static const bool ready = mpg123_init() == MPG123_OK;
    if (!ready) return {};
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return {};
    Stream s{std::make_unique<Source>(fd, cancelled), HandlePtr(mpg123_new(nullptr, nullptr))};
    mpg123_handle* h = s.handle.get();
    if (!h) return {};
    mpg123_param(h, MPG123_ADD_FLAGS, MPG123_QUIET | MPG123_GAPLESS, 0.0);
    mpg123_param(h, MPG123_REMOVE_FLAGS, MPG123_FUZZY, 0.0);
    int encoding = 0;
    if (mpg123_replace_reader_handle(h, readSource, seekSource, nullptr) != MPG123_OK ||
        mpg123_open_handle(h, s.source.get()) != MPG123_OK ||
        mpg123_getformat(h, &rate, &channels, &encoding) != MPG123_OK || rate <= 0 || channels <= 0)
        return {};
    mpg123_format_none(h);
    if (mpg123_format(h, rate, channels, MPG123_ENC_SIGNED_16) != MPG123_OK) return {};
    return s;
}

// What the scan thread finds: the exact length, and the frame index that
// lets the playing handle seek far without reading up to the point.
struct Scan {
    std::atomic<bool> cancelled{false};
    std::mutex mutex;
    std::condition_variable done;
    bool finished = false;
    std::int64_t frames = -1;
    std::vector<off_t> index;
    off_t indexStep = 0;
};

void runScan(const std::string& path, const std::shared_ptr<Scan>& scan) {
    long rate = 0;
    int channels = 0;
    std::int64_t frames = -1;
    std::vector<off_t> index;
    off_t step = 0;
    if (Stream s = openStream(path, &scan->cancelled, rate, channels)) {
        mpg123_handle* h = s.handle.get();
        if (mpg123_scan(h) == MPG123_OK) {
            const off_t length = mpg123_length(h);
            if (length >= 0) frames = length;
            off_t* offsets = nullptr;
            size_t fill = 0;
            if (mpg123_index(h, &offsets, &step, &fill) == MPG123_OK && offsets)
                index.assign(offsets, offsets + fill);
        }
    }
    std::lock_guard lock(scan->mutex);
    scan->frames = frames;
    scan->index = std::move(index);
    scan->indexStep = step;
    scan->finished = true;
    scan->done.notify_all();
}

class Mpg123Decoder : public SoundDecoder {
public:
    Mpg123Decoder(Stream stream, const std::string& path, long rate, int channels)
        : m_stream(std::move(stream)), m_scan(std::make_shared<Scan>()) {
        m_info.sampleRate = static_cast<int>(rate);
        m_info.channels = channels;
        m_info.bitsPerSample = 16;
        m_info.isWave = false;
        m_info.kind = "mp3";
        m_thread = std::thread(runScan, path, m_scan);
    }
    ~Mpg123Decoder() override {
        m_scan->cancelled = true;
        m_thread.join();
    }
    Mpg123Decoder(const Mpg123Decoder&) = delete;
    Mpg123Decoder& operator=(const Mpg123Decoder&) = delete;

    const SoundInfo& info() const override { return m_info; }

    std::int64_t read(std::int16_t* out, std::int64_t frames) override {
        const std::size_t frameBytes =
            sizeof(std::int16_t) * static_cast<std::size_t>(m_info.channels);
        auto* bytes = reinterpret_cast<unsigned char*>(out);
        const std::size_t want = static_cast<std::size_t>(frames) * frameBytes;
        std::size_t have = 0;
        if (m_atEnd) return 0;
        while (have < want) {
            size_t got = 0;
            const int rc = mpg123_read(m_stream.handle.get(), bytes + have, want - have, &got);
            have += got;
            if (rc == MPG123_DONE) break;
            if (rc == MPG123_NEW_FORMAT || rc == MPG123_OK) {
                if (got == 0 && rc == MPG123_OK) break;
                continue;
            }
            if (have == 0) return -1;
            break;
        }
        return static_cast<std::int64_t>(have / frameBytes);
    }

    bool seek(std::int64_t frame) override {
        adoptIndex();
        const std::int64_t total = frames();
        if (total >= 0 && frame > total) frame = total;
        const off_t at = mpg123_seek(m_stream.handle.get(), static_cast<off_t>(frame), SEEK_SET);
        // A point past the end (while the length is still unknown) fails the
        // seek: the decoder then stands at its end, as asked.
        m_atEnd = at < 0;
        return at >= 0 || total < 0;
    }

    std::int64_t frames() const override {
        std::lock_guard lock(m_scan->mutex);
        return m_scan->finished ? m_scan->frames : -1;
    }

    std::int64_t waitForFrames() override {
        std::unique_lock lock(m_scan->mutex);
        m_scan->done.wait(lock, [&] { return m_scan->finished; });
        return m_scan->frames;
    }

private:
    // Takes over the scan's frame index once, so that a seek far into a long
    // file jumps instead of reading every frame up to the point.
    void adoptIndex() {
        if (m_indexAdopted) return;
        std::lock_guard lock(m_scan->mutex);
        if (!m_scan->finished) return;
        m_indexAdopted = true;
        if (m_scan->index.empty()) return;
        mpg123_set_index(m_stream.handle.get(), m_scan->index.data(), m_scan->indexStep,
                         m_scan->index.size());
        std::vector<off_t>().swap(m_scan->index);
    }

    Stream m_stream;
    SoundInfo m_info;
    std::shared_ptr<Scan> m_scan;
    std::thread m_thread;
    bool m_indexAdopted = false;
    bool m_atEnd = false;
};

}  // namespace

int openMpg123Decoder(const std::string& path, std::unique_ptr<SoundDecoder>& out) {
    long rate = 0;
    int channels = 0;
    Stream s = openStream(path, nullptr, rate, channels);
    if (!s) return kAudioBadFile;
    out = std::make_unique<Mpg123Decoder>(std::move(s), path, rate, channels);
    return kAudioOk;
}

}  // namespace lv
