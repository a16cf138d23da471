#pragma once
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace lv::test {

// A fresh folder under the system's temporary folder, removed with everything
// in it when the test ends.
class TempDir {
public:
    explicit TempDir(const std::string& prefix) {
        std::string pattern =
            (std::filesystem::temp_directory_path() / (prefix + "_XXXXXX")).string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed for " + pattern);
        m_path = pattern;
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::string file(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

}  // namespace lv::test
