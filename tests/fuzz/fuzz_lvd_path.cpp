// Loading a recording from a path reads the file's bytes as they are on the
// disk: the result must be exactly what loading the same bytes gives.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include "fuzz/fuzz_scratch.h"
#include "recording/lvd_file.h"
#include "recording/record_buffer.h"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::filesystem::path file =
        lv::fuzz::scratchFolder("fuzz_lvd_path") / "recording.lvd";
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    const std::optional<int> dial =
        size > 0 ? std::optional<int>(data[0] % 8) : std::optional<int>();
    lv::RecBuffer fromPath, fromBytes;
    const lv::LoadResult a = lv::loadLvdFile(file, dial, fromPath);
    const lv::LoadResult b = lv::loadLvdBytes({data, size}, dial, fromBytes);
    check(a.status == b.status && a.recordsRead == b.recordsRead);
    check(a.ok() == !a.caption.empty());
    check(fromPath.RecCount == fromBytes.RecCount && fromPath.TotalTimeMs == fromBytes.TotalTimeMs);
    check(fromPath.StartTimeSecs == fromBytes.StartTimeSecs &&
          fromPath.StartDays == fromBytes.StartDays);
    check(fromPath.upperBound() == fromBytes.upperBound());
    for (std::int32_t i = 1; i <= fromPath.upperBound(); ++i) check(fromPath(i) == fromBytes(i));
    return 0;
}
