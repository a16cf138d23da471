// lv3sim: a virtual lv3 meter on a pseudo-terminal, for trying and testing
// the program without the instrument.
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "lv3sim/frame_script.h"
#include "lv3sim/options.h"
#include "lv3sim/pty_port.h"
#include "lv3sim/published_link.h"
#include "lv3sim/reading_generator.h"
#include "lv3sim/serve_loop.h"
#include "lv3sim/session.h"

namespace {

constexpr int kExitRuntime = 1;
constexpr int kExitUsage = 2;

int usageError(const std::string& message) {
    std::fprintf(stderr, "lv3sim: %s\nTry 'lv3sim --help' for the options.\n", message.c_str());
    return kExitUsage;
}

int runtimeError(const std::string& message) {
    std::fprintf(stderr, "lv3sim: %s\n", message.c_str());
    return kExitRuntime;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace lv::sim;

    const std::vector<std::string_view> args(argv + 1, argv + argc);
    const ParsedOptions parsed = parseOptions(args);
    if (parsed.options.help) {
        std::fputs(helpText().c_str(), stdout);
        return 0;
    }
    if (parsed.options.version) {
        std::printf("lv3sim %s\n", LV_VERSION);
        return 0;
    }
    if (!parsed.error.empty()) return usageError(parsed.error);
    const Options& options = parsed.options;

    std::unique_ptr<FrameSource> source;
    if (!options.scriptPath.empty()) {
        std::ifstream in(options.scriptPath);
        if (!in) return usageError("cannot read the script " + options.scriptPath);
        std::vector<std::string> frames = readScript(in);
        if (frames.empty())
            return usageError("the script " + options.scriptPath + " has no frames");
        source = std::make_unique<FrameScript>(std::move(frames), options.repeat);
    } else {
        source = std::make_unique<ReadingGenerator>(options.seed);
    }

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> logFile(nullptr, &std::fclose);
    if (!options.logPath.empty()) {
        logFile.reset(std::fopen(options.logPath.c_str(), "w"));
        if (!logFile) return usageError("cannot write the log " + options.logPath);
    }

    std::string error;
    PtyPort port;
    if (!port.open(error)) return runtimeError(error);

    Session session(options, std::move(source), RxLog(logFile.get()));
    ServeLoop loop(session, port);
    if (!loop.init(error)) return runtimeError(error);

    PublishedLink link;
    if (!link.publish(options.link, port.slavePath(), error)) return runtimeError(error);
    std::printf("READY %s\n", options.link.c_str());
    std::fflush(stdout);

    loop.run();
    link.remove();
    return 0;
}
