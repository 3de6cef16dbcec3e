#include "platform/paths.h"

#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>

#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
char upper(char c) { return static_cast<char>(c & ~0x20); }

bool startsWithDrive(std::string_view path) { return path.size() >= 2 && isLetter(path[0]) && path[1] == ':'; }

DriveKind kindOf(std::string_view word) {
    constexpr struct {
        std::string_view word;
        DriveKind kind;
    } kWords[] = {{"", DriveKind::Fixed},
                  {"fixed", DriveKind::Fixed},
                  {"removable", DriveKind::Removable},
                  {"cd", DriveKind::Cd},
                  {"network", DriveKind::Network}};
    for (const auto& row : kWords) {
        if (equalNoCase(word, row.word)) return row.kind;
    }
    return DriveKind::Unknown;
}

/// The drive of the setting "X = folder|kind|share".
std::optional<Drive> driveOf(std::string_view key, std::string_view value) {
    if (key.ends_with(':')) key.remove_suffix(1);
    const std::vector<std::string> parts = split(value, "|");
    const auto part = [&parts](std::size_t i) { return i < parts.size() ? trimmed(parts[i]) : std::string_view(); };
    const fs::path folder(part(0));
    if (key.size() != 1 || !isLetter(key[0]) || !folder.is_absolute()) return std::nullopt;
    return Drive{upper(key[0]), folder, kindOf(part(1)), std::string(part(2))};
}

bool isThere(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored));
}

/// Adds the components of a path to a folder. Within a drive ".." does not lead out of its root; elsewhere the system
/// decides what ".." means, as it does for its own paths.
fs::path below(const fs::path& folder, std::string_view components, bool withinDrive) {
    std::vector<fs::path> way = {folder};
    for (const std::string& component : split(components, "/")) {
        if (component.empty() || component == ".") continue;
        if (component == ".." && withinDrive) {
            if (way.size() > 1) way.pop_back();
        } else {
            way.push_back(findWithoutCase(way.back(), component));
        }
    }
    return way.back();
}

}  // namespace

DriveMap::DriveMap(std::vector<Drive> drives) : drives_(std::move(drives)) {
    for (Drive& drive : drives_) drive.letter = upper(drive.letter);
    std::ranges::stable_sort(drives_, {}, &Drive::letter);
}

DriveMap DriveMap::fromSettings(const SettingsStore& settings) {
    std::vector<Drive> drives;
    for (const auto& [key, value] : settings.section("Enheter")) {
        if (auto drive = driveOf(key, value)) drives.push_back(std::move(*drive));
    }
    return DriveMap(std::move(drives));
}

std::vector<std::string> DriveMap::roots() const {
    std::vector<std::string> roots;
    for (const Drive& drive : drives_) roots.push_back(std::string(1, drive.letter) + ":\\");
    return roots;
}

DriveKind DriveMap::kind(std::string_view path) const {
    const std::optional<Drive> found = drive(path);
    return found ? found->kind : DriveKind::Unknown;
}

std::optional<Drive> DriveMap::drive(std::string_view path) const {
    if (!startsWithDrive(path)) return std::nullopt;
    const auto found = std::ranges::find(drives_, upper(path[0]), &Drive::letter);
    return found == drives_.end() ? std::nullopt : std::optional(*found);
}

fs::path DriveMap::resolve(std::string_view path, const fs::path& base) const {
    path = trimmed(path);
    if (path.starts_with("\\\\")) return fs::path("/") / path;
    const std::string slashed = replaceAll(path, "\\", "/");
    if (startsWithDrive(slashed)) {
        const std::optional<Drive> mapped = drive(slashed);
        const fs::path root = mapped ? mapped->folder : fs::path("/") / slashed.substr(0, 2);
        return below(root, std::string_view(slashed).substr(2), true);
    }
    return below(slashed.starts_with('/') || base.empty() ? "/" : base, slashed, false);
}

fs::path findWithoutCase(const fs::path& folder, const std::string& name) {
    fs::path exact = folder / name;
    if (isThere(exact)) return exact;
    fs::path best;
    const std::string wanted = composed(name);
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const fs::path found = entry->path().filename();
        // Of several the first by name: the order of a folder is no order.
        if (equalNoCase(composed(found.native()), wanted) && (best.empty() || found < best)) best = found;
    }
    return best.empty() ? exact : folder / best;
}

bool onNetworkFileSystem(const fs::path& path) {
    constexpr std::uint32_t kNetworkTypes[] = {
        0x6969,      // NFS
        0x517B,      // SMB
        0xFE534D42,  // SMB 2
        0xFF534D42,  // CIFS
        0x01021997,  // 9p
        0x65735546,  // FUSE: sshfs and virtiofs among them; local ones cannot be told apart
        0x5346414F,  // AFS
        0x73757245,  // Coda
        0x564C,      // NCP
        0x00C36400,  // Ceph
        0x0BD00BD0,  // Lustre
        0x47504653,  // GPFS
        0x01161970,  // GFS2
        0x7461636F,  // OCFS2
        0x786F4256,  // shared folders of virtual machines
    };
    struct statfs status {};
    if (statfs(path.c_str(), &status) != 0) {
        const bool missing = (errno == ENOENT || errno == ENOTDIR) && path.has_relative_path();
        return !missing || onNetworkFileSystem(path.parent_path());
    }
    return std::ranges::find(kNetworkTypes, static_cast<std::uint32_t>(status.f_type)) != std::end(kNetworkTypes);
}

}  // namespace kolmera
