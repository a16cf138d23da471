// Every value in lv_Analog.ini is text someone may have edited by hand. The
// conversion to a setting must be safe, must touch only its own key, must
// leave the key alone when it refuses, and what it takes must survive the
// save and the next load unchanged.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "settings/settings_table.h"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

bool sameExcept(const lv::Settings& a, const lv::Settings& b, const lv::SettingEntry* except) {
    for (const lv::SettingEntry& e : lv::settingsTable())
        if (&e != except && lv::settingText(a, e) != lv::settingText(b, e)) return false;
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const auto table = lv::settingsTable();
    const lv::SettingEntry& entry = table[data[0] % table.size()];
    const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);

    for (const lv::Settings& start : {lv::Settings{}, lv::blankSettings()}) {
        lv::Settings values = start;
        const bool taken = lv::applySettingText(values, entry, text);
        check(sameExcept(values, start, taken ? &entry : nullptr));
        if (!taken) continue;
        // Saved and loaded again: the same value.
        const std::string saved = lv::settingText(values, entry);
        lv::Settings again = lv::blankSettings();
        check(lv::applySettingText(again, entry, saved));
        check(lv::settingText(again, entry) == saved);
    }
    return 0;
}
