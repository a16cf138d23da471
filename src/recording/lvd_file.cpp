#include "recording/lvd_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "common/vb_format.h"
#include "settings/dial_types.h"

namespace lv {

namespace {

constexpr int kValidatedRecords = 5;
constexpr int kProgressSteps = 50;

// Closes on every way out.
class FileHandle {
public:
    explicit FileHandle(int fd) : m_fd(fd) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() {
        if (m_fd >= 0) ::close(m_fd);
    }
    int get() const { return m_fd; }
    // Closing can be where a write fails (a full disk over a network mount).
    int release() {
        const int rc = ::close(m_fd);
        m_fd = -1;
        return rc;
    }

private:
    int m_fd;
};

LoadResult failure(LoadStatus status, std::string title, std::string text) {
    LoadResult r;
    r.status = status;
    r.title = std::move(title);
    r.text = std::move(text);
    return r;
}

LoadResult incompatible() {
    return failure(LoadStatus::Incompatible, "Incompatible file format",
                   "This file is corrupt or needs to be converted to version 2 format.");
}

LoadResult unreadable(const std::filesystem::path& path, const std::string& reason) {
    return failure(LoadStatus::Unreadable, "Cannot Open File", path.string() + "\n\n" + reason);
}

std::span<const std::uint8_t> bytesOf(const std::vector<lvdRecord>& records, std::size_t length) {
    const auto* p = reinterpret_cast<const std::uint8_t*>(records.data());
    return {p, std::min(length, records.size() * kLvdRecordSize)};
}

// The records arrive as the file's raw bytes; each is decoded where it lies.
lvdRecord decodeInPlace(lvdRecord& slot) {
    std::array<std::uint8_t, kLvdRecordSize> raw;
    std::memcpy(raw.data(), &slot, kLvdRecordSize);
    slot = decodeRecord(raw.data());
    return slot;
}

// Everything after the bytes are in memory and have passed validation.
LoadResult takeRecords(std::vector<lvdRecord>&& records, std::optional<int> dialType,
                       RecBuffer& buffer, const LoadProgress& progress) {
    const auto count = static_cast<std::int32_t>(records.size());
    LoadResult result;

    std::array<std::uint8_t, kLvdRecordSize> lastRaw;
    std::memcpy(lastRaw.data(), &records.back(), kLvdRecordSize);
    buffer.CurRecord = decodeRecord(lastRaw.data());
    buffer.RecIndex = 1;
    buffer.RecCount = count;
    buffer.TotalTimeMs = buffer.CurRecord.TimeMs;

    // Short files would otherwise give a step of 0 records.
    const std::int32_t step = std::max(1, count / kProgressSteps);
    std::int32_t untilStep = step;
    int stepsDone = 0;
    for (std::int32_t i = 1; i <= count; ++i) {
        const lvdRecord& record = decodeInPlace(records[static_cast<std::size_t>(i - 1)]);
        buffer.CurRecord = record;
        if (dialType && dialTypeOf(record.StatusFlags) != *dialType) {
            // Never read: what follows stays empty.
            std::fill(records.begin() + i, records.end(), lvdRecord{});
            buffer.replaceRecords(std::move(records));
            result =
                failure(LoadStatus::WrongDialType, "Wrong Dial Type", "This file is incompatible.");
            const std::string recorded = dialTypeCaption(dialTypeOf(record.StatusFlags));
            result.detail = "It was recorded with the dial type \"" + recorded +
                            "\"; the dial type set now is \"" + dialTypeCaption(*dialType) +
                            "\". Choose \"" + recorded +
                            "\" in Settings → Meter Setup... to play it.";
            result.recordsRead = i;
            return result;
        }
        if (--untilStep == 0) {
            untilStep = step;
            stepsDone = std::min(stepsDone + 1, kProgressSteps);
            if (progress) progress(stepsDone);
        }
    }

    const StartInfo start = count >= 2 ? readStartStamps(records[0], records[1]) : StartInfo{};
    buffer.StartTimeSecs = start.StartTimeSecs;
    buffer.StartDays = start.StartDays;
    buffer.RecordingDate = start.RecordingDate;
    buffer.replaceRecords(std::move(records));
    result.recordsRead = count;
    return result;
}

// Reads up to length bytes into dst; fewer only at end of file.
bool readFully(int fd, std::uint8_t* dst, std::size_t length, std::size_t& got) {
    got = 0;
    while (got < length) {
        const ssize_t n = ::read(fd, dst + got, length - got);
        if (n == 0) break;
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        got += static_cast<std::size_t>(n);
    }
    return true;
}

bool writeFully(int fd, const std::uint8_t* src, std::size_t length) {
    while (length > 0) {
        const ssize_t n = ::write(fd, src, length);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        src += n;
        length -= static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

std::int64_t lvdRecordCount(std::uint64_t fileLength) {
    return roundHalfEven(static_cast<double>(fileLength) / static_cast<double>(kLvdRecordSize));
}

bool Verify_lvd_Format(std::span<const std::uint8_t> fileBytes) {
    // All five are read, even after one has failed.
    bool valid = true;
    for (int k = 0; k < kValidatedRecords; ++k) {
        const std::size_t at = k * kLvdRecordSize + lvd_offset::kFrameType;
        const std::uint8_t type = at < fileBytes.size() ? fileBytes[at] : 0;
        valid = isValidFrameType(type) && valid;
    }
    return valid;
}

LoadResult loadLvdBytes(std::span<const std::uint8_t> bytes, std::optional<int> dialType,
                        RecBuffer& buffer, const LoadProgress& progress) {
    if (!Verify_lvd_Format(bytes)) return incompatible();
    // Five valid records need 100 bytes, so the count is at least 5 here.
    const std::int64_t count = lvdRecordCount(bytes.size());
    if (count > std::numeric_limits<std::int32_t>::max())
        return failure(LoadStatus::Unreadable, "Cannot Open File", "The recording is too large.");
    std::vector<lvdRecord> records(static_cast<std::size_t>(count));
    std::memcpy(records.data(), bytes.data(),
                std::min(bytes.size(), records.size() * kLvdRecordSize));
    return takeRecords(std::move(records), dialType, buffer, progress);
}

LoadResult loadLvdFile(const std::filesystem::path& path, std::optional<int> dialType,
                       RecBuffer& buffer, const LoadProgress& progress) {
    // Looked at before it is opened: opening a named pipe waits for a writer
    // that may never come, and a device may never end.
    const auto kind = [&path](const struct stat& st) -> std::optional<LoadResult> {
        if (S_ISDIR(st.st_mode)) return unreadable(path, "This is a folder, not a recording.");
        if (!S_ISREG(st.st_mode)) return unreadable(path, "This is not an ordinary file.");
        return std::nullopt;
    };
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return failure(LoadStatus::NotFound, "File Not Found", path.string());
        return unreadable(path, std::strerror(errno));
    }
    if (auto refused = kind(st)) return *refused;
    // Without blocking all the same, should the name have changed hands since.
    FileHandle file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.get() < 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return failure(LoadStatus::NotFound, "File Not Found", path.string());
        return unreadable(path, std::strerror(errno));
    }
    if (::fstat(file.get(), &st) != 0) return unreadable(path, std::strerror(errno));
    if (auto refused = kind(st)) return *refused;

    const auto length = static_cast<std::uint64_t>(st.st_size);
    const std::int64_t count = lvdRecordCount(length);
    if (count > std::numeric_limits<std::int32_t>::max())
        return unreadable(path, "The recording is too large.");

    std::vector<lvdRecord> records;
    try {
        records.resize(static_cast<std::size_t>(count));
    } catch (const std::bad_alloc&) {
        return unreadable(path, "There is not enough memory to load this recording.");
    }
    // A trailing part past the last counted record is never looked at.
    const std::size_t wanted = std::min<std::uint64_t>(length, records.size() * kLvdRecordSize);
    std::size_t got = 0;
    if (!readFully(file.get(), reinterpret_cast<std::uint8_t*>(records.data()), wanted, got))
        return unreadable(path, std::strerror(errno));

    if (!Verify_lvd_Format(bytesOf(records, got))) {
        LoadResult result = incompatible();
        result.detail = path.string();
        return result;
    }
    LoadResult result = takeRecords(std::move(records), dialType, buffer, progress);
    if (result.ok()) result.caption = path.filename().string();
    return result;
}

std::optional<LoadResult> lvdHeadProblem(const std::filesystem::path& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
    FileHandle file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.get() < 0) return std::nullopt;
    std::array<std::uint8_t, kValidatedRecords * kLvdRecordSize> head{};
    std::size_t got = 0;
    if (!readFully(file.get(), head.data(), head.size(), got)) return std::nullopt;
    if (Verify_lvd_Format(std::span(head.data(), got))) return std::nullopt;
    return incompatible();
}

SaveResult saveLvdRecords(const std::filesystem::path& path, std::span<const lvdRecord> records,
                          const std::optional<StartStamp>& stamp) {
    const auto failed = [&path](int error) {
        return SaveResult{false, "File Not Saved", path.string() + "\n\n" + std::strerror(error)};
    };
    // No O_TRUNC: the tail of a longer file stays where it is.
    FileHandle file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
    if (file.get() < 0) return failed(errno);

    constexpr std::size_t kChunkRecords = 4096;
    std::vector<std::uint8_t> chunk(std::min(records.size(), kChunkRecords) * kLvdRecordSize);
    for (std::size_t first = 0; first < records.size(); first += kChunkRecords) {
        const std::size_t n = std::min(kChunkRecords, records.size() - first);
        for (std::size_t k = 0; k < n; ++k) {
            const std::size_t index = first + k;  // record index + 1
            lvdRecord out = records[index];
            if (stamp && index == 0) layTimeStamp(out, *stamp);
            if (stamp && index == 1) layDateStamp(out, *stamp);
            encodeRecord(out, chunk.data() + k * kLvdRecordSize);
        }
        if (!writeFully(file.get(), chunk.data(), n * kLvdRecordSize)) return failed(errno);
    }
    if (file.release() != 0) return failed(errno);
    return {};
}

SaveResult saveLvdFile(const std::filesystem::path& path, const RecBuffer& buffer,
                       const std::optional<StartStamp>& stamp) {
    return saveLvdRecords(path, buffer.valid(), stamp);
}

}  // namespace lv
