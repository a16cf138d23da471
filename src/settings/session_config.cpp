#include "settings/session_config.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

#include "common/vb_format.h"

namespace lv {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kCalibrationItems = 11;

bool isLineEnd(char c) {
    return c == '\r' || c == '\n';
}
bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

// The file's items in order, whatever lines they stand on. As the original's
// reader does, a blank line is an empty item, and so is the nothing between a
// comma and the end of its line.
std::vector<std::string> splitItems(std::string_view text) {
    std::vector<std::string> items;
    std::size_t pos = 0;
    const std::size_t n = text.size();
    while (pos < n) {
        while (pos < n && isBlank(text[pos])) ++pos;
        if (pos >= n) break;
        std::string item;
        if (text[pos] == '"') {
            // Up to the closing quote, commas and line breaks included; a
            // doubled quote stands for one (how our writer keeps a quote).
            ++pos;
            while (pos < n) {
                if (text[pos] == '"') {
                    if (pos + 1 < n && text[pos + 1] == '"') {
                        item += '"';
                        pos += 2;
                        continue;
                    }
                    ++pos;
                    break;
                }
                item += text[pos++];
            }
            while (pos < n && text[pos] != ',' && !isLineEnd(text[pos]))
                ++pos;  // stray text after the quote
        } else {
            const std::size_t start = pos;
            while (pos < n && text[pos] != ',' && !isLineEnd(text[pos])) ++pos;
            std::string_view bare = text.substr(start, pos - start);
            while (!bare.empty() && isBlank(bare.back())) bare.remove_suffix(1);
            item = std::string(bare);
        }
        items.push_back(std::move(item));
        if (pos >= n) break;
        if (text[pos] == ',')
            ++pos;
        else if (text[pos] == '\r' && pos + 1 < n && text[pos + 1] == '\n')
            pos += 2;
        else
            ++pos;
    }
    return items;
}

class ItemReader {
public:
    explicit ItemReader(std::vector<std::string> items) : m_items(std::move(items)) {}

    bool text(std::string& out) {
        if (m_next >= m_items.size()) return false;
        out = m_items[m_next++];
        return true;
    }
    // An empty item reads as 0, as it did for the original's reader.
    bool number(std::int32_t& out) { return convert(out, vbCLng); }
    bool number(std::int16_t& out) { return convert(out, vbCInt); }

private:
    template <typename Int, typename Convert>
    bool convert(Int& out, Convert convert) {
        if (m_next >= m_items.size()) return false;
        const std::string& item = m_items[m_next];
        if (item.find_first_not_of(" \t") == std::string::npos) {
            out = 0;
        } else {
            const std::optional<Int> value = convert(item);
            if (!value) return false;
            out = *value;
        }
        ++m_next;
        return true;
    }

    std::vector<std::string> m_items;
    std::size_t m_next = 0;
};

std::string quotedItem(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
    return out;
}

std::filesystem::path configPath(const std::filesystem::path& dataFolder) {
    return dataFolder / std::string(kSessionConfigFileName);
}

}  // namespace

std::string sessionConfigText(const SessionConfig& c) {
    std::string out = quotedItem(c.SettingsFilePath) + "," + std::to_string(c.AutoSaveMode) +
                      std::string(kLineEnd);
    auto line = [&out](const std::string& item) {
        out += item;
        out += kLineEnd;
    };
    for (const std::int16_t v : {c.PortNumber, c.PortCandidateCount, c.WindowLeft, c.WindowTop,
                                 c.WindowWidth, c.WindowHeight})
        line(std::to_string(v));
    line(quotedItem(c.HardwareSerial));
    line(std::to_string(c.ScaleType));
    for (std::size_t i = 0; i < kCalibrationItems; ++i) line(std::to_string(c.DialCalibration[i]));
    return out;
}

bool parseSessionConfig(std::string_view text, SessionConfig& c) {
    ItemReader in(splitItems(text));

    // Items 1 to 8: a failure here means the file is not ours or is damaged;
    // what was read before it stays.
    const bool firstPart = in.text(c.SettingsFilePath) && in.number(c.AutoSaveMode) &&
                           in.number(c.PortNumber) && in.number(c.PortCandidateCount) &&
                           in.number(c.WindowLeft) && in.number(c.WindowTop) &&
                           in.number(c.WindowWidth) && in.number(c.WindowHeight);
    if (!firstPart) return false;

    // Items 9 to 21 came later; a file that stops before them is still good.
    std::string serialNumber;
    if (in.text(serialNumber) && in.number(c.ScaleType))
        for (std::size_t i = 0; i < kCalibrationItems; ++i)
            if (!in.number(c.DialCalibration[i])) break;
    return true;
}

bool LoadSessionConfig(const std::filesystem::path& dataFolder, SessionConfig& config) {
    const std::filesystem::path file = configPath(dataFolder);
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec)) return false;
    std::ifstream in(file, std::ios::binary);
    if (!in) return false;
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) return false;
    return parseSessionConfig(text, config);
}

std::optional<SessionConfigError> SaveSessionConfig(const std::filesystem::path& dataFolder,
                                                    const SessionConfig& config) {
    const std::string text = sessionConfigText(config);
    const std::filesystem::path file = configPath(dataFolder);
    errno = 0;
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if (out) {
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        out.close();
        if (!out.fail()) return std::nullopt;
    }
    // The streams keep no reason of their own; errno still holds the system's.
    const std::string reason = errno != 0 ? std::strerror(errno) : "the file could not be written";
    return SessionConfigError{"Error Saving Session Config File", "Save Config File",
                              file.string() + "\n\n" + reason};
}

}  // namespace lv
