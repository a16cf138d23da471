#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lv3sim/loader.h"

// What the meter does with each command line: its modes, its replies and the
// state a test may want to see (the dial drive value, the sensor choice).
namespace lv::sim {

enum class MeterMode {
    Idle,       // quiet, answering commands
    Streaming,  // sending data frames
    Scale,      // calibration: the dial follows "hhhN" commands
    Loader,     // taking Intel HEX lines
};

enum class Sensor { Unset, Local, Remote };

struct MeterIdentity {
    std::string code;
    std::string boot;
    std::string firmware;
};

struct MeterResponse {
    std::string reply;
    bool acknowledgement = false;  // a loader PASS/FAIL (the one --ack-split splits)
    bool uploadFinished = false;   // the end record closed the loader
    std::vector<std::string> notes;
};

class Meter {
public:
    Meter(MeterIdentity identity, int failEvery);

    MeterResponse handleLine(std::string_view line);

    MeterMode mode() const { return m_mode; }
    bool streaming() const { return m_mode == MeterMode::Streaming; }
    std::optional<int> dialValue() const { return m_dialValue; }
    Sensor sensor() const { return m_sensor; }
    const Loader& loader() const { return m_loader; }

private:
    MeterResponse handleLoaderLine(std::string_view line);
    MeterResponse handleCommand(std::string_view line);

    MeterIdentity m_identity;
    MeterMode m_mode = MeterMode::Idle;
    std::optional<int> m_dialValue;
    Sensor m_sensor = Sensor::Unset;
    Loader m_loader;
};

}  // namespace lv::sim
