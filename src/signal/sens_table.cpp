#include "signal/sens_table.h"

#include <utility>

#include "common/vb_format.h"

namespace lv {

namespace {

constexpr int kPositions = 64;
constexpr int kLabelOffset = 65;

// Knob position p: gain text and label. The gain is the label times 1638.4
// (65536 counts over a 40-unit span), except that 40 stops at 65535 so the
// gain still fits 16 bits. Rows repeat where neighbouring knob steps share a
// gain: the knob has 64 detents, the meter fewer distinct settings.
constexpr std::pair<const char*, const char*> kRows[kPositions] = {
    {"1638", "1.0"},  {"1966", "1.2"},  {"2294", "1.4"},  {"2294", "1.4"},   // 0..3
    {"2621", "1.6"},  {"2949", "1.8"},  {"3277", "2.0"},  {"3277", "2.0"},   // 4..7
    {"4096", "2.5"},  {"4096", "2.5"},  {"4096", "2.5"},  {"4915", "3.0"},   // 8..11
    {"4915", "3.0"},  {"5734", "3.5"},  {"5734", "3.5"},  {"5734", "3.5"},   // 12..15
    {"6554", "4.0"},  {"6554", "4.0"},  {"7373", "4.5"},  {"7373", "4.5"},   // 16..19
    {"8192", "5.0"},  {"8192", "5.0"},  {"9011", "5.5"},  {"9011", "5.5"},   // 20..23
    {"9830", "6.0"},  {"9830", "6.0"},  {"10650", "6.5"}, {"10650", "6.5"},  // 24..27
    {"11469", "7.0"}, {"12288", "7.5"}, {"12288", "7.5"}, {"13107", "8.0"},  // 28..31
    {"13926", "8.5"}, {"13926", "8.5"}, {"14746", "9.0"}, {"15565", "9.5"},  // 32..35
    {"16384", "10"},  {"16384", "10"},  {"18022", "11"},  {"18022", "11"},   // 36..39
    {"19661", "12"},  {"19661", "12"},  {"21299", "13"},  {"21299", "13"},   // 40..43
    {"22938", "14"},  {"24576", "15"},  {"24576", "15"},  {"26214", "16"},   // 44..47
    {"27853", "17"},  {"29491", "18"},  {"31130", "19"},  {"32768", "20"},   // 48..51
    {"32768", "20"},  {"36045", "22"},  {"36045", "22"},  {"39322", "24"},   // 52..55
    {"42598", "26"},  {"45875", "28"},  {"45875", "28"},  {"49152", "30"},   // 56..59
    {"54067", "33"},  {"57344", "35"},  {"60621", "37"},  {"65535", "40"},   // 60..63
};

SensTableType buildTable() {
    SensTableType table;
    for (int p = 0; p < kPositions; ++p) {
        table[static_cast<std::size_t>(p)] = kRows[p].first;
        table[static_cast<std::size_t>(p + kLabelOffset)] = kRows[p].second;
    }
    return table;
}

}  // namespace

const SensTableType& SensTable() {
    static const SensTableType table = buildTable();
    return table;
}

std::int32_t sensGain(int sensPos) {
    // Entry 64 exists and is empty, so it reads as gain 0 like any non-number.
    if (sensPos < 0 || sensPos > kPositions) return 0;
    // Converted at each use, as the original did; the texts are all whole numbers.
    return static_cast<std::int32_t>(vbVal(SensTable()[static_cast<std::size_t>(sensPos)]));
}

std::string sensLabel(int sensPos) {
    if (sensPos < 0 || sensPos >= kPositions) return {};
    return SensTable()[static_cast<std::size_t>(sensPos + kLabelOffset)];
}

}  // namespace lv
