#pragma once
#include <cstdint>
#include <cstring>
#include <string>

namespace lv::test {

// 16-bit samples of loud noise no stretch of which repeats, so a sample found
// at the wrong place, dropped, doubled or byte-swapped shows.
inline std::string noise(std::size_t samples, std::uint32_t seed = 12345) {
    std::string pcm(samples * 2, '\0');
    for (std::size_t i = 0; i < samples; ++i) {
        seed = seed * 1664525u + 1013904223u;
        const auto v = static_cast<std::int16_t>(static_cast<int>(seed >> 16) - 32768);
        std::memcpy(pcm.data() + 2 * i, &v, 2);
    }
    return pcm;
}

}  // namespace lv::test
