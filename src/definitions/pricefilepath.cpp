#include "definitions/pricefilepath.h"

#include "platform/lettercase.h"

namespace kolmera {
namespace fs = std::filesystem;

fs::path findPriceFile(std::string_view path, const DriveMap& drives, const fs::path& dataFolder,
                       const fs::path& programFolder) {
    path = trimmed(path);
    if (path.empty()) return {};
    fs::path first = drives.resolve(path, dataFolder);
    for (const fs::path& base : {dataFolder, programFolder, findWithoutCase(programFolder, "Filer")}) {
        fs::path candidate = drives.resolve(path, base);
        std::error_code ignored;
        if (fs::exists(candidate, ignored)) return candidate;
    }
    return first;
}

}  // namespace kolmera
