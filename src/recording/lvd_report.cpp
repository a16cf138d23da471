#include "recording/lvd_report.h"

#include <cctype>
#include <cstdio>

#include "common/vb_date.h"
#include "recording/lvd_file.h"

namespace lv::tool {

namespace {

std::string isoDate(std::chrono::year_month_day d) {
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(d.year()),
                  static_cast<unsigned>(d.month()), static_cast<unsigned>(d.day()));
    return text;
}

// The dial's texts are decimal numbers already; one that is not valid JSON
// (a format changed one day) becomes null rather than a broken line.
std::string jsonNumber(const std::string& text) {
    std::size_t i = 0;
    const auto digits = [&] {
        const std::size_t from = i;
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i;
        return i - from;
    };
    if (i < text.size() && text[i] == '-') ++i;
    const std::size_t whole = digits();
    bool valid = whole == 1 || (whole > 1 && text[i - whole] != '0');
    if (valid && i < text.size() && text[i] == '.') {
        ++i;
        valid = digits() > 0;
    }
    return valid && i == text.size() ? text : "null";
}

}  // namespace

LoadedRecording loadRecording(const std::filesystem::path& path) {
    LoadedRecording rec;
    // The tool reads recordings of every dial, so the dial to match is the
    // file's own first one. The program, whatever dial is set, refuses a file
    // whose records change dial type, and so does the tool.
    LoadResult result = loadLvdFile(path, std::nullopt, rec.buffer);
    if (result.ok() && rec.buffer.RecCount >= 1)
        result = loadLvdFile(path, dialTypeOf(rec.buffer(1).StatusFlags), rec.buffer);
    rec.ok = result.ok();
    if (!rec.ok) rec.message = result.title + ": " + result.text;
    return rec;
}

void writeInfo(const LoadedRecording& rec, std::ostream& out) {
    const RecBuffer& b = rec.buffer;
    out << "records: " << b.RecCount << '\n';
    out << "total_ms: " << b.TotalTimeMs << '\n';
    // A recording that began at midnight has a start time of 0 too: the
    // stamp's marker tells them apart.
    const bool stamped = b.RecCount >= 1 && b(1).StampMarker == 'C';
    out << "start_time: " << (stamped ? clockText(b.StartTimeSecs) : std::string("none")) << '\n';
    out << "date: " << isoDate(b.RecordingDate) << '\n';
    out << "dial_type: " << (b.RecCount >= 1 ? dialTypeOf(b(1).StatusFlags) : 0) << '\n';
    out << "verdict: " << (rec.ok ? std::string("valid") : rec.message) << '\n';
}

void writeRecords(const RecBuffer& buffer, RecordFormat format, std::ostream& out) {
    if (format == RecordFormat::Csv)
        out << "index,time_ms,raw,needle,bd,base_code,base,sensitivity,lamp,bd_flag,dial_type,"
               "frame\n";
    std::int32_t index = 0;
    for (const lvdRecord& r : buffer.valid()) {
        ++index;
        const RecordReadout v = readoutOf(r);
        const std::string frame(1, static_cast<char>(r.FrameType));
        if (format == RecordFormat::Csv) {
            out << index << ',' << r.TimeMs << ',' << v.rawReading << ',' << v.needlePos << ','
                << v.bd << ',' << int{r.BaseCode} << ',' << v.base << ',' << v.sensitivity << ','
                << v.lampCode << ',' << (v.bdFlag ? 1 : 0) << ',' << v.dialType << ',' << frame
                << '\n';
        } else {
            out << "{\"index\":" << index << ",\"time_ms\":" << r.TimeMs
                << ",\"raw\":" << v.rawReading << ",\"needle\":" << v.needlePos
                << ",\"bd\":" << jsonNumber(v.bd) << ",\"base_code\":" << int{r.BaseCode}
                << ",\"base\":" << jsonNumber(v.base) << ",\"sensitivity\":" << v.sensitivity
                << ",\"lamp\":" << v.lampCode << ",\"bd_flag\":" << (v.bdFlag ? "true" : "false")
                << ",\"dial_type\":" << v.dialType << ",\"frame\":\"" << frame << "\"}\n";
        }
    }
}

}  // namespace lv::tool
