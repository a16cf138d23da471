#pragma once
#include <array>
#include <string>

namespace lv {

// The dial types by the names the meter setup dialog gives them.
inline constexpr std::array<const char*, 4> kDialTypeCaptions{
    "Circular 1", "Traditional", "Traditional Continuous", "Circular 2"};

// A type no dialog offers (from a foreign or damaged file) goes by its number.
inline std::string dialTypeCaption(int type) {
    if (type >= 0 && type < static_cast<int>(kDialTypeCaptions.size()))
        return kDialTypeCaptions[static_cast<std::size_t>(type)];
    return "number " + std::to_string(type);
}

}  // namespace lv
