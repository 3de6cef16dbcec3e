#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/settings.h"

namespace kolmera {

/// The data folders that the user has opened, the last one first; kept in the user's own settings of this program.
class RecentFolders {
  public:
    explicit RecentFolders(SettingsStore& settings) : settings_(settings) {}

    /// Those that can still be entered.
    [[nodiscard]] std::vector<std::filesystem::path> all() const;
    /// Puts a folder first. What cannot be written is forgotten: the folder is open all the same.
    void opened(const std::filesystem::path& folder);

  private:
    SettingsStore& settings_;
};

/// What the command line of the desktop program asks for.
struct StartArguments {
    std::filesystem::path dataFolder;  ///< absolute; empty where none is named
    bool demo = false, help = false, version = false;
    std::string wrong;  ///< the argument that is none of ours; empty when all are understood
};

/// `kolmera [DATA FOLDER | --demo | --help | --version]`; what the window system understands has been taken out.
StartArguments startArguments(const std::vector<std::string>& arguments);

/// Where a session begins that the command line says nothing about.
struct StartPlace {
    enum class Kind {
        Program,  ///< as DVKlient.ini says, or without it in the program's own folder
        Folder,   ///< the data folder that was open last
        Ask       ///< nothing is known: the user is asked
    };
    Kind kind = Kind::Ask;
    std::filesystem::path folder = {};
};

/// DVKlient.ini comes before all else; without it, data beside the program; then what was open last.
StartPlace startPlace(const std::filesystem::path& programFolder, const RecentFolders& recent);

/// Whether a folder looks like a data folder: it has a job list, the suite's settings or a company.
bool isDataFolder(const std::filesystem::path& folder);

/// Where the demo of this user is kept: below $XDG_DATA_HOME, else $HOME/.local/share.
std::filesystem::path userDemoFolder();

}  // namespace kolmera
