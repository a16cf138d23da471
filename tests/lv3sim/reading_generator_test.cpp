#include "lv3sim/reading_generator.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace lv::sim {
namespace {

constexpr int kTenMinutes = 10 * 60 * 50;

std::vector<protocol::FrameFields> run(std::uint64_t seed, int frames) {
    ReadingGenerator generator(seed);
    std::vector<protocol::FrameFields> out;
    for (int i = 0; i < frames; ++i) {
        const std::string line = *generator.nextLine();
        EXPECT_EQ(line.size(), 13u);
        EXPECT_EQ(line.back(), '\r');
        const auto fields = protocol::splitFrame(std::string_view(line).substr(0, 12));
        if (!fields) {
            ADD_FAILURE() << "frame " << i << " does not decode: " << line;
            break;
        }
        out.push_back(*fields);
    }
    return out;
}

// Ten minutes of frames: all decode with their fields in range, and all the
// things a meter does turn up.
TEST(ReadingGenerator, ALongRunShowsEverythingAMeterDoes) {
    for (std::uint64_t seed : {1u, 7u, 12345u}) {
        SCOPED_TRACE(seed);
        const auto frames = run(seed, kTenMinutes);
        int references = 0, set = 0, motion = 0, knobMoves = 0, falls = 0, rises = 0;
        int lowest = 65535, highest = 0, biggestBd = 0;
        for (std::size_t i = 1; i < frames.size(); ++i) {
            const auto& f = frames[i];
            const auto& prev = frames[i - 1];
            ASSERT_TRUE(f.letter == 'P' || f.letter == 'O');
            ASSERT_LE(f.knob, 127);
            ASSERT_EQ(f.status & ~0xBu, 0u);
            ASSERT_GE(f.bd, 0);
            references += f.letter == 'O';
            set += (f.status & 1) && !(prev.status & 1);
            motion += (f.status & 2) && !(prev.status & 2);
            knobMoves += f.knob != prev.knob;
            ASSERT_LE(std::abs(f.knob - prev.knob), 2) << "knob jumps at " << i;
            // Smooth: even the fastest fall takes several frames.
            ASSERT_LT(std::abs(f.needle - prev.needle), 1000) << "needle jumps at " << i;
            lowest = std::min<int>(lowest, f.needle);
            highest = std::max<int>(highest, f.needle);
            // A fall (or rise) of 300 units or more within half a second.
            if (i >= 25 && i % 25 == 0) {
                const int change = f.needle - frames[i - 25].needle;
                falls += change <= -300;
                rises += change >= 300;
            }
            const bool counting = f.status & 8, wasCounting = prev.status & 8;
            if (counting && wasCounting) {
                ASSERT_GE(f.bd, prev.bd) << "BD went back at " << i;
            } else if (!counting && !wasCounting) {
                ASSERT_EQ(f.bd, prev.bd) << "BD moved while idle at " << i;
            } else if (counting) {
                ASSERT_LE(f.bd, 2) << "BD did not restart at " << i;
            }
            biggestBd = std::max<int>(biggestBd, f.bd);
        }
        // "O" every 20 to 60 s: 10 to 30 in ten minutes.
        EXPECT_GE(references, 9);
        EXPECT_LE(references, 31);
        EXPECT_GE(set, 5);
        EXPECT_GE(motion, 5);
        EXPECT_GE(knobMoves, 1);
        EXPECT_GE(falls, 5);
        EXPECT_GE(rises, 2);
        EXPECT_GT(highest - lowest, 3000);
        EXPECT_GE(biggestBd, 10);
    }
}

TEST(ReadingGenerator, SameSeedSameFramesOtherSeedOthers) {
    ReadingGenerator a(5), b(5), c(6);
    int differ = 0;
    for (int i = 0; i < 3000; ++i) {
        const std::string la = *a.nextLine();
        ASSERT_EQ(la, *b.nextLine()) << "frame " << i;
        differ += la != *c.nextLine();
    }
    EXPECT_GT(differ, 2900);
}

}  // namespace
}  // namespace lv::sim
