#pragma once
#include <string>
#include <string_view>
#include <vector>

// Cuts the bytes arriving from the program into lines. The program ends every
// command with CR; a terminal user types CR LF or LF, so an LF right after a
// CR is swallowed and a lone LF also ends a line. Bytes are otherwise kept
// as they are (the loader key is two bytes above 0x7F).
namespace lv::sim {

class LineSplitter {
public:
    // A line longer than this is handed on in pieces so that a program
    // sending junk without CRs cannot grow the buffer without end.
    static constexpr std::size_t kMaxLine = 1024;

    std::vector<std::string> feed(std::string_view bytes);

    // Forget a partial line (the program went away mid-line).
    void reset();

    const std::string& pending() const { return m_pending; }

private:
    std::string m_pending;
    bool m_afterCr = false;
};

}  // namespace lv::sim
