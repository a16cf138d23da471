#pragma once
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/vb_date.h"
#include "settings/settings.h"

// How recordings are named in the save folder: a prefix and a number or a
// date-time, and the numbered series that a reset wipes.
namespace lv {

enum SuffixKind : std::int32_t { kSuffixNumber = 0, kSuffixDateTime = 1 };

// prefix + SuffixNum as "000" (more digits past 999).
std::string numberedName(const std::string& prefix, std::int16_t suffixNum);
// prefix + "yy-mm-dd__Hh.Nn.Ss".
std::string dateTimeName(const std::string& prefix, const LocalDateTime& when);
// The name a recording starting at `now` gets. Any SuffixType but the
// numeric one names by date and time.
std::string autoName(const Settings& settings, const LocalDateTime& now);

// A prefix names files in the save folder and nowhere else: no folder
// separator and no NUL in it.
bool prefixStaysInFolder(const std::string& prefix);

// The automatic name of a recording that starts (or is saved) at `now`,
// never one a .lvd or .wav in the save folder already has: the numbered
// series moves SuffixNum on to the next free number, and a date-time name
// that is taken gets "_2", "_3", ... True in `counted` when SuffixNum moved.
std::string freeAutoName(Settings& settings, const LocalDateTime& now, bool& counted);
// Whether a .lvd or .wav of the name is in the save folder (a dangling link counts).
bool nameTaken(const std::string& savePath, const std::string& name);
// The name itself when free, else the name with "_2", "_3", ...
std::string freeVariant(const std::string& savePath, const std::string& name);

// SavePath + name + ".lvd" / ".wav" (SavePath ends in the separator).
std::filesystem::path lvdPathFor(const std::string& savePath, const std::string& name);
std::filesystem::path wavPathFor(const std::string& savePath, const std::string& name);

// The recording panel's pattern: prefix + "nnn" or prefix + "Date__Time".
std::string namingPatternText(const Settings& settings);
// "Manual", "Auto Name", "Auto Save", "Capture" for modes 1..4; empty otherwise.
std::string recordingModeCaption(std::int32_t recordingMode);

struct PrefixProblem {
    std::string title;
    std::string text;
};
// Whether prefix + "000.lvd" can be created in the save folder: creates the
// file and deletes it again. A file of that name already there is a usable
// name as long as it is a writable file; it is left as it is.
std::optional<PrefixProblem> validatePrefix(const std::string& savePath, const std::string& prefix);

struct ResetOutcome {
    std::string refused;  // why nothing was done (no prefix), else empty
    std::vector<std::filesystem::path> deleted;
    std::vector<std::filesystem::path> notDeleted;  // matched, but the delete failed
};
// Starts the numbered series again: SuffixNum = 1, and every file of the save
// folder named SavePrefix + exactly three characters + ".lvd" or ".wav" is
// deleted. Names are compared with the folder's entries as plain text (no
// wildcards, letter case as it stands), so nothing outside the folder or in
// its subfolders is ever touched, whatever the prefix holds. No folder set
// deletes nothing. An empty or unusable prefix is refused, SuffixNum
// unchanged: its "series" would be every file with a three-character name.
// `dispose` takes each file away (the window sends it to the desktop's
// trash) and says whether it went; without one the file is removed.
using DisposeFile = std::function<bool(const std::filesystem::path&)>;
ResetOutcome resetNumbering(Settings& settings, const DisposeFile& dispose = {});

}  // namespace lv
