#include <cstdlib>

#include "common/vb_format.h"
#include "signal/needle_model.h"

namespace lv {

namespace {

constexpr int kSlots = 16;  // history slots 1..16; 0 and 17 stay unused
constexpr int kShortest = 3;
constexpr int kLongest = 10;
constexpr std::int32_t kSteady = 100;  // span over 16 slots that counts as a still needle

}  // namespace

// A moving average that lengthens while the needle is still and shortens
// while it moves, so a resting needle is calm and a swing is not smeared.
void Filter(MeterState& st) {
    FilterState& f = st.filter;
    if (f.length > kLongest) f.length = kLongest;
    if (f.length < kShortest) f.length = kShortest;

    if (st.NeedleReset) {
        for (int i = 1; i <= kSlots; ++i) f.history[i] = st.RawNeedle;
    } else {
        for (int i = kSlots - 1; i >= 1; --i) f.history[i + 1] = f.history[i];
        f.history[1] = st.RawNeedle;
    }

    std::int64_t sum = 0;
    for (int i = 1; i <= f.length; ++i) sum += f.history[i];
    st.FilteredNeedle =
        static_cast<std::int32_t>(roundHalfEven(static_cast<double>(sum) / f.length));

    // Exactly 100 is neither moving nor still: the length stays. The result
    // may sit at 2 or 11 until the clamp of the next call.
    const std::int64_t span =
        std::llabs(static_cast<std::int64_t>(f.history[1]) - f.history[kSlots]);
    if (span > kSteady) --f.length;
    if (span < kSteady) ++f.length;
}

void sampleStep(MeterState& st) {
    // The alert logic compares against the last two readings; after a reset
    // there are none worth comparing, so pretend the needle has been here.
    if (st.NeedleReset) {
        st.rawHistory[0] = st.RawNeedle;
        st.rawHistory[1] = st.RawNeedle;
    }
    if (st.TestModeOn) {
        st.FilteredNeedle = st.RawNeedle;  // the needle test wants every step visible
    } else {
        Filter(st);
    }
    st.rawHistory[2] = st.rawHistory[1];
    st.rawHistory[1] = st.rawHistory[0];
    st.rawHistory[0] = st.RawNeedle;
}

}  // namespace lv
