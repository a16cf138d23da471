#pragma once
#include <unistd.h>

#include <filesystem>
#include <string>

// A folder of this fuzzing process's own for the targets that go through real
// files, in memory where the system has a place for it.
namespace lv::fuzz {

inline std::filesystem::path scratchFolder(const char* name) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path base =
        fs::is_directory("/dev/shm", ec) ? fs::path("/dev/shm") : fs::temp_directory_path();
    const fs::path dir = base / (std::string(name) + "." + std::to_string(::getpid()));
    fs::create_directories(dir, ec);
    return dir;
}

}  // namespace lv::fuzz
