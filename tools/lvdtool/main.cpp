// lvdtool: recordings on the command line, read and written by the same code
// as the program's.
#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "common/vb_date.h"
#include "lvdtool/lvd_synth.h"
#include "lvdtool/sound_report.h"
#include "recording/lvd_file.h"
#include "recording/lvd_report.h"
#include "recording/qt_recording_plot.h"
#include "recording/start_stamp.h"

namespace {

constexpr const char* kUsage =
    "Usage: lvdtool COMMAND [OPTIONS]\n"
    "\n"
    "Commands:\n"
    "  info FILE                      summary of a recording, one 'key: value' a line\n"
    "  csv FILE [--json] [-o OUT]     every record as CSV (or JSON lines)\n"
    "  plot FILE -o OUT.png           picture of the whole session\n"
    "  synth OUT.lvd --seconds N      write a lifelike recording\n"
    "\n"
    "'lvdtool COMMAND --help' describes a command. Exit status: 0 done, 1 the file\n"
    "is missing or not a valid recording, 2 the command line is wrong.\n"
    "'lvdtool --version' shows the version.\n";

constexpr const char* kInfoHelp =
    "Usage: lvdtool info FILE\n"
    "Prints records, total_ms, start_time (HH:MM:SS or none), date (YYYY-MM-DD),\n"
    "dial_type and the verdict. Exits 1 with the program's message for a file it\n"
    "would not play.\n"
    "Then the sound beside it, as the player reads it: sound (file, kind, rate,\n"
    "channels, or none), sound_ms and sound_minus_records_ms.\n";
constexpr const char* kCsvHelp =
    "Usage: lvdtool csv FILE [--json] [-o OUT]\n"
    "One header line and one line per record:\n"
    "index,time_ms,raw,needle,bd,base_code,base,sensitivity,lamp,bd_flag,dial_type,frame\n"
    "raw is the meter's reading 0..65535, bd and base the numbers the dial shows,\n"
    "lamp the lamp state 0..3, frame the frame letter. --json writes JSON lines.\n";
constexpr const char* kPlotHelp =
    "Usage: lvdtool plot FILE -o OUT.png [--width W] [--height H]\n"
    "Draws the needle trace and the Base over time (seconds, minutes or hours by\n"
    "the recording's length). Default 1600x900.\n";
constexpr const char* kSynthHelp =
    "Usage: lvdtool synth OUT.lvd --seconds N [--dial-type D] [--seed S]\n"
    "                    [--start 'YYYY-MM-DD HH:MM:SS'] [--no-stamp]\n"
    "Writes a recording of N seconds (50 records a second) made by the program's\n"
    "own needle model from the virtual meter's lifelike reading. The start stamp\n"
    "is the present time unless --start gives one; --no-stamp leaves it out.\n"
    "An existing OUT.lvd is replaced.\n";

struct Args {
    std::vector<std::string> positional;
    std::vector<std::pair<std::string, std::string>> options;  // name, value
    bool flag(const std::string& name) const {
        for (const auto& o : options)
            if (o.first == name) return true;
        return false;
    }
    std::optional<std::string> value(const std::string& name) const {
        for (const auto& o : options)
            if (o.first == name) return o.second;
        return std::nullopt;
    }
};

[[noreturn]] void usageError(const std::string& message, const char* help) {
    std::fprintf(stderr, "lvdtool: %s\n\n%s", message.c_str(), help);
    std::exit(2);
}

Args parseArgs(int argc, char** argv, const std::vector<std::string>& valued,
               const std::vector<std::string>& flags, const char* help) {
    Args args;
    for (int i = 2; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--help" || a == "-h") {
            std::fputs(help, stdout);
            std::exit(0);
        }
        if (std::find(flags.begin(), flags.end(), a) != flags.end()) {
            args.options.emplace_back(a, "");
        } else if (std::find(valued.begin(), valued.end(), a) != valued.end()) {
            if (i + 1 >= argc) usageError(a + " needs a value", help);
            args.options.emplace_back(a, argv[++i]);
        } else if (a.size() > 1 && a[0] == '-') {
            usageError("unknown option " + a, help);
        } else {
            args.positional.push_back(a);
        }
    }
    return args;
}

long numberArg(const Args& args, const std::string& name, long fallback, long lo, long hi,
               const char* help) {
    const auto text = args.value(name);
    if (!text) return fallback;
    char* end = nullptr;
    const long v = std::strtol(text->c_str(), &end, 10);
    if (text->empty() || *end != '\0' || v < lo || v > hi)
        usageError(
            name + " wants a whole number from " + std::to_string(lo) + " to " + std::to_string(hi),
            help);
    return v;
}

lv::tool::LoadedRecording loadOrExit(const std::string& path) {
    auto rec = lv::tool::loadRecording(path);
    if (!rec.ok) {
        std::fprintf(stderr, "lvdtool: %s\n", rec.message.c_str());
        std::exit(1);
    }
    return rec;
}

int cmdInfo(int argc, char** argv) {
    const Args args = parseArgs(argc, argv, {}, {}, kInfoHelp);
    if (args.positional.size() != 1) usageError("info takes one FILE", kInfoHelp);
    const auto rec = lv::tool::loadRecording(args.positional[0]);
    if (!rec.ok) {
        std::fprintf(stderr, "lvdtool: %s\n", rec.message.c_str());
        return 1;
    }
    lv::tool::writeInfo(rec, std::cout);
    lv::tool::writeSoundInfo(args.positional[0], rec.buffer.TotalTimeMs, std::cout);
    return 0;
}

int cmdCsv(int argc, char** argv) {
    const Args args = parseArgs(argc, argv, {"-o"}, {"--json"}, kCsvHelp);
    if (args.positional.size() != 1) usageError("csv takes one FILE", kCsvHelp);
    const auto rec = loadOrExit(args.positional[0]);
    const auto format =
        args.flag("--json") ? lv::tool::RecordFormat::JsonLines : lv::tool::RecordFormat::Csv;
    if (const auto out = args.value("-o")) {
        std::ofstream file(*out);
        if (!file) {
            std::fprintf(stderr, "lvdtool: cannot write %s\n", out->c_str());
            return 1;
        }
        lv::tool::writeRecords(rec.buffer, format, file);
        return file ? 0 : 1;
    }
    lv::tool::writeRecords(rec.buffer, format, std::cout);
    return 0;
}

int cmdPlot(int argc, char** argv) {
    const Args args = parseArgs(argc, argv, {"-o", "--width", "--height"}, {}, kPlotHelp);
    if (args.positional.size() != 1) usageError("plot takes one FILE", kPlotHelp);
    const auto out = args.value("-o");
    if (!out) usageError("plot needs -o OUT.png", kPlotHelp);
    const int width = static_cast<int>(numberArg(args, "--width", 1600, 200, 10000, kPlotHelp));
    const int height = static_cast<int>(numberArg(args, "--height", 900, 150, 10000, kPlotHelp));
    const auto rec = loadOrExit(args.positional[0]);

    // Painting text needs the GUI library, not a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    int qtArgc = 1;
    QGuiApplication app(qtArgc, argv);
    const auto name =
        QString::fromStdString(std::filesystem::path(args.positional[0]).filename().string());
    const auto title = QString("%1 — %2 records, %3 s")
                           .arg(name)
                           .arg(rec.buffer.RecCount)
                           .arg(rec.buffer.TotalTimeMs / 1000.0, 0, 'f', 1);
    QString error;
    if (!lv::tool::plotRecording(rec.buffer, title, QString::fromStdString(*out), width, height,
                                 &error)) {
        std::fprintf(stderr, "lvdtool: %s\n", qPrintable(error));
        return 1;
    }
    return 0;
}

std::optional<lv::LocalDateTime> parseStart(const std::string& text) {
    int y, mo, d, h, mi, s;
    char tail;
    if (std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d%c", &y, &mo, &d, &h, &mi, &s, &tail) != 6)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year{y},
                                           std::chrono::month{static_cast<unsigned>(mo)},
                                           std::chrono::day{static_cast<unsigned>(d)}};
    if (!date.ok() || h < 0 || h > 23 || mi < 0 || mi > 59 || s < 0 || s > 59) return std::nullopt;
    return lv::LocalDateTime{date, h, mi, s};
}

int cmdSynth(int argc, char** argv) {
    const Args args = parseArgs(argc, argv, {"--seconds", "--dial-type", "--seed", "--start"},
                                {"--no-stamp"}, kSynthHelp);
    if (args.positional.size() != 1) usageError("synth takes one OUT.lvd", kSynthHelp);
    if (!args.value("--seconds")) usageError("synth needs --seconds N", kSynthHelp);
    const long seconds = numberArg(args, "--seconds", 0, 1, 24 * 3600, kSynthHelp);
    const int dialType = static_cast<int>(numberArg(args, "--dial-type", 1, 0, 7, kSynthHelp));
    const long seed = numberArg(args, "--seed", 1, 0, 2147483647, kSynthHelp);
    lv::LocalDateTime start = lv::localNow();
    if (const auto text = args.value("--start")) {
        const auto parsed = parseStart(*text);
        if (!parsed) usageError("--start wants 'YYYY-MM-DD HH:MM:SS'", kSynthHelp);
        start = *parsed;
    }

    const auto records = lv::tool::synthRecords(static_cast<double>(seconds), dialType,
                                                static_cast<std::uint64_t>(seed));
    const std::filesystem::path out = args.positional[0];
    std::error_code ec;
    if (std::filesystem::is_directory(out, ec)) {
        std::fprintf(stderr, "lvdtool: %s is a folder\n", out.c_str());
        return 1;
    }
    std::filesystem::remove(out, ec);  // a new recording, not a patch over an old one
    std::optional<lv::StartStamp> stamp;
    if (!args.flag("--no-stamp")) {
        lv::Settings cfg;
        stamp = lv::startStampFor(cfg, lv::secondsOfDay(start), lv::daysSince1999(start.date));
    }
    const auto saved = lv::saveLvdRecords(out, records, stamp);
    if (!saved.saved) {
        std::fprintf(stderr, "lvdtool: %s: %s\n", saved.title.c_str(), saved.text.c_str());
        return 1;
    }
    std::printf("wrote %zu records (%ld s) to %s\n", records.size(), seconds, out.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const std::string cmd = argv[1];
    if (cmd == "--help" || cmd == "-h" || cmd == "help") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (cmd == "--version") {
        std::printf("lvdtool %s\n", LV_VERSION);
        return 0;
    }
    if (cmd == "info") return cmdInfo(argc, argv);
    if (cmd == "csv") return cmdCsv(argc, argv);
    if (cmd == "plot") return cmdPlot(argc, argv);
    if (cmd == "synth") return cmdSynth(argc, argv);
    usageError("unknown command " + cmd, kUsage);
}
