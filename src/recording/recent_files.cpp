#include "recording/recent_files.h"

#include <algorithm>
#include <fstream>
#include <system_error>

namespace lv {

namespace fs = std::filesystem;

void RecentFiles::load() {
    m_paths.clear();
    std::error_code ec;
    // A pipe or a device in its place would block the start.
    if (!fs::is_regular_file(m_file, ec)) return;
    std::ifstream in(m_file);
    std::string line;
    while (m_paths.size() < kRecentFilesKept && std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || std::find(m_paths.begin(), m_paths.end(), line) != m_paths.end())
            continue;
        m_paths.push_back(line);
    }
}

bool RecentFiles::add(const std::string& path) {
    // A name holding a line break could not be read back as one entry.
    if (path.empty() || path.find('\n') != std::string::npos) return false;
    std::erase(m_paths, path);
    m_paths.insert(m_paths.begin(), path);
    if (m_paths.size() > kRecentFilesKept) m_paths.resize(kRecentFilesKept);

    // Written aside and renamed, so a crash mid-write leaves the old list whole.
    const fs::path aside = m_file.string() + ".new";
    {
        std::ofstream out(aside, std::ios::trunc);
        for (const std::string& p : m_paths) out << p << '\n';
        out.flush();
        if (!out) return false;
    }
    std::error_code ec;
    fs::rename(aside, m_file, ec);
    if (!ec) return true;
    fs::remove(aside, ec);
    return false;
}

}  // namespace lv
