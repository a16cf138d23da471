#include "recording/recovery_journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <vector>

#include "common/vb_date.h"
#include "recording/lvd_file.h"
#include "recording/start_stamp.h"

namespace lv {

namespace {

namespace fs = std::filesystem;

// The header is a fixed block so that it can be rewritten in place while
// records follow it.
constexpr std::size_t kHeaderSize = 512;
constexpr std::array<char, 4> kMagic{'L', 'V', 'D', 'J'};
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kNameAt = 30;
constexpr std::size_t kMaxName = kHeaderSize - kNameAt;

constexpr int kWaveRate = 22050;
constexpr int kWaveBits = 16;
constexpr int kWaveChannels = 1;
constexpr std::size_t kWaveHeaderSize = 44;

void put32(std::uint8_t* at, std::uint32_t v) {
    for (int k = 0; k < 4; ++k) at[k] = static_cast<std::uint8_t>(v >> (8 * k));
}
void put16(std::uint8_t* at, std::uint16_t v) {
    at[0] = static_cast<std::uint8_t>(v);
    at[1] = static_cast<std::uint8_t>(v >> 8);
}
std::uint32_t get32(const std::uint8_t* at) {
    return at[0] | (at[1] << 8) | (at[2] << 16) | (static_cast<std::uint32_t>(at[3]) << 24);
}
std::int32_t geti32(const std::uint8_t* at) {
    return static_cast<std::int32_t>(get32(at));
}
std::uint16_t get16(const std::uint8_t* at) {
    return static_cast<std::uint16_t>(at[0] | (at[1] << 8));
}

std::array<std::uint8_t, kHeaderSize> encodeHeader(const RecoveryJournal::Header& h) {
    std::array<std::uint8_t, kHeaderSize> out{};
    std::memcpy(out.data(), kMagic.data(), kMagic.size());
    put32(&out[4], kVersion);
    put32(&out[8], static_cast<std::uint32_t>(h.StartTimeSecs));
    put32(&out[12], static_cast<std::uint32_t>(h.StartDays));
    put32(&out[16], static_cast<std::uint32_t>(h.AudioBytesPerSec));
    put32(&out[20], static_cast<std::uint32_t>(h.dialType));
    put32(&out[24], static_cast<std::uint32_t>(h.audioLeadInBytes));
    // A name longer than the block is cut: the journal is a fallback, and the
    // operator can rename on saving.
    const std::size_t n = std::min(h.SaveName.size(), kMaxName);
    put16(&out[28], static_cast<std::uint16_t>(n));
    std::memcpy(&out[kNameAt], h.SaveName.data(), n);
    return out;
}

std::optional<RecoveryJournal::Header> decodeHeader(const std::uint8_t* in) {
    if (std::memcmp(in, kMagic.data(), kMagic.size()) != 0 || get32(in + 4) != kVersion)
        return std::nullopt;
    const std::size_t n = get16(in + 28);
    if (n > kMaxName) return std::nullopt;
    RecoveryJournal::Header h;
    h.StartTimeSecs = geti32(in + 8);
    h.StartDays = geti32(in + 12);
    h.AudioBytesPerSec = geti32(in + 16);
    h.dialType = geti32(in + 20);
    h.audioLeadInBytes = geti32(in + 24);
    h.SaveName.assign(reinterpret_cast<const char*>(in + kNameAt), n);
    return h;
}

std::optional<std::vector<std::uint8_t>> readWhole(const fs::path& path) {
    // Never waits: a named pipe in the journal's place is no journal.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    std::array<std::uint8_t, 65536> chunk;
    for (;;) {
        const ssize_t n = ::read(fd, chunk.data(), chunk.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            ::close(fd);
            if (n < 0) return std::nullopt;
            return bytes;
        }
        bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + n);
    }
}

bool writeAll(int fd, const void* data, std::size_t size) {
    const auto* p = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        const ssize_t n = ::write(fd, p, size);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        p += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

std::int64_t fileSize(const fs::path& path) {
    std::error_code ec;
    const auto size = fs::file_size(path, ec);
    return ec ? -1 : static_cast<std::int64_t>(size);
}

// A name in the folder that neither a .lvd nor a .wav has yet: the base,
// else the base with "_2", "_3", ...
fs::path freeStem(const fs::path& folder, const std::string& base) {
    std::error_code ec;
    for (int n = 1;; ++n) {
        const std::string name = n == 1 ? base : base + "_" + std::to_string(n);
        const fs::path stem = folder / name;
        if (!fs::exists(fs::symlink_status(fs::path(stem.string() + ".lvd"), ec)) &&
            !fs::exists(fs::symlink_status(fs::path(stem.string() + ".wav"), ec)))
            return stem;
    }
}

LocalDateTime localDateTimeOf(std::int32_t days, std::int32_t secs) {
    LocalDateTime t;
    // The stamp holds the days in 16 bits; a header from a damaged file may say anything.
    t.date = dateFromDays(std::clamp<std::int32_t>(days, 0, 0xFFFF));
    secs = ((secs % 86400) + 86400) % 86400;
    t.hour = secs / 3600;
    t.minute = secs / 60 % 60;
    t.second = secs % 60;
    return t;
}

// A journal that a recorder still holds open, here or in another instance
// of the program on the same data folder, is a recording in progress.
bool inUse(const fs::path& records) {
    const int fd = ::open(records.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return false;
    const bool held = ::flock(fd, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(fd);
    return held;
}

bool syncFile(const fs::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool ok = ::fdatasync(fd) == 0;
    return ::close(fd) == 0 && ok;
}

struct Scan {
    RecoveryJournal::Recovered found;
    std::vector<lvdRecord> records;
};

// Reads the journal, keeping the records up to the first that is torn or not
// a frame (a file system may leave zeros where a write never landed).
std::optional<Scan> scan(const fs::path& folder) {
    Scan s;
    s.found.recordsFile = folder / RecoveryJournal::kRecordsFile;
    const auto bytes = readWhole(s.found.recordsFile);
    if (!bytes || bytes->size() < kHeaderSize) return std::nullopt;
    const auto header = decodeHeader(bytes->data());
    if (!header) return std::nullopt;
    s.found.header = *header;

    const std::size_t whole = (bytes->size() - kHeaderSize) / kLvdRecordSize;
    for (std::size_t i = 0; i < whole; ++i) {
        const lvdRecord r = decodeRecord(bytes->data() + kHeaderSize + i * kLvdRecordSize);
        if (!isValidFrameType(r.FrameType)) break;
        s.records.push_back(r);
    }
    if (s.records.empty()) return std::nullopt;
    s.found.recordCount = static_cast<std::int32_t>(s.records.size());

    // Sound given up during the recording is not part of it.
    const bool withSound = header->AudioBytesPerSec == kWaveRate * kWaveChannels * kWaveBits / 8;
    const fs::path pcm = folder / RecoveryJournal::kAudioFile;
    if (withSound && header->audioLeadInBytes >= 0 && fileSize(pcm) > header->audioLeadInBytes)
        s.found.pcmFile = pcm;
    return s;
}

}  // namespace

RecoveryJournal::~RecoveryJournal() {
    close();
}

bool RecoveryJournal::open(const fs::path& folder, const Header& header) {
    close();
    if (inUse(folder / kRecordsFile) || find(folder)) return false;
    m_folder = folder;
    m_failed = false;
    m_flushes = 0;
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    m_records = ::open((folder / kRecordsFile).c_str(), kFlags, 0644);
    m_audio = ::open((folder / kAudioFile).c_str(), kFlags, 0644);
    const auto block = encodeHeader(header);
    // Held for as long as it is open, so that no one takes it for a crash's.
    if (m_records < 0 || m_audio < 0 || ::flock(m_records, LOCK_EX | LOCK_NB) != 0 ||
        !writeAll(m_records, block.data(), block.size())) {
        close();
        removeFiles(folder);
        return false;
    }
    return flush();
}

bool RecoveryJournal::updateHeader(const Header& header) {
    if (!isOpen() || m_failed) return false;
    const auto block = encodeHeader(header);
    if (::pwrite(m_records, block.data(), block.size(), 0) != static_cast<ssize_t>(block.size())) {
        m_failed = true;
        return false;
    }
    return true;
}

bool RecoveryJournal::writeTo(int fd, const void* data, std::size_t size) {
    if (fd < 0 || m_failed) return false;
    if (!writeAll(fd, data, size)) m_failed = true;
    return !m_failed;
}

void RecoveryJournal::appendRecord(const lvdRecord& record) {
    std::array<std::uint8_t, kLvdRecordSize> raw;
    encodeRecord(record, raw.data());
    writeTo(m_records, raw.data(), raw.size());
}

void RecoveryJournal::appendAudio(std::string_view pcm) {
    writeTo(m_audio, pcm.data(), pcm.size());
}

bool RecoveryJournal::flush() {
    if (!isOpen() || m_failed) return false;
    // The data, not the file times: that is all a recovery needs.
    if (::fdatasync(m_records) != 0 || ::fdatasync(m_audio) != 0) m_failed = true;
    if (!m_failed) ++m_flushes;
    return !m_failed;
}

void RecoveryJournal::close() {
    flush();
    for (int* fd : {&m_records, &m_audio}) {
        if (*fd >= 0) ::close(*fd);
        *fd = -1;
    }
}

void RecoveryJournal::discard() {
    close();
    if (!m_folder.empty()) removeFiles(m_folder);
}

void RecoveryJournal::removeFiles(const fs::path& folder) {
    std::error_code ec;
    for (const char* name : {kRecordsFile, kAudioFile}) fs::remove(folder / name, ec);
}

std::optional<RecoveryJournal::Recovered> RecoveryJournal::find(const fs::path& folder) {
    auto s = scan(folder);
    if (!s) return std::nullopt;
    return s->found;
}

RecoveryJournal::Preserved RecoveryJournal::preserve(const fs::path& folder, const fs::path& into,
                                                     const Settings& settings) {
    Preserved out;
    if (inUse(folder / kRecordsFile)) return out;
    auto s = scan(folder);
    if (!s) {
        // Nothing recorded (a crash in the lead-in): nothing to keep.
        if (fs::exists(folder / kRecordsFile)) removeFiles(folder);
        return out;
    }
    const Header& h = s->found.header;
    out.recordCount = s->found.recordCount;
    const auto fail = [&out](std::string text) {
        out.outcome = Preserved::Outcome::Failed;
        out.error = std::move(text);
        return out;
    };

    std::error_code ec;
    fs::create_directories(into, ec);
    if (!fs::is_directory(into, ec))
        return fail(into.string() + ": " + (ec ? ec.message() : "not a folder"));

    const std::string base = formatNameStamp(localDateTimeOf(h.StartDays, h.StartTimeSecs));
    const fs::path stem = freeStem(into, base);
    const fs::path lvd = fs::path(stem.string() + ".lvd");
    const fs::path wav = fs::path(stem.string() + ".wav");
    const fs::path lvdPart = fs::path(lvd.string() + ".part");
    const fs::path wavPart = fs::path(wav.string() + ".part");

    // The start stamp lets the player and the tools show when it was made.
    const StartStamp stamp = startStampFor(settings, h.StartTimeSecs, h.StartDays);
    const SaveResult saved = saveLvdRecords(lvdPart, s->records, stamp);
    if (!saved.saved || !syncFile(lvdPart)) {
        fs::remove(lvdPart, ec);
        return fail(saved.saved ? lvd.string() + ": cannot be written" : saved.text);
    }
    const bool withWave = s->found.pcmFile.has_value();
    if (withWave &&
        (!writeWave(*s->found.pcmFile, h.audioLeadInBytes, wavPart) || !syncFile(wavPart))) {
        fs::remove(lvdPart, ec);
        fs::remove(wavPart, ec);
        return fail(wav.string() + ": cannot be written");
    }
    // Renamed only when whole, so that a kill half-way leaves no broken pair.
    if (withWave) fs::rename(wavPart, wav, ec);
    if (!ec) fs::rename(lvdPart, lvd, ec);
    if (ec) {
        fs::remove(lvdPart, ec);
        fs::remove(wavPart, ec);
        fs::remove(wav, ec);
        return fail(lvd.string() + ": cannot be written");
    }
    removeFiles(folder);
    out.outcome = Preserved::Outcome::Kept;
    out.lvdFile = lvd;
    if (withWave) out.wavFile = wav;
    return out;
}

bool RecoveryJournal::writeWave(const fs::path& pcm, std::int64_t skipBytes, const fs::path& wave) {
    const std::int64_t size = fileSize(pcm);
    if (size < 0 || skipBytes < 0) return false;
    // Whole samples only, and within what a wave's 32-bit sizes can say.
    std::int64_t data = std::max<std::int64_t>(size - skipBytes, 0) & ~std::int64_t{1};
    data = std::min<std::int64_t>(data, 0xFFFFFFFFLL - 36 - 1);

    std::array<std::uint8_t, kWaveHeaderSize> h{};
    const auto tag = [&h](std::size_t at, const char* text) { std::memcpy(&h[at], text, 4); };
    const int blockAlign = kWaveChannels * kWaveBits / 8;
    tag(0, "RIFF");
    put32(&h[4], static_cast<std::uint32_t>(36 + data));
    tag(8, "WAVE");
    tag(12, "fmt ");
    put32(&h[16], 16);
    put16(&h[20], 1);  // PCM
    put16(&h[22], kWaveChannels);
    put32(&h[24], kWaveRate);
    put32(&h[28], static_cast<std::uint32_t>(kWaveRate * blockAlign));
    put16(&h[32], static_cast<std::uint16_t>(blockAlign));
    put16(&h[34], kWaveBits);
    tag(36, "data");
    put32(&h[40], static_cast<std::uint32_t>(data));

    const int in = ::open(pcm.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) return false;
    const int out = ::open(wave.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    bool ok = out >= 0 && writeAll(out, h.data(), h.size());
    std::vector<std::uint8_t> chunk(1 << 16);
    std::int64_t left = data;
    off_t at = static_cast<off_t>(skipBytes);
    while (ok && left > 0) {
        const ssize_t n = ::pread(in, chunk.data(),
                                  static_cast<std::size_t>(std::min<std::int64_t>(
                                      left, static_cast<std::int64_t>(chunk.size()))),
                                  at);
        if (n < 0 && errno == EINTR) continue;
        ok = n > 0 && writeAll(out, chunk.data(), static_cast<std::size_t>(n));
        left -= n;
        at += n;
    }
    ::close(in);
    if (out >= 0 && ::close(out) != 0) ok = false;
    if (!ok) {
        std::error_code ec;
        fs::remove(wave, ec);
    }
    return ok;
}

}  // namespace lv
