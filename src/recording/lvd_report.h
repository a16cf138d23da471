#pragma once
#include <filesystem>
#include <ostream>
#include <string>

#include "recording/record_buffer.h"

// What lvdtool and the window's Export say about a recording: a summary and
// its records as CSV or JSON lines. Reads through the program's own loader, so a file lvdtool
// accepts is one the program plays.
namespace lv::tool {

struct LoadedRecording {
    RecBuffer buffer;
    bool ok = false;
    std::string message;  // "title: text" of the program's message when not ok
};

LoadedRecording loadRecording(const std::filesystem::path& path);

// "records: ...", "total_ms: ...", "start_time: ...", "date: ...",
// "dial_type: ...", "verdict: ..." one a line.
void writeInfo(const LoadedRecording& rec, std::ostream& out);

enum class RecordFormat { Csv, JsonLines };
void writeRecords(const RecBuffer& buffer, RecordFormat format, std::ostream& out);

}  // namespace lv::tool
