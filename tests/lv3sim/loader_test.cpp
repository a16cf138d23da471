#include "lv3sim/loader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "calibration/intel_hex.h"

namespace lv::sim {
namespace {

using A = Loader::Answer;

std::string entriesRecord(std::uint16_t address, std::initializer_list<std::uint16_t> entries) {
    std::vector<std::uint8_t> bytes;
    for (std::uint16_t e : entries) {
        bytes.push_back(static_cast<std::uint8_t>(e & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(e >> 8));
    }
    return formatDataRecord(address, bytes);
}

// Each sequence starts in a loader just entered with "H".
TEST(Loader, AnswersEachLine) {
    const std::string key(kLoaderKey);
    const std::vector<std::vector<std::pair<std::string, A>>> sequences = {
        {{":020000040000FA", A::Fail}, {key, A::Pass}, {":020000040000FA", A::Pass}},
        {{key, A::Pass}, {":10e0000000000100020003000400050006000700f4", A::Pass}},
        {{key, A::Pass}, {":10E0000000000100020003000400050006000700F5", A::Fail}},
        {{key, A::Pass}, {":10E000000000010002000300040005000600070F4", A::Fail}},
        {{key, A::Pass}, {"U", A::Fail}, {":0000000AF6", A::Fail}},
        {{key, A::Pass}, {":020000040001F9", A::Pass}, {entriesRecord(0xE000, {1}), A::Fail}},
        {{key, A::Pass},
         {entriesRecord(0xFFFE, {1, 2}), A::Fail},
         {entriesRecord(0xFFFE, {1}), A::Pass}},
    };
    for (const auto& sequence : sequences) {
        Loader loader;
        loader.enter();
        for (const auto& [line, answer] : sequence) {
            const Loader::Result r = loader.handleLine(line);
            EXPECT_EQ(r.answer, answer) << line << ": " << r.note;
            EXPECT_FALSE(r.finished);
        }
    }
}

TEST(Loader, WritesTheTableLowByteFirst) {
    Loader loader;
    loader.enter();
    loader.handleLine(kLoaderKey);
    EXPECT_EQ(loader.handleLine(entriesRecord(0xE000, {0x0ABC, 1, 2, 3, 4, 5, 6, 0xFFFF})).answer,
              A::Pass);
    EXPECT_EQ(loader.handleLine(entriesRecord(0xFFF0, {9, 8, 7, 6, 5, 4, 3, 2})).answer, A::Pass);
    EXPECT_EQ(loader.memory()[0xE000], 0xBC);
    EXPECT_EQ(loader.memory()[0xE001], 0x0A);
    const Loader::Result end = loader.handleLine(":00000001FF");
    EXPECT_TRUE(end.answer == A::Pass && end.finished);

    // Entries never written keep the straight table a meter starts with.
    std::istringstream text(tableText(loader.table()));
    std::vector<long> entries;
    for (long v; text >> v;) entries.push_back(v);
    ASSERT_EQ(entries.size(), kTableEntries);
    const long first[] = {0x0ABC, 1, 2, 3, 4, 5, 6, 0xFFFF}, last[] = {9, 8, 7, 6, 5, 4, 3, 2};
    for (std::size_t k = 0; k < kTableEntries; ++k) {
        const long expected = k < 8 ? first[k] : k >= 4088 ? last[k - 4088] : static_cast<long>(k);
        ASSERT_EQ(entries[k], expected) << "entry " << k;
    }
}

TEST(Loader, FailsEveryNthLineOnRequestAndKeepsThatLineOut) {
    Loader loader(3);
    loader.enter();
    loader.handleLine(kLoaderKey);
    std::string answers;
    for (std::uint16_t v = 1; v <= 6; ++v)
        answers += loader.handleLine(entriesRecord(0xE000, {v})).answer == A::Pass ? 'P' : 'F';
    EXPECT_EQ(answers, "PPFPPF");
    EXPECT_EQ(loader.table()[0], 5);
}

}  // namespace
}  // namespace lv::sim
