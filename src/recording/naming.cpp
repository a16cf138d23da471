#include "recording/naming.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <string_view>
#include <system_error>

#include "common/vb_format.h"

namespace lv {

namespace {

// UTF-8 characters in the text: every byte that does not continue a sequence.
std::size_t characterCount(std::string_view text) {
    std::size_t n = 0;
    for (const char c : text)
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++n;
    return n;
}

// prefix + three characters + one of the two extensions, compared as text.
bool inNumberedSeries(std::string_view name, std::string_view prefix) {
    constexpr std::size_t kExtension = 4;
    if (name.size() < prefix.size() + kExtension || name.substr(0, prefix.size()) != prefix)
        return false;
    const std::string_view ext = name.substr(name.size() - kExtension);
    if (ext != ".lvd" && ext != ".wav") return false;
    const std::string_view middle =
        name.substr(prefix.size(), name.size() - prefix.size() - kExtension);
    return characterCount(middle) == 3;
}

}  // namespace

std::string numberedName(const std::string& prefix, std::int16_t suffixNum) {
    return prefix + formatNumber(suffixNum, "000");
}

std::string dateTimeName(const std::string& prefix, const LocalDateTime& when) {
    return prefix + formatNameStamp(when);
}

std::string autoName(const Settings& settings, const LocalDateTime& now) {
    if (settings.SuffixType == kSuffixNumber)
        return numberedName(settings.SavePrefix, settings.SuffixNum);
    return dateTimeName(settings.SavePrefix, now);
}

bool prefixStaysInFolder(const std::string& prefix) {
    return prefix.find('/') == std::string::npos && prefix.find('\0') == std::string::npos;
}

bool nameTaken(const std::string& savePath, const std::string& name) {
    std::error_code ec;
    return std::filesystem::exists(std::filesystem::symlink_status(lvdPathFor(savePath, name), ec)) ||
           std::filesystem::exists(std::filesystem::symlink_status(wavPathFor(savePath, name), ec));
}

std::string freeVariant(const std::string& savePath, const std::string& name) {
    std::string free = name;
    for (int n = 2; nameTaken(savePath, free); ++n) free = name + "_" + std::to_string(n);
    return free;
}

std::string freeAutoName(Settings& settings, const LocalDateTime& now, bool& counted) {
    counted = false;
    std::string name = autoName(settings, now);
    if (settings.SuffixType == kSuffixNumber) {
        while (nameTaken(settings.SavePath, name) &&
               settings.SuffixNum < std::numeric_limits<std::int16_t>::max()) {
            ++settings.SuffixNum;
            counted = true;
            name = autoName(settings, now);
        }
    }
    // A date-time taken already, or a series that has run out of numbers.
    return freeVariant(settings.SavePath, name);
}

std::filesystem::path lvdPathFor(const std::string& savePath, const std::string& name) {
    return std::filesystem::path(savePath + name + ".lvd");
}

std::filesystem::path wavPathFor(const std::string& savePath, const std::string& name) {
    return std::filesystem::path(savePath + name + ".wav");
}

std::string namingPatternText(const Settings& settings) {
    return settings.SavePrefix + (settings.SuffixType == kSuffixNumber ? "nnn" : "Date__Time");
}

std::string recordingModeCaption(std::int32_t recordingMode) {
    switch (recordingMode) {
        case 1:
            return "Manual";
        case 2:
            return "Auto Name";
        case 3:
            return "Auto Save";
        case 4:
            return "Capture";
        default:
            return {};
    }
}

std::optional<PrefixProblem> validatePrefix(const std::string& savePath,
                                            const std::string& prefix) {
    const PrefixProblem problem{"Validate Filename", "Error: Invalid Prefix name "};
    const std::filesystem::path probe = lvdPathFor(savePath, prefix + "000");
    // O_EXCL: a file of that name that is already there is never truncated or deleted.
    const int fd = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0) {
        ::close(fd);
        if (::unlink(probe.c_str()) != 0) return problem;
        return std::nullopt;
    }
    if (errno != EEXIST) return problem;
    struct stat st {};
    if (::stat(probe.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return problem;
    if (::access(probe.c_str(), W_OK) != 0) return problem;
    return std::nullopt;
}

ResetOutcome resetNumbering(Settings& settings, const DisposeFile& dispose) {
    ResetOutcome outcome;
    if (!prefixStaysInFolder(settings.SavePrefix)) {
        outcome.refused = "Error: Invalid Prefix name " + settings.SavePrefix;
        return outcome;
    }
    if (settings.SavePrefix.empty()) {
        outcome.refused =
            "Reset needs a prefix: without one it would delete every recording in the save "
            "folder whose name has three characters.\n\nEnter a prefix, press OK, then open "
            "the Recording Settings again to reset.";
        return outcome;
    }
    settings.SuffixNum = 1;
    if (settings.SavePath.empty()) return outcome;

    namespace fs = std::filesystem;
    std::error_code ec;
    // Gather first: deleting while the folder is being listed can skip entries.
    std::vector<fs::path> matches;
    for (fs::directory_iterator it(fs::path(settings.SavePath), ec), end; !ec && it != end;
         it.increment(ec)) {
        const fs::path name = it->path().filename();
        if (!inNumberedSeries(name.native(), settings.SavePrefix)) continue;
        // A symbolic link goes, not what it points to; a folder never does.
        const fs::file_status status = it->symlink_status(ec);
        if (ec || fs::is_directory(status)) {
            ec.clear();
            continue;
        }
        matches.push_back(it->path());
    }
    for (const fs::path& path : matches) {
        if (dispose ? dispose(path) : fs::remove(path, ec) && !ec)
            outcome.deleted.push_back(path);
        else
            outcome.notDeleted.push_back(path);
        ec.clear();
    }
    return outcome;
}

}  // namespace lv
