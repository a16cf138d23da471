#pragma once
#include <string>

// The meter's end of a pseudo-terminal. The program opens the other end (the
// slave) as its serial port. Whether a program holds the slave open is read
// from the master's hang-up state, which Linux reports only after the slave
// has been opened once; open() therefore opens and closes it once itself.
namespace lv::sim {

class PtyPort {
public:
    PtyPort() = default;
    ~PtyPort();
    PtyPort(const PtyPort&) = delete;
    PtyPort& operator=(const PtyPort&) = delete;

    // False with a reason on failure.
    bool open(std::string& error);

    int fd() const { return m_master; }
    const std::string& slavePath() const { return m_slavePath; }

    struct State {
        bool slaveOpen = false;  // some program holds the slave
        bool readable = false;   // bytes wait, possibly left by a program now gone
    };
    State state() const;

    // After a program let go: raw mode and 9600 baud again (it may have
    // changed them, and echo on would feed our own frames back to us), and
    // drop what it left unread so that the next program starts clean.
    void resetSlave();

private:
    bool applyLineSettings();

    int m_master = -1;
    std::string m_slavePath;
};

}  // namespace lv::sim
