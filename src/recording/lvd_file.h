#pragma once
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "recording/lvd_record.h"
#include "recording/record_buffer.h"
#include "recording/start_stamp.h"

// Reading a .lvd file into the record buffer and writing the buffer out. The
// results carry the title and text of the message the window shows; nothing
// here talks to the user.
namespace lv {

enum class LoadStatus {
    Loaded,
    NotFound,       // no such file
    Unreadable,     // a folder, no permission, a read error, too large
    Incompatible,   // records 1..5 are not all frames: an old or foreign file
    WrongDialType,  // recorded with another dial type than the one set
};

struct LoadResult {
    LoadStatus status = LoadStatus::Loaded;
    std::string title;  // empty when loaded
    std::string text;
    // What the box adds below its text: the file, or the two dial types.
    std::string detail;
    // Records taken into the buffer: RecCount when loaded; with a wrong dial
    // type, up to and including the first record of the other type.
    std::int32_t recordsRead = 0;
    std::string caption;  // the file name without its folder, when loaded

    bool ok() const { return status == LoadStatus::Loaded; }
};

// Called every max(1, RecCount / 50) records with the fiftieths done so far
// (at most 50): the window grows its progress bar and lets events run.
using LoadProgress = std::function<void(int fiftieths)>;

// RecCount for a file of this many bytes: length / 20 rounded halves to even,
// so a trailing part of 11..19 bytes is a record, one of exactly 10 bytes only
// when that makes the count even.
std::int64_t lvdRecordCount(std::uint64_t fileLength);

// True only when records 1..5 all carry a frame letter; bytes missing at the
// end of a short file read as zeros, so fewer than 100 bytes never pass.
bool Verify_lvd_Format(std::span<const std::uint8_t> fileBytes);

// The loader proper, on a whole file's bytes. On Incompatible the buffer is
// untouched. Otherwise the buffer is made exactly RecCount long, TotalTimeMs
// is the last record's time and RecIndex 1; a wrong dial type stops there,
// keeping the records read and leaving the later ones empty. When loaded, the
// start stamps set StartTimeSecs, StartDays and RecordingDate (0, 0 and
// 31 December 1999 for a file without them). No dial type checks nothing.
LoadResult loadLvdBytes(std::span<const std::uint8_t> bytes, std::optional<int> dialType,
                        RecBuffer& buffer, const LoadProgress& progress = {});

// The same from a file, read whole in one go straight into the records' memory.
LoadResult loadLvdFile(const std::filesystem::path& path, std::optional<int> dialType,
                       RecBuffer& buffer, const LoadProgress& progress = {});

// The check of the first five records alone, for a load that must not open
// the sound of a file that is no recording: the incompatible result when the
// check fails; nothing when it passes or when the file cannot be read here
// (the load itself then says why).
std::optional<LoadResult> lvdHeadProblem(const std::filesystem::path& path);

struct SaveResult {
    bool saved = true;
    std::string title;  // empty when saved
    std::string text;
};

// Writes the records as records 1..n of the file. An existing file is
// overwritten in place and never shortened: records beyond n of a longer
// file stay, and the next load counts them. With a stamp, records 1 and 2 go
// out with the "C" and "D" stamps laid over them (the records themselves are
// not changed); without one ("Save As") they go out exactly as they stand.
SaveResult saveLvdRecords(const std::filesystem::path& path, std::span<const lvdRecord> records,
                          const std::optional<StartStamp>& stamp);

// Records 1..RecCount of the buffer.
SaveResult saveLvdFile(const std::filesystem::path& path, const RecBuffer& buffer,
                       const std::optional<StartStamp>& stamp);

}  // namespace lv
