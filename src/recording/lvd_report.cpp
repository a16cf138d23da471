#include "recording/lvd_report.h"

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

}  // namespace

LoadedRecording loadRecording(const std::filesystem::path& path) {
    LoadedRecording rec;
    // No dial type to match: the tool reads recordings of every dial.
    const LoadResult result = loadLvdFile(path, std::nullopt, rec.buffer);
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
                << ",\"raw\":" << v.rawReading << ",\"needle\":" << v.needlePos << ",\"bd\":\""
                << v.bd << "\",\"base_code\":" << int{r.BaseCode} << ",\"base\":\"" << v.base
                << "\",\"sensitivity\":" << v.sensitivity << ",\"lamp\":" << v.lampCode
                << ",\"bd_flag\":" << (v.bdFlag ? "true" : "false")
                << ",\"dial_type\":" << v.dialType << ",\"frame\":\"" << frame << "\"}\n";
        }
    }
}

}  // namespace lv::tool
