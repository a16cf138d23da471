#pragma once
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

// Where the program keeps its writable files (lv_Analog.ini, lv_Analog.cfg,
// recordings by default) and where it finds the read-only ones it ships with.
namespace lv {

// Everything the choice depends on, read by the caller so that tests choose it.
struct DataFolderInputs {
    std::string dataDirOption;     // --data-dir DIR, empty if not given
    std::filesystem::path exeDir;  // folder of the running executable
    std::string xdgConfigHome;     // $XDG_CONFIG_HOME, may be empty
    std::string home;              // $HOME
    std::string documentsFolder;   // the desktop's documents folder (XDG), may be empty
};

struct DataFolderResult {
    std::string folder;  // absolute, ends in '/'; empty on failure
    std::string error;   // empty on success; names the path otherwise
    // Where recordings go by default, ending in '/'; made when first used.
    // A data folder chosen by hand (--data-dir, or beside the program) keeps
    // them inside itself, in recordings/; otherwise they go to lv_Analog in
    // the documents folder, where a desktop user looks for them.
    std::string recordings;
};

// The recordings folder of a data folder that holds them itself.
std::string recordingsInside(const std::string& dataFolder);

// --data-dir if given; else the executable's folder when it already holds
// lv_Analog.ini or lv_Analog.cfg (a copy run from a stick); else
// $XDG_CONFIG_HOME/lv_Analog, or $HOME/.config/lv_Analog when that variable
// is empty or relative. The chosen folder is created if missing.
DataFolderResult chooseDataFolder(const DataFolderInputs& in);

// A read-only file shipped with the program: beside the executable first,
// then in the install prefix's share/lv_Analog. Nothing when neither has it.
std::optional<std::filesystem::path> findResource(std::string_view name,
                                                  const std::filesystem::path& exeDir);

}  // namespace lv
