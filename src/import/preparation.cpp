#include "import/preparation.h"

#include <fstream>

#include "platform/batchprocess.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace fs = std::filesystem;
namespace {

bool namesFilerItself(std::string_view command) {
    return replaceAll(upperCase(command), "/", "\\").find("\\FILER") != std::string::npos;
}

bool canHoldBatch(const fs::path& folder) {
    std::error_code failed;
    fs::create_directories(folder, failed);
    return std::ofstream(folder / kPreparationBatch, std::ios::app).is_open();
}

fs::path workingFolder(const StartState& state, std::string_view command) {
    const bool inBase = namesFilerItself(command);
    const auto below = [inBase](const fs::path& base) { return inBase ? base : findWithoutCase(base, "Filer"); };
    const fs::path folder = below(state.programFolder());
    return canHoldBatch(folder) ? folder : below(state.dataFolder());
}

}  // namespace

fs::path startPreparation(const StartState& state, const std::string& command) {
    const fs::path folder = workingFolder(state, command);
    std::error_code failed;
    fs::create_directories(folder, failed);
    startBatch(folder, std::string(kPreparationBatch), command, state.drives);
    return folder / kPreparationBatch;
}

std::optional<char> disketteDrive(std::string_view path, const DriveMap& drives) {
    if (path.size() < 2 || path[1] != ':') return std::nullopt;
    const char letter = upperCase(path.substr(0, 1))[0];
    if (letter != 'A' && letter != 'B') return std::nullopt;
    const DriveKind kind = drives.kind(path.substr(0, 2));
    if (kind != DriveKind::Unknown && kind != DriveKind::Removable) return std::nullopt;
    return letter;
}

}  // namespace kolmera
