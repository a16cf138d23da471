// Placeholder so the tree links while the real conversions are written.
#include "common/vb_format.h"

namespace lv {
std::int64_t roundHalfEven(double value) { return static_cast<std::int64_t>(value); }
std::string formatNumber(double, std::string_view) { return {}; }
double vbVal(std::string_view) { return 0; }
std::optional<std::int32_t> vbCLng(std::string_view) { return std::nullopt; }
std::optional<std::int16_t> vbCInt(std::string_view) { return std::nullopt; }
std::optional<bool> vbCBool(std::string_view) { return std::nullopt; }
}  // namespace lv
