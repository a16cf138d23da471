#include "lv3sim/meter.h"

#include "device/protocol.h"

namespace lv::sim {

namespace {

namespace proto = lv::protocol;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::optional<int> hexValue(std::string_view digits) {
    const auto value = proto::hexField(digits);
    if (!value) return std::nullopt;
    return static_cast<int>(*value);
}

// "hhhN": the calibration dialog's needle drive, 12 bits.
std::optional<int> scaleDrive(std::string_view line) {
    if (line.size() != 4 || line[3] != 'N') return std::nullopt;
    return hexValue(line.substr(0, 3));
}

// "Nhhh": the dial test's drive, sent before the calibration dialog opens.
std::optional<int> dialTestDrive(std::string_view line) {
    if (line.size() != 4 || line[0] != 'N') return std::nullopt;
    return hexValue(line.substr(1));
}

// A replayed sample: "P", needle (3 hex), BD (3 or more digits, or three
// blanks), Base (3 digits), flags (1 hex). Described for the log.
std::optional<std::string> describePlayback(std::string_view line) {
    if (line.size() < 11 || line[0] != 'P') return std::nullopt;
    const auto needle = hexValue(line.substr(1, 3));
    const std::string_view bd = line.substr(4, line.size() - 8);
    const std::string_view base = line.substr(line.size() - 4, 3);
    const auto flags = hexValue(line.substr(line.size() - 1));
    const bool bdBlank = bd == "   ";
    bool bdDigits = true;
    for (char c : bd) bdDigits = bdDigits && isDigit(c);
    bool baseDigits = true;
    for (char c : base) baseDigits = baseDigits && isDigit(c);
    if (!needle || !flags || !(bdBlank || bdDigits) || !baseDigits) return std::nullopt;
    return "playback needle " + std::to_string(*needle) + " bd " +
           (bdBlank ? std::string("off") : std::string(bd)) + " base " + std::string(base) +
           " flags " + std::to_string(*flags);
}

MeterResponse noteOnly(std::string note) {
    MeterResponse r;
    r.notes.push_back(std::move(note));
    return r;
}

}  // namespace

Meter::Meter(MeterIdentity identity, int failEvery)
    : m_identity(std::move(identity)), m_loader(failEvery) {}

MeterResponse Meter::handleLine(std::string_view line) {
    return m_mode == MeterMode::Loader ? handleLoaderLine(line) : handleCommand(line);
}

MeterResponse Meter::handleLoaderLine(std::string_view line) {
    if (line == proto::kLoader) {
        m_loader.enter();
        return noteOnly("loader entered again");
    }
    const Loader::Result result = m_loader.handleLine(line);
    MeterResponse r;
    r.acknowledgement = result.answer != Loader::Answer::None;
    if (result.answer == Loader::Answer::Pass) r.reply = "PASS\r";
    if (result.answer == Loader::Answer::Fail) r.reply = "FAIL\r";
    if (!result.note.empty()) r.notes.push_back(result.note);
    if (result.finished) {
        m_mode = MeterMode::Idle;
        r.uploadFinished = true;
    }
    return r;
}

MeterResponse Meter::handleCommand(std::string_view line) {
    if (line.empty()) return {};
    if (line == proto::kVersion) {
        MeterResponse r;
        r.reply = proto::versionReplyLine(m_identity.code, m_identity.boot, m_identity.firmware);
        return r;
    }
    if (line == proto::kQuiet) {
        if (m_mode == MeterMode::Streaming) m_mode = MeterMode::Idle;
        return {};
    }
    if (line == proto::kStart) {
        m_mode = MeterMode::Streaming;
        return {};
    }
    if (line == proto::kRun) return noteOnly("run");
    if (line == proto::kSensorLocal || line == proto::kSensorRemote) {
        m_sensor = line == proto::kSensorLocal ? Sensor::Local : Sensor::Remote;
        return noteOnly(m_sensor == Sensor::Local ? "sensor local" : "sensor remote");
    }
    if (line == proto::kScaleMode) {
        m_mode = MeterMode::Scale;
        return noteOnly("scale mode");
    }
    if (line == proto::kLoader) {
        m_mode = MeterMode::Loader;
        m_loader.enter();
        return noteOnly("loader entered");
    }
    if (line == proto::kDialTestEnd) {
        if (m_mode == MeterMode::Scale) m_mode = MeterMode::Idle;
        return noteOnly("dial test end");
    }
    if (const auto drive = dialTestDrive(line)) {
        m_dialValue = *drive;
        return noteOnly("dial test " + std::to_string(*drive));
    }
    if (m_mode == MeterMode::Scale) {
        if (const auto drive = scaleDrive(line)) {
            m_dialValue = *drive;
            return noteOnly("dial " + std::to_string(*drive));
        }
    }
    if (auto playback = describePlayback(line)) return noteOnly(std::move(*playback));
    if (line == proto::kHexEnd) return noteOnly("end record outside the loader");
    return noteOnly("unknown command");
}

}  // namespace lv::sim
