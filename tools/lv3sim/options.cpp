#include "lv3sim/options.h"

#include <charconv>
#include <cmath>
#include <functional>
#include <map>

namespace lv::sim {

namespace {

// Version texts go out verbatim; a CR or a control byte would break the
// reply line itself rather than test the program's reading of it.
bool printable(std::string_view text) {
    for (char c : text)
        if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) > 0x7E)
            return false;
    return true;
}

std::optional<long long> parseInteger(std::string_view text) {
    long long value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<double> parseSeconds(std::string_view text) {
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value) || value < 0)
        return std::nullopt;
    return value;
}

using Setter = std::function<std::string(Options&, std::string_view)>;

Setter text(std::string Options::*field, bool allowEmpty = false) {
    return [field, allowEmpty](Options& o, std::string_view v) -> std::string {
        if (!allowEmpty && v.empty()) return "needs a non-empty value";
        if (!printable(v)) return "takes printable ASCII only";
        o.*field = std::string(v);
        return {};
    };
}

Setter path(std::string Options::*field) {
    return [field](Options& o, std::string_view v) -> std::string {
        if (v.empty()) return "needs a path";
        o.*field = std::string(v);
        return {};
    };
}

Setter count(int Options::*field, long long min, long long max) {
    return [field, min, max](Options& o, std::string_view v) -> std::string {
        const auto n = parseInteger(v);
        if (!n || *n < min || *n > max)
            return "needs a whole number from " + std::to_string(min) + " to " +
                   std::to_string(max);
        o.*field = static_cast<int>(*n);
        return {};
    };
}

Setter seconds(std::optional<double> Options::*field) {
    return [field](Options& o, std::string_view v) -> std::string {
        const auto s = parseSeconds(v);
        if (!s) return "needs a number of seconds (0 or more)";
        o.*field = *s;
        return {};
    };
}

const std::map<std::string_view, Setter>& valueOptions() {
    static const std::map<std::string_view, Setter> options = {
        {"--link", path(&Options::link)},
        {"--code", text(&Options::code)},
        {"--boot", text(&Options::boot, true)},
        {"--firmware", text(&Options::firmware, true)},
        {"--seed", {[](Options& o, std::string_view v) -> std::string {
             std::uint64_t seed = 0;
             const auto [end, ec] = std::from_chars(v.data(), v.data() + v.size(), seed);
             if (ec != std::errc() || end != v.data() + v.size() || v.empty())
                 return "needs a whole number";
             o.seed = seed;
             return {};
         }}},
        {"--pace", {[](Options& o, std::string_view v) -> std::string {
             if (v == "line")
                 o.pace = Pace::Line;
             else if (v == "byte")
                 o.pace = Pace::Byte;
             else
                 return "takes 'line' or 'byte'";
             return {};
         }}},
        {"--script", path(&Options::scriptPath)},
        {"--table-out", path(&Options::tableOut)},
        {"--log", path(&Options::logPath)},
        {"--reply-delay", count(&Options::replyDelayMs, 0, 10000)},
        {"--fail-every", count(&Options::failEvery, 1, 1000000)},
        {"--burst", count(&Options::burst, 1, 1000)},
        {"--bad-every", count(&Options::badEvery, 1, 1000000)},
        {"--stall-after", seconds(&Options::stallAfter)},
        {"--stall-for", seconds(&Options::stallFor)},
        {"--exit-after", seconds(&Options::exitAfter)},
    };
    return options;
}

const std::map<std::string_view, std::function<void(Options&)>>& flagOptions() {
    static const std::map<std::string_view, std::function<void(Options&)>> flags = {
        {"--repeat", [](Options& o) { o.repeat = true; }},
        {"--once", [](Options& o) { o.repeat = false; }},
        {"--ack-split", [](Options& o) { o.ackSplit = true; }},
        {"--garbage", [](Options& o) { o.garbage = true; }},
        {"--mute", [](Options& o) { o.mute = true; }},
        {"--help", [](Options& o) { o.help = true; }},
        {"-h", [](Options& o) { o.help = true; }},
        {"--version", [](Options& o) { o.version = true; }},
    };
    return flags;
}

std::string crossCheck(const Options& o, bool sawOnce) {
    if (o.link.empty()) return "--link PATH is required";
    if (sawOnce && o.scriptPath.empty()) return "--once needs --script";
    if (o.stallFor && !o.stallAfter) return "--stall-for needs --stall-after";
    if (o.exitAfter && *o.exitAfter <= 0) return "--exit-after needs a time above 0";
    return {};
}

}  // namespace

ParsedOptions parseOptions(const std::vector<std::string_view>& args) {
    ParsedOptions result;
    Options& o = result.options;
    bool sawOnce = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string_view name = args[i];
        std::optional<std::string_view> inlineValue;
        if (const auto eq = name.find('=');
            name.starts_with("--") && eq != std::string_view::npos) {
            inlineValue = name.substr(eq + 1);
            name = name.substr(0, eq);
        }
        if (const auto flag = flagOptions().find(name); flag != flagOptions().end()) {
            if (inlineValue) {
                result.error = std::string(name) + " takes no value";
                return result;
            }
            flag->second(o);
            sawOnce = sawOnce || name == "--once";
            continue;
        }
        const auto option = valueOptions().find(name);
        if (option == valueOptions().end()) {
            result.error = "unknown option '" + std::string(args[i]) + "'";
            return result;
        }
        if (!inlineValue && i + 1 >= args.size()) {
            result.error = std::string(name) + " needs a value";
            return result;
        }
        const std::string_view value = inlineValue ? *inlineValue : args[++i];
        if (const std::string why = option->second(o, value); !why.empty()) {
            result.error = std::string(name) + " " + why + " (got '" + std::string(value) + "')";
            return result;
        }
    }
    if (!o.help && !o.version) result.error = crossCheck(o, sawOnce);
    return result;
}

std::string helpText() {
    return R"(Usage: lv3sim --link PATH [options]

A virtual lv3 meter on a pseudo-terminal. Publishes the terminal as the
symlink PATH, prints "READY PATH" and serves until SIGTERM or SIGINT.

Identity:
  --link PATH          symlink to create for the terminal (required)
  --code TEXT          hardware code in the version reply (default 40;
                       the program knows 40, 2A, 3A and 31)
  --boot TEXT          boot version text (default 1.02)
  --firmware TEXT      firmware version text (default 2.10)

Data stream (starts on "U", stops on "Q", "S" or "H"):
  --seed N             seed of the simulated reading (default 1)
  --pace line|byte     whole lines every 20 ms (default), or the bytes of
                       each line spread at the 9600-baud rate
  --script FILE        send the frames of FILE (one 12-character frame per
                       line, '#' comments and blank lines skipped, lines sent
                       as written) instead of the simulated reading
  --repeat             play the script again and again (default)
  --once               play the script once, then fall quiet

Loader and calibration:
  --table-out FILE     after an upload ends, write the table at
                       0xE000..0xFFFF as 4096 decimal values, one a line
  --ack-split          send "PASS"/"FAIL" and its CR as two writes 5 ms apart
  --reply-delay MS     hold every reply back by MS milliseconds
  --fail-every N       answer FAIL to every Nth HEX line of the loader

Faults:
  --burst N            send N frames at once every N x 20 ms
  --bad-every N        make every Nth frame bad (a non-hex needle digit or
                       a short line, in turn)
  --garbage            put random garbage bytes between frames now and then
  --stall-after S      stop writing after S seconds
  --stall-for D        resume D seconds after the stall began (default:
                       never); lines missed meanwhile are dropped
  --exit-after S       exit cleanly after S seconds
  --mute               open, read and log, but never send anything

Other:
  --log FILE           record every line received, with seconds since start
                       ("12.345678 V"); control bytes appear as \xNN; events
                       of the meter appear on lines starting with "#"
  --help, -h           show this text
  --version            show the version
)";
}

}  // namespace lv::sim
