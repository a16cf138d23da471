#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The meter's loader: entered with "H", unlocked with the two key bytes, then
// fed Intel HEX lines, each answered PASS or FAIL, until the end record.
namespace lv::sim {

inline constexpr std::string_view kLoaderKey = "\xC2\xD4";
inline constexpr std::uint32_t kTableAddress = 0xE000;
inline constexpr std::size_t kTableEntries = 4096;

using CorrectionTable = std::array<std::uint16_t, kTableEntries>;

class Loader {
public:
    enum class Answer { None, Pass, Fail };

    struct Result {
        Answer answer = Answer::None;
        bool finished = false;  // the end record arrived: the loader is left
        std::string note;       // why, for the log
    };

    // failEvery > 0 refuses every Nth HEX line on purpose, as a meter with a
    // noisy line would, so the program's retry path can be exercised.
    explicit Loader(int failEvery = 0);

    // "H": (re)start, waiting for the key. Memory survives: a retried entry
    // must not lose records already written.
    void enter();

    Result handleLine(std::string_view line);

    bool unlocked() const { return m_unlocked; }
    const std::vector<std::uint8_t>& memory() const { return m_memory; }

    // Entries k at 0xE000 + 2k, low byte first.
    CorrectionTable table() const;

private:
    Result handleRecord(std::string_view line);

    std::vector<std::uint8_t> m_memory;
    std::uint32_t m_upperAddress = 0;
    bool m_unlocked = false;
    int m_failEvery;
    int m_linesSeen = 0;
};

// One decimal value a line, 4096 lines.
std::string tableText(const CorrectionTable& table);

}  // namespace lv::sim
