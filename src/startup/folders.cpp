#include "startup/folders.h"

#include <unistd.h>

#include <system_error>

#include "platform/lettercase.h"

namespace kolmera {

void LäggTillSnedstreck(std::string& path) {
    const std::string_view inner = trimmed(path);
    if (inner.ends_with('/') || inner.ends_with('\\')) return;
    const char separator = inner.starts_with('/') ? '/' : '\\';
    path = std::string(trimmedRight(path)) + separator;
}

std::string NätverksNamn(std::string_view driveRoot, const DriveMap& drives) {
    const std::optional<Drive> drive = drives.drive(driveRoot);
    if (!drive || drive->kind != DriveKind::Network || drive->share.empty()) return std::string(driveRoot);
    return drive->share + std::string(driveRoot.substr(2));
}

std::string TillUNCEnhet(std::string_view path, const DriveMap& drives) {
    for (const std::string& root : drives.roots()) {
        if (drives.kind(root) != DriveKind::Network) continue;
        const std::string share = NätverksNamn(root, drives);
        if (startsWithNoCase(path, share)) return replaceAll(path, share, root);
    }
    return {};
}

bool folderReachable(std::string_view path, const DriveMap& drives) {
    if (trimmed(path).empty()) return false;
    const std::filesystem::path folder = drives.resolve(path, {});
    std::error_code error;
    return std::filesystem::is_directory(folder, error) && ::access(folder.c_str(), X_OK) == 0;
}

}  // namespace kolmera
