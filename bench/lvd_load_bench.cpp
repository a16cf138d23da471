// Loading a three-hour recording (540,000 records, 10.8 MB) into the record
// buffer: what the operator waits for after choosing a file. Target: at most
// 50 ms, and memory about the size of the file.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

#include "recording/lvd_file.h"
#include "recording/record_buffer.h"
#include "recording/start_stamp.h"

namespace {

constexpr std::int32_t kThreeHours = 3 * 3600 * 50;
constexpr int kDialType = 1;

// Heap in use: small blocks plus the large ones the allocator maps directly.
std::int64_t heapInUse() {
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<std::int64_t>(info.uordblks + info.hblkhd);
}

// A recording as the recorder would leave it, written once by the writer.
class ThreeHourFile {
public:
    ThreeHourFile() {
        std::string pattern = (std::filesystem::temp_directory_path() / "lv_bench_XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
        m_folder = pattern;
        m_path = m_folder / "three_hours.lvd";

        lv::RecBuffer buffer;
        for (std::int32_t i = 1; i <= kThreeHours; ++i) {
            lv::lvdRecord r;
            r.TimeMs = i * 20;
            r.RawData = static_cast<std::int16_t>(32768 + 8000 * std::sin(i / 40.0));
            r.NeedlePos = static_cast<std::int16_t>(3000 * std::sin(i / 55.0));
            r.BdCount = static_cast<std::int16_t>(i / 500);
            r.BaseCode = static_cast<std::uint8_t>(60 + i % 40);
            r.Sensitivity = 40;
            r.StatusFlags = lv::packStatusFlags(i % 700 == 0 ? 1 : 0, false, true, kDialType);
            r.FrameType = 'P';
            buffer.append(r);
        }
        const auto saved = lv::saveLvdFile(m_path, buffer, lv::StartStamp{45296, 8801, 1, 1});
        if (!saved.saved) throw std::runtime_error(saved.text);
    }
    ~ThreeHourFile() {
        std::error_code ec;
        std::filesystem::remove_all(m_folder, ec);
    }
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_folder;
    std::filesystem::path m_path;
};

const ThreeHourFile& threeHourFile() {
    static const ThreeHourFile file;
    return file;
}

void BM_LoadThreeHourRecording(benchmark::State& state) {
    const ThreeHourFile& file = threeHourFile();
    const auto fileBytes = static_cast<double>(std::filesystem::file_size(file.path()));

    // Memory, measured once outside the timed loop: the most the heap holds
    // while loading (sampled at every progress step), and what stays after.
    std::int64_t peak = 0;
    std::int64_t kept = 0;
    {
        const std::int64_t before = heapInUse();
        lv::RecBuffer buffer;
        buffer.clear();
        const auto result = lv::loadLvdFile(file.path(), kDialType, buffer, [&](int) {
            peak = std::max(peak, heapInUse() - before);
        });
        if (!result.ok()) {
            state.SkipWithError(result.text.c_str());
            return;
        }
        kept = heapInUse() - before;
        peak = std::max(peak, kept);
    }

    for (auto _ : state) {
        lv::RecBuffer buffer;
        const auto result = lv::loadLvdFile(file.path(), kDialType, buffer);
        if (!result.ok() || buffer.RecCount != kThreeHours) {
            state.SkipWithError("the recording did not load whole");
            break;
        }
        benchmark::DoNotOptimize(buffer.TotalTimeMs);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fileBytes));
    state.counters["file_bytes"] = fileBytes;
    state.counters["heap_peak_bytes"] = static_cast<double>(peak);
    state.counters["heap_kept_bytes"] = static_cast<double>(kept);
    state.counters["peak_per_file_byte"] = static_cast<double>(peak) / fileBytes;
}
BENCHMARK(BM_LoadThreeHourRecording)->Unit(benchmark::kMillisecond);

// The other way, for comparison: "Save As" of the same recording.
void BM_SaveThreeHourRecording(benchmark::State& state) {
    const ThreeHourFile& file = threeHourFile();
    lv::RecBuffer buffer;
    if (!lv::loadLvdFile(file.path(), kDialType, buffer).ok()) {
        state.SkipWithError("the recording did not load");
        return;
    }
    const auto copy = file.path().parent_path() / "copy.lvd";
    for (auto _ : state) {
        const auto saved = lv::saveLvdFile(copy, buffer, std::nullopt);
        if (!saved.saved) {
            state.SkipWithError(saved.text.c_str());
            break;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * buffer.RecCount * 20);
}
BENCHMARK(BM_SaveThreeHourRecording)->Unit(benchmark::kMillisecond);

}  // namespace
