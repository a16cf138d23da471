#pragma once
#include <algorithm>
#include <cstdint>
#include <vector>

namespace lv {

// The long straight lines of a picture that is wiped and drawn whole at
// every step: a chart's grid. Kept apart from the trace's strips, since a
// grid line reaches across every strip. From one step to the next most of
// the grid lies where it lay, in the same colour, and only the lines that
// moved, came or went are repainted.
class StraightLines {
public:
    struct Line {
        int left, top, right, bottom;  // half-open, the pixels it may touch
        std::uint32_t colour;
        bool operator==(const Line&) const = default;
    };
    static constexpr std::size_t kMost = 64;

    // False when full: the caller keeps the line some other way.
    bool add(const Line& line) {
        if (m_drawn.size() >= kMost) return false;
        m_drawn.push_back(line);
        return true;
    }
    // The lines drawn since the last wipe.
    const std::vector<Line>& drawn() const { return m_drawn; }
    void wiped() { m_drawn.clear(); }
    // f(line) for every line on the screen now that is not in the picture,
    // and every line in the picture not on the screen; the picture is then
    // what the screen shows.
    template <class F>
    void takeChanged(F f) {
        for (const Line& l : m_shown)
            if (std::find(m_drawn.begin(), m_drawn.end(), l) == m_drawn.end()) f(l);
        for (const Line& l : m_drawn)
            if (std::find(m_shown.begin(), m_shown.end(), l) == m_shown.end()) f(l);
        m_shown = m_drawn;
    }
    // A picture repainted whole, or a new one.
    void reset() {
        m_drawn.clear();
        m_shown.clear();
    }

private:
    std::vector<Line> m_drawn, m_shown;
};

}  // namespace lv
