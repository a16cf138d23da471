#pragma once
#include <algorithm>
#include <climits>
#include <vector>

namespace lv {

// An area kept as one span of rows for each vertical strip of a picture. A
// chart's trace, 200 short segments across the whole width, comes out as a
// band a few strips' worth of rectangles, where a list of its segments' boxes
// would be hundreds and their bounding box the whole chart.
class StripArea {
public:
    explicit StripArea(int width = 0, int strip = 32) { reset(width, strip); }

    void reset(int width, int strip = 32) {
        m_strip = std::max(1, strip);
        const int strips = (std::max(0, width) + m_strip - 1) / m_strip;
        m_top.assign(strips, INT_MAX);
        m_bottom.assign(strips, INT_MIN);
        m_empty = true;
    }
    // Half-open: columns left..right-1, rows top..bottom-1. What lies beyond
    // the picture's width is left out.
    void add(int left, int top, int right, int bottom) {
        if (left >= right || top >= bottom) return;
        const int first = std::max(0, left / m_strip);
        const int last = std::min(int(m_top.size()) - 1, (right - 1) / m_strip);
        for (int s = first; s <= last; ++s) {
            m_top[s] = std::min(m_top[s], top);
            m_bottom[s] = std::max(m_bottom[s], bottom);
            m_empty = false;
        }
    }
    void add(const StripArea& other) {
        if (other.m_empty) return;
        const int shared = int(std::min(m_top.size(), other.m_top.size()));
        for (int s = 0; s < shared; ++s) {
            if (other.m_top[s] >= other.m_bottom[s]) continue;
            m_top[s] = std::min(m_top[s], other.m_top[s]);
            m_bottom[s] = std::max(m_bottom[s], other.m_bottom[s]);
            m_empty = false;
        }
    }
    void clear() {
        std::fill(m_top.begin(), m_top.end(), INT_MAX);
        std::fill(m_bottom.begin(), m_bottom.end(), INT_MIN);
        m_empty = true;
    }
    bool empty() const { return m_empty; }
    // Pixels covered, counting each strip as full width.
    long long area() const {
        long long sum = 0;
        forEach([&sum](int left, int top, int right, int bottom) {
            sum += static_cast<long long>(right - left) * (bottom - top);
        });
        return sum;
    }
    // f(left, top, right, bottom), half-open, for every strip with anything.
    template <class F>
    void forEach(F f) const {
        for (int s = 0; s < int(m_top.size()); ++s)
            if (m_top[s] < m_bottom[s]) f(s * m_strip, m_top[s], (s + 1) * m_strip, m_bottom[s]);
    }

private:
    int m_strip = 32;
    std::vector<int> m_top, m_bottom;
    bool m_empty = true;
};

}  // namespace lv
