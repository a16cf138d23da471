#include "lv3sim/loader.h"

#include <algorithm>

#include "calibration/intel_hex.h"

namespace lv::sim {

namespace {

constexpr std::size_t kMemorySize = 0x10000;

Loader::Result pass(std::string note) {
    return {Loader::Answer::Pass, false, std::move(note)};
}
Loader::Result fail(std::string note) {
    return {Loader::Answer::Fail, false, std::move(note)};
}

}  // namespace

Loader::Loader(int failEvery) : m_memory(kMemorySize, 0xFF), m_failEvery(failEvery) {
    // A meter leaves the factory with a straight table, so an upload that is
    // cut short shows as a mix of old and new entries rather than as noise.
    for (std::size_t k = 0; k < kTableEntries; ++k) {
        m_memory[kTableAddress + 2 * k] = static_cast<std::uint8_t>(k & 0xFF);
        m_memory[kTableAddress + 2 * k + 1] = static_cast<std::uint8_t>(k >> 8);
    }
}

void Loader::enter() {
    m_unlocked = false;
    m_upperAddress = 0;
}

Loader::Result Loader::handleLine(std::string_view line) {
    if (line == kLoaderKey) {
        m_unlocked = true;
        return pass("loader unlocked");
    }
    // The end record leaves the loader even while locked: it is how the
    // program's "Terminate" gets a meter out of a half-done entry.
    if (line.starts_with(':')) {
        if (!m_unlocked) {
            const auto record = parseHexLine(line);
            if (record && record->type == HexRecordType::EndOfFile)
                return {Answer::Pass, true, "loader left before unlocking"};
            return fail("HEX line before the key");
        }
        return handleRecord(line);
    }
    return fail("not a HEX line");
}

Loader::Result Loader::handleRecord(std::string_view line) {
    HexLineError why = HexLineError::None;
    const auto record = parseHexLine(line, &why);
    if (!record) return fail(std::string("bad HEX line: ") + hexLineErrorText(why));

    ++m_linesSeen;
    if (m_failEvery > 0 && m_linesSeen % m_failEvery == 0) return fail("refused on purpose");

    switch (record->type) {
        case HexRecordType::EndOfFile:
            return {Answer::Pass, true, "upload complete"};
        case HexRecordType::ExtendedLinearAddress: {
            if (record->data.size() != 2) return fail("extended address needs 2 bytes");
            m_upperAddress = static_cast<std::uint32_t>(record->data[0] << 8 | record->data[1]);
            return pass({});
        }
        case HexRecordType::Data: {
            const std::uint32_t start = (m_upperAddress << 16) + record->address;
            if (start + record->data.size() > kMemorySize) return fail("data outside memory");
            std::copy(record->data.begin(), record->data.end(), m_memory.begin() + start);
            return pass({});
        }
        default:
            return fail("record type not supported");
    }
}

CorrectionTable Loader::table() const {
    CorrectionTable table{};
    for (std::size_t k = 0; k < kTableEntries; ++k)
        table[k] = static_cast<std::uint16_t>(m_memory[kTableAddress + 2 * k] |
                                              m_memory[kTableAddress + 2 * k + 1] << 8);
    return table;
}

std::string tableText(const CorrectionTable& table) {
    std::string text;
    text.reserve(table.size() * 6);
    for (std::uint16_t entry : table) {
        text += std::to_string(entry);
        text += '\n';
    }
    return text;
}

}  // namespace lv::sim
