#pragma once
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Sections in square brackets, one "key=value" line per key: the old Windows
// private-profile file, with the lookup rules the program grew up with. The
// file is kept as the lines it was read from, so a write touches one line and
// leaves comments, blank lines, other programs' keys and text it does not
// understand exactly as they were, byte for byte.
namespace lv {

class ProfileFile {
public:
    // A value read back is cut to this many characters (a 255-character
    // buffer with its terminating zero).
    static constexpr std::size_t kMaxValueLength = 254;

    ProfileFile() = default;
    explicit ProfileFile(std::string_view text);

    // A file that is missing or cannot be read gives an empty profile.
    static ProfileFile load(const std::filesystem::path& file);
    // For a read-modify-write: a missing file gives an empty profile, but a
    // file that is there and cannot be read gives nullopt, so that it is not
    // replaced by one holding only the keys written.
    static std::optional<ProfileFile> loadForUpdate(const std::filesystem::path& file);
    // Replaces the file with text(); false when it could not be written.
    bool save(const std::filesystem::path& file) const;

    // The value as a read returns it: blanks around it removed, a value
    // wholly enclosed in matching single or double quotes loses them, then
    // cut to kMaxValueLength. Section and key match in any letter case;
    // nullopt when the key is not there. "key=" is there, with "".
    std::optional<std::string> value(std::string_view section, std::string_view key) const;
    // value(), or the default (its trailing blanks removed, cut alike).
    std::string read(std::string_view section, std::string_view key,
                     std::string_view defaultValue) const;

    // An existing key is rewritten in its own line; a new key goes after the
    // last entry of its section; a new section goes at the end. A line break
    // in the value ends it there: the file has no way to hold one.
    void write(std::string_view section, std::string_view key, std::string_view value);

    // The whole file as it would be saved.
    std::string text() const;
    // Every key line, in file order, as (section, key) spelled as in the file.
    std::vector<std::pair<std::string, std::string>> entries() const;

private:
    struct Line {
        std::string content;
        std::string ending;  // "\r\n", "\n", "\r", or "" for an unterminated last line
    };
    struct Found {
        std::size_t line;
        std::string key;  // the key as spelled in the file
    };

    std::optional<Found> findKey(std::string_view section, std::string_view key) const;
    std::string newLineEnding() const;
    void insertLine(std::size_t at, std::string content);

    std::vector<Line> m_lines;
};

// The program's two ways into a profile file. The read opens the file for
// each call, as the platform did; the write creates the file when it is
// missing, and its failure is not reported to the operator (the bool is for
// tests).
std::string ReadProfileValue(std::string_view section, std::string_view key,
                             std::string_view defaultValue, const std::filesystem::path& file);
bool WriteProfileValue(std::string_view section, std::string_view key, std::string_view value,
                       const std::filesystem::path& file);

}  // namespace lv
