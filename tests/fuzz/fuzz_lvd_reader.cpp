// A .lvd file can be anything the operator points the player at: loading must
// be safe, must take exactly the records the length says, each byte for byte,
// and must leave the buffer alone when it refuses a file.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>

#include "recording/lvd_file.h"
#include "recording/record_buffer.h"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

// The file's bytes for record i (from 1), zero past the end.
std::array<std::uint8_t, lv::kLvdRecordSize> fileRecord(std::span<const std::uint8_t> file,
                                                        std::int32_t i) {
    std::array<std::uint8_t, lv::kLvdRecordSize> out{};
    const std::size_t at = static_cast<std::size_t>(i - 1) * lv::kLvdRecordSize;
    if (at < file.size())
        std::memcpy(out.data(), file.data() + at, std::min(out.size(), file.size() - at));
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> file(data, size);

    lv::RecBuffer any;
    int progressCalls = 0;
    const lv::LoadResult r = lv::loadLvdBytes(file, std::nullopt, any, [&](int f) {
        check(f >= 1 && f <= 50);
        ++progressCalls;
    });
    check(r.ok() == lv::Verify_lvd_Format(file));
    if (!r.ok()) {
        check(r.status == lv::LoadStatus::Incompatible && !r.title.empty());
        check(any.RecCount == 0 && any.upperBound() == lv::RecBuffer::kGrowth);
        return 0;
    }

    const std::int32_t count = any.RecCount;
    check(count == lv::lvdRecordCount(size) && count >= 5 && any.upperBound() == count);
    check(r.recordsRead == count && progressCalls >= 1);
    check(any.TotalTimeMs == any(count).TimeMs);
    for (std::int32_t i = 1; i <= count; ++i) {
        std::array<std::uint8_t, lv::kLvdRecordSize> encoded{};
        lv::encodeRecord(any(i), encoded.data());
        check(encoded == fileRecord(file, i));
    }

    // Seeking to a time taken from the file lands on a record at or after it,
    // or on the last record.
    const std::int32_t wanted =
        any(1 + static_cast<std::int32_t>(data[0]) % count).TimeMs ^ data[1];
    const std::int32_t pos = any.FindlvdRecord(wanted);
    check(pos >= 1 && pos <= count);
    check(pos == count || any(pos).TimeMs >= wanted);
    check(any.CurRecord == any(pos));

    // With the first record's dial type as the one set, the load stops at the
    // first record of another type and keeps exactly the records up to it.
    const int dial = lv::dialTypeOf(data[lv::lvd_offset::kStatusFlags]);
    lv::RecBuffer same;
    const lv::LoadResult d = lv::loadLvdBytes(file, dial, same);
    std::int32_t firstOther = 0;
    for (std::int32_t i = 1; i <= count && firstOther == 0; ++i)
        if (lv::dialTypeOf(any(i).StatusFlags) != dial) firstOther = i;
    check(d.ok() == (firstOther == 0));
    check(same.upperBound() == count);
    const std::int32_t kept = d.ok() ? count : firstOther;
    check(d.recordsRead == kept);
    for (std::int32_t i = 1; i <= count; ++i)
        check(same(i) == (i <= kept ? any(i) : lv::lvdRecord{}));
    return 0;
}
