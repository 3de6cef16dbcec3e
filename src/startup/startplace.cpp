#include "startup/startplace.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "platform/paths.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSection = "Datamappar";
constexpr int kMostFolders = 8;

std::string keyOf(int place) { return fmt::format("Mapp{}", place); }

bool exists(const fs::path& folder, const char* name) {
    std::error_code unreadable;
    return fs::exists(findWithoutCase(folder, name), unreadable);
}

bool canBeEntered(const fs::path& folder) {
    std::error_code unreachable;
    return fs::is_directory(folder, unreachable) && ::access(folder.c_str(), X_OK) == 0;
}

}  // namespace

std::vector<fs::path> RecentFolders::all() const {
    std::vector<fs::path> folders;
    for (int place = 1; place <= kMostFolders; ++place) {
        const fs::path folder = settings_.get(kSection, keyOf(place));
        const bool known = std::ranges::find(folders, folder) != folders.end();
        if (folder.is_absolute() && !known && canBeEntered(folder)) folders.push_back(folder);
    }
    return folders;
}

void RecentFolders::opened(const fs::path& folder) {
    const fs::path named = folder.has_filename() ? folder : folder.parent_path();
    std::vector<fs::path> folders = all();
    if (!folders.empty() && folders.front() == named) return;
    std::erase(folders, named);
    folders.insert(folders.begin(), named);
    PassedOverSilently passedOver;
    attempt(passedOver, kSection, [&] {
        for (int place = 1; place <= kMostFolders; ++place) {
            const auto index = static_cast<std::size_t>(place) - 1;
            settings_.set(kSection, keyOf(place), index < folders.size() ? folders[index].string() : std::string());
        }
    });
}

StartArguments startArguments(const std::vector<std::string>& arguments) {
    StartArguments start;
    for (const std::string& argument : arguments) {
        const bool first = start.dataFolder.empty() && !start.demo;
        if (argument == "--help" || argument == "-h") {
            start.help = true;
        } else if (argument == "--version") {
            start.version = true;
        } else if (argument == "--demo" && first) {
            start.demo = true;
        } else if (!argument.empty() && !argument.starts_with('-') && first) {
            start.dataFolder = fs::absolute(argument).lexically_normal();
        } else {
            start.wrong = argument;
        }
    }
    return start;
}

StartPlace startPlace(const fs::path& programFolder, const RecentFolders& recent) {
    const bool ofProgram = exists(programFolder, "DVKlient.ini") || isDataFolder(programFolder);
    if (ofProgram) return {.kind = StartPlace::Kind::Program};
    const std::vector<fs::path> folders = recent.all();
    if (folders.empty()) return {.kind = StartPlace::Kind::Ask};
    return {.kind = StartPlace::Kind::Folder, .folder = folders.front()};
}

bool isDataFolder(const fs::path& folder) {
    constexpr std::array kFiles{"KOLMERA.TXT", "DORVIK.INI", "DORVIK.FTG"};
    if (std::ranges::any_of(kFiles, [&](const char* name) { return exists(folder, name); })) return true;
    std::error_code unreadable;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, unreadable)) {
        if (equalNoCase(entry.path().extension().string(), ".mdb")) return true;
    }
    return false;
}

fs::path userDemoFolder() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return fs::path(value == nullptr ? "" : value);
    };
    fs::path data = variable("XDG_DATA_HOME");
    if (!data.is_absolute()) data = variable("HOME") / ".local" / "share";
    return data / "Kolmera" / "Demo";
}

}  // namespace kolmera
