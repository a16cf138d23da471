#include "settings/profile_file.h"

#include <fstream>
#include <iterator>
#include <system_error>

namespace lv {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

std::string_view trimRight(std::string_view text) {
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string_view trim(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    return trimRight(text);
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

std::string cut(std::string_view text) {
    return std::string(text.substr(0, ProfileFile::kMaxValueLength));
}

enum class LineKind { Blank, Comment, Section, Key, Other };

struct ParsedLine {
    LineKind kind = LineKind::Other;
    std::string_view name;   // section or key
    std::string_view value;  // key lines: the text after '=', blanks removed
};

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";

ParsedLine parseLine(std::string_view content, bool firstLine) {
    // An editor may have put a byte-order mark in front of the first section.
    if (firstLine && content.substr(0, kUtf8Bom.size()) == kUtf8Bom)
        content.remove_prefix(kUtf8Bom.size());
    const std::string_view t = trim(content);
    if (t.empty()) return {LineKind::Blank, {}, {}};
    if (t.front() == ';') return {LineKind::Comment, {}, {}};
    if (t.front() == '[') {
        const std::size_t close = t.find(']');
        if (close == std::string_view::npos) return {};
        return {LineKind::Section, trim(t.substr(1, close - 1)), {}};
    }
    const std::size_t eq = t.find('=');
    if (eq == std::string_view::npos) return {};
    const std::string_view name = trimRight(t.substr(0, eq));
    if (name.empty()) return {};
    return {LineKind::Key, name, trim(t.substr(eq + 1))};
}

enum class ReadResult { Read, Missing, Failed };

ReadResult readWholeFile(const std::filesystem::path& file, std::string& text) {
    std::error_code ec;
    const auto status = std::filesystem::status(file, ec);
    if (status.type() == std::filesystem::file_type::not_found) return ReadResult::Missing;
    // Only an ordinary file: opening a named pipe would wait for a writer.
    if (ec || !std::filesystem::is_regular_file(status)) return ReadResult::Failed;
    std::ifstream in(file, std::ios::binary);
    if (!in) return ReadResult::Failed;
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return in.bad() ? ReadResult::Failed : ReadResult::Read;
}

}  // namespace

ProfileFile::ProfileFile(std::string_view text) {
    std::size_t pos = 0;
    while (pos < text.size()) {
        const std::size_t brk = text.find_first_of("\r\n", pos);
        if (brk == std::string_view::npos) {
            m_lines.push_back({std::string(text.substr(pos)), ""});
            break;
        }
        const std::size_t endLen =
            text[brk] == '\r' && brk + 1 < text.size() && text[brk + 1] == '\n' ? 2 : 1;
        m_lines.push_back(
            {std::string(text.substr(pos, brk - pos)), std::string(text.substr(brk, endLen))});
        pos = brk + endLen;
    }
}

ProfileFile ProfileFile::load(const std::filesystem::path& file) {
    std::string text;
    if (readWholeFile(file, text) != ReadResult::Read) return {};
    return ProfileFile(text);
}

std::optional<ProfileFile> ProfileFile::loadForUpdate(const std::filesystem::path& file) {
    std::string text;
    if (readWholeFile(file, text) == ReadResult::Failed) return std::nullopt;
    return ProfileFile(text);
}

bool ProfileFile::save(const std::filesystem::path& file) const {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    const std::string all = text();
    out.write(all.data(), static_cast<std::streamsize>(all.size()));
    out.close();
    return !out.fail();
}

std::optional<ProfileFile::Found> ProfileFile::findKey(std::string_view section,
                                                       std::string_view key) const {
    // A section that appears twice is searched in both places, the first
    // occurrence first.
    bool inSection = false;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const ParsedLine p = parseLine(m_lines[i].content, i == 0);
        if (p.kind == LineKind::Section)
            inSection = equalsNoCase(p.name, section);
        else if (inSection && p.kind == LineKind::Key && equalsNoCase(p.name, key))
            return Found{i, std::string(p.name)};
    }
    return std::nullopt;
}

std::optional<std::string> ProfileFile::value(std::string_view section,
                                              std::string_view key) const {
    const std::optional<Found> found = findKey(section, key);
    if (!found) return std::nullopt;
    std::string_view v = parseLine(m_lines[found->line].content, found->line == 0).value;
    if (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') && v.back() == v.front())
        v = v.substr(1, v.size() - 2);
    return cut(v);
}

std::string ProfileFile::read(std::string_view section, std::string_view key,
                              std::string_view defaultValue) const {
    if (std::optional<std::string> v = value(section, key)) return *v;
    return cut(trimRight(defaultValue));
}

void ProfileFile::write(std::string_view section, std::string_view key, std::string_view value) {
    value = value.substr(0, value.find_first_of("\r\n"));

    if (const std::optional<Found> found = findKey(section, key)) {
        m_lines[found->line].content = found->key + "=" + std::string(value);
        return;
    }
    const std::string entry = std::string(key) + "=" + std::string(value);

    // After the last line of the section that says something: the blank
    // lines and comments before the next header belong to that header.
    std::optional<std::size_t> insertAfter;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const ParsedLine p = parseLine(m_lines[i].content, i == 0);
        if (p.kind == LineKind::Section) {
            if (insertAfter) break;
            if (equalsNoCase(p.name, section)) insertAfter = i;
        } else if (insertAfter && (p.kind == LineKind::Key || p.kind == LineKind::Other)) {
            insertAfter = i;
        }
    }
    if (insertAfter) {
        insertLine(*insertAfter + 1, entry);
        return;
    }
    insertLine(m_lines.size(), "[" + std::string(section) + "]");
    insertLine(m_lines.size(), entry);
}

void ProfileFile::insertLine(std::size_t at, std::string content) {
    // The ending of the line it follows: in a file of mixed endings, a lone
    // "\r" from elsewhere could otherwise join an empty "\n" line after it
    // into one "\r\n" and lose that line.
    std::string ending = at > 0 ? m_lines[at - 1].ending : std::string();
    if (ending.empty()) ending = newLineEnding();
    if (at > 0 && m_lines[at - 1].ending.empty()) m_lines[at - 1].ending = ending;
    m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(at),
                   Line{std::move(content), ending});
}

std::string ProfileFile::newLineEnding() const {
    // Follow the file; a new file gets the platform's own "\r\n", so the
    // file reads the same wherever it is copied to.
    for (const Line& line : m_lines)
        if (!line.ending.empty()) return line.ending;
    return "\r\n";
}

std::string ProfileFile::text() const {
    std::string all;
    for (const Line& line : m_lines) {
        all += line.content;
        all += line.ending;
    }
    return all;
}

std::vector<std::pair<std::string, std::string>> ProfileFile::entries() const {
    std::vector<std::pair<std::string, std::string>> keys;
    std::string section;
    bool inSection = false;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const ParsedLine p = parseLine(m_lines[i].content, i == 0);
        if (p.kind == LineKind::Section) {
            section = std::string(p.name);
            inSection = true;
        } else if (p.kind == LineKind::Key && inSection) {
            keys.emplace_back(section, std::string(p.name));
        }
    }
    return keys;
}

std::string ReadProfileValue(std::string_view section, std::string_view key,
                             std::string_view defaultValue, const std::filesystem::path& file) {
    return ProfileFile::load(file).read(section, key, defaultValue);
}

bool WriteProfileValue(std::string_view section, std::string_view key, std::string_view value,
                       const std::filesystem::path& file) {
    std::optional<ProfileFile> profile = ProfileFile::loadForUpdate(file);
    if (!profile) return false;
    profile->write(section, key, value);
    return profile->save(file);
}

}  // namespace lv
