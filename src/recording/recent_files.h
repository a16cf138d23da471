#pragma once
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// The recordings opened or saved last, newest first, kept across runs in a
// small file of the program's own in the data folder: one full path a line.
// The settings file and the session configuration have a fixed content, so
// the list lives beside them rather than in them.
namespace lv {

inline constexpr std::string_view kRecentFilesName = "lv_Analog.recent";
inline constexpr std::size_t kRecentFilesKept = 10;

class RecentFiles {
public:
    explicit RecentFiles(std::filesystem::path file) : m_file(std::move(file)) {}

    // Reads the list; a missing or unreadable file is an empty list. Blank
    // lines and repeats are dropped, and no more than kRecentFilesKept kept.
    void load();
    // Puts the path first (once), drops the oldest beyond kRecentFilesKept and
    // writes the list at once, so that a crash later loses none of it. False
    // when the file could not be written; the list in memory holds it anyway.
    bool add(const std::string& path);

    const std::vector<std::string>& paths() const { return m_paths; }

private:
    std::filesystem::path m_file;
    std::vector<std::string> m_paths;
};

}  // namespace lv
