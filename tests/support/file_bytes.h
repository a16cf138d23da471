#pragma once
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace lv::test {

// A whole file as bytes, to check that it holds exactly what it should.
inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace lv::test
