#pragma once
// lv3sim as a child process on a real pseudo-terminal, and the program's end
// of its link, without Qt.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace lv::test {

using Clock = std::chrono::steady_clock;

// lv3sim on the link "meter" in a temporary folder ("@name" arguments name
// files there), its "READY <link>" line awaited; killed and reaped at the end.
struct Sim {
    explicit Sim(std::vector<std::string> args, const std::string& script = {}) {
        std::string pattern = (std::filesystem::temp_directory_path() / "lv3sim_XXXXXX").string();
        dir = ::mkdtemp(pattern.data());
        link = path("meter");
        if (!script.empty()) std::ofstream(path("frames.txt")) << script;
        args.insert(args.begin(), {LV3SIM_PATH, "--link", link});
        std::vector<char*> argv;
        for (std::string& a : args) {
            if (a.starts_with("@")) a = path(a.substr(1));
            argv.push_back(a.data());
        }
        argv.push_back(nullptr);
        int out[2];
        if (::pipe2(out, O_CLOEXEC) != 0) return;
        if ((pid = ::fork()) == 0) {
            ::dup2(out[1], STDOUT_FILENO);
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        ::close(out[1]);
        output = out[0];  // open to the end: a meter writing to a closed pipe dies of SIGPIPE
        pollfd p{output, POLLIN, 0};
        for (char c; pid > 0 && ::poll(&p, 1, 5000) > 0 && ::read(output, &c, 1) == 1 && c != '\n';)
            firstLine += c;
    }
    ~Sim() {
        if (pid > 0 && !reaped) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        if (output >= 0) ::close(output);
        std::filesystem::remove_all(dir);
    }
    bool ready() const { return firstLine == "READY " + link; }
    std::string path(const std::string& name) const { return (dir / name).string(); }
    std::string text(const std::string& name) const {
        std::ifstream in(path(name));
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    // The lines the meter logged as received, without their times.
    std::vector<std::string> received() const {
        std::istringstream log(text("log.txt"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(log, line);)
            if (!line.starts_with("#")) lines.push_back(line.substr(line.find(' ') + 1));
        return lines;
    }
    // The exit code; nullopt if still running after 3 s or killed.
    std::optional<int> waitExit() {
        int status = 0;
        const auto end = Clock::now() + std::chrono::seconds(3);
        for (; pid > 0 && !reaped && Clock::now() < end;
             std::this_thread::sleep_for(std::chrono::milliseconds(5)))
            reaped = ::waitpid(pid, &status, WNOHANG) == pid;
        if (!reaped || !WIFEXITED(status)) return std::nullopt;
        return WEXITSTATUS(status);
    }

    std::filesystem::path dir;
    std::string link, firstLine;
    pid_t pid = -1;
    int output = -1;
    bool reaped = false;
};

// The program's end: the link opened as a serial port (raw, 9600 baud).
struct Port {
    explicit Port(const std::string& path)
        : fd(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
        termios t{};
        if (fd < 0 || ::tcgetattr(fd, &t) != 0) return;
        ::cfmakeraw(&t);
        ::cfsetspeed(&t, B9600);
        ::tcsetattr(fd, TCSANOW, &t);
    }
    ~Port() { ::close(fd); }
    Clock::time_point send(std::string_view bytes) {
        EXPECT_EQ(::write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        return Clock::now();
    }
    // Reads until the timeout, or until a CR has arrived if asked; the time
    // and size of each read are kept in `pieces`.
    std::string read(std::chrono::milliseconds timeout, bool untilCr = false) {
        std::string all;
        pieces.clear();
        for (auto now = Clock::now(), end = now + timeout; now < end; now = Clock::now()) {
            pollfd p{fd, POLLIN, 0};
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now);
            if (::poll(&p, 1, static_cast<int>(left.count())) <= 0) continue;
            char buf[4096];
            const ssize_t n = ::read(fd, buf, sizeof buf);
            if (n <= 0) break;  // the meter went away
            all.append(buf, static_cast<std::size_t>(n));
            pieces.emplace_back(Clock::now(), n);
            if (untilCr && all.find('\r') != std::string::npos) break;
        }
        return all;
    }

    int fd;
    std::vector<std::pair<Clock::time_point, ssize_t>> pieces;
};

}  // namespace lv::test
