#pragma once
#include <functional>
#include <map>
#include <stdexcept>

#include "common/pump.h"

namespace lv::test {

// A clock that moves only when the code under test waits. Things scheduled
// for a time happen when a wait or DoEvents passes it, as window events would.
class FakePump : public Pump {
public:
    explicit FakePump(double start = 36000.0) : m_now(start) {}

    double Timer() override { return m_now; }
    void DoEvents() override { runDue(); }
    void wait(double seconds) override {
        // A wait loop that never ends would hang the test run; fail it instead.
        if (++waits > kMaxWaits)
            throw std::runtime_error("FakePump: the code under test never stops waiting");
        waited += seconds;
        const double end = m_now + seconds;
        // Step through every scheduled moment on the way so events land in order.
        while (!m_events.empty() && m_events.begin()->first <= end) {
            m_now = m_events.begin()->first;
            runDue();
        }
        m_now = end;
        if (m_now >= 86400.0) m_now -= 86400.0;
        runDue();
    }

    void after(double seconds, std::function<void()> action) {
        m_events.emplace(m_now + seconds, std::move(action));
    }
    double now() const { return m_now; }

    int waits = 0;
    double waited = 0;

private:
    static constexpr int kMaxWaits = 1000000;
    void runDue() {
        while (!m_events.empty() && m_events.begin()->first <= m_now) {
            auto action = std::move(m_events.begin()->second);
            m_events.erase(m_events.begin());
            action();
        }
    }
    double m_now;
    std::multimap<double, std::function<void()>> m_events;
};

}  // namespace lv::test
