// A settings file may have been edited by hand or by another program. Input:
// "section\0key\0value\0file text" (without three NULs, all of it is the file
// and a fixed key is written). Reading must be safe, the text must come back
// byte for byte, and one write must change that one key and nothing else.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "settings/profile_file.h"

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

bool sameNoCase(std::string_view a, std::string_view b) {
    auto low = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (low(a[i]) != low(b[i])) return false;
    return true;
}

// Names the program could write: the format has no way to hold the others.
bool writableName(std::string_view name, std::string_view forbidden) {
    return !name.empty() && !isBlank(name.front()) && !isBlank(name.back()) &&
           name.find_first_of(forbidden) == std::string_view::npos;
}

std::string expectedReadBack(std::string_view value) {
    value = value.substr(0, value.find_first_of("\r\n"));
    while (!value.empty() && isBlank(value.front())) value.remove_prefix(1);
    while (!value.empty() && isBlank(value.back())) value.remove_suffix(1);
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    return std::string(value.substr(0, lv::ProfileFile::kMaxValueLength));
}

// Lines with their endings.
std::vector<std::string> piecesOf(std::string_view text) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool end =
            text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'));
        if (end) {
            pieces.emplace_back(text.substr(start, i + 1 - start));
            start = i + 1;
        }
    }
    if (start < text.size()) pieces.emplace_back(text.substr(start));
    return pieces;
}

void check(bool ok) {
    if (!ok) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    std::string_view section = "Colors", key = "Dial_Color", value = "255", text = input;
    const std::size_t a = input.find('\0');
    const std::size_t b = a == std::string_view::npos ? a : input.find('\0', a + 1);
    const std::size_t c = b == std::string_view::npos ? b : input.find('\0', b + 1);
    if (c != std::string_view::npos) {
        section = input.substr(0, a);
        key = input.substr(a + 1, b - a - 1);
        value = input.substr(b + 1, c - b - 1);
        text = input.substr(c + 1);
    }

    const lv::ProfileFile before(text);
    check(before.text() == text);
    const auto entries = before.entries();
    for (const auto& [s, k] : entries) {
        const auto v = before.value(s, k);
        check(v.has_value() && v->size() <= lv::ProfileFile::kMaxValueLength);
    }
    check(before.read(section, key, value).size() <= lv::ProfileFile::kMaxValueLength);

    if (!writableName(section, "]\r\n") || !writableName(key, "=\r\n") || key.front() == ';' ||
        key.front() == '[')
        return 0;
    const bool existed = before.value(section, key).has_value();
    lv::ProfileFile after = before;
    after.write(section, key, value);

    check(after.value(section, key) == expectedReadBack(value));
    const auto afterEntries = after.entries();
    check(afterEntries.size() == entries.size() + (existed ? 0 : 1));
    for (const auto& [s, k] : entries)
        if (!(sameNoCase(s, section) && sameNoCase(k, key)))
            check(after.value(s, k) == before.value(s, k));

    // Only the written line, and the lines added for it, differ; an
    // unterminated last line may have been given its line ending.
    const std::vector<std::string> old = piecesOf(before.text()), now = piecesOf(after.text());
    std::size_t prefix = 0;
    while (prefix < old.size() && prefix < now.size() && old[prefix] == now[prefix]) ++prefix;
    std::size_t suffix = 0;
    while (suffix < old.size() - prefix && suffix < now.size() - prefix &&
           old[old.size() - 1 - suffix] == now[now.size() - 1 - suffix])
        ++suffix;
    const std::size_t oldChanged = old.size() - prefix - suffix,
                      nowChanged = now.size() - prefix - suffix;
    if (existed) {
        check(oldChanged == nowChanged &&
              oldChanged <= 1);  // none when the value was already there
    } else {
        check(oldChanged <= 1 && nowChanged >= oldChanged + 1 && nowChanged <= oldChanged + 2);
        if (oldChanged == 1) {
            const std::string& was = old[prefix];
            check(prefix + 1 == old.size() && was.back() != '\n' && was.back() != '\r');
            check(now[prefix].compare(0, was.size(), was) == 0);
        }
    }
    return 0;
}
