#pragma once
#include <array>
#include <cstdint>
#include <vector>

#include "recording/lvd_record.h"
#include "support/file_bytes.h"

namespace lv::test {

// A frame of the default dial (type 1).
inline lvdRecord frame(std::int32_t timeMs, std::array<std::uint8_t, 4> stamp = {}) {
    return {.TimeMs = timeMs, .StatusFlags = 0x20, .Stamp = stamp, .FrameType = 'P'};
}

// n frames 20 ms apart from 20 ms.
inline std::vector<lvdRecord> steady(int n) {
    std::vector<lvdRecord> out;
    for (int i = 1; i <= n; ++i) out.push_back(frame(20 * i));
    return out;
}

// The same as a file holds them.
inline std::vector<std::uint8_t> steadyBytes(int n) {
    std::vector<std::uint8_t> out(static_cast<std::size_t>(n) * kLvdRecordSize);
    for (int i = 0; i < n; ++i) encodeRecord(frame(20 * (i + 1)), &out[i * kLvdRecordSize]);
    return out;
}

}  // namespace lv::test
