#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settings.h"

namespace kolmera {

enum class DriveKind { Unknown, Removable, Fixed, Network, Cd };

/// One drive letter of the user's drive map (settings, section "Enheter"): `X` = folder|kind|share name, kind one of
/// fixed (also when it is left out), removable, cd, network. The folder is an absolute path.
struct Drive {
    char letter;
    std::filesystem::path folder;
    DriveKind kind = DriveKind::Fixed;
    std::string share = {};  ///< \\server\share of a network drive
};

/// Drive letters and how the suite's Windows paths become paths of this system.
class DriveMap {
  public:
    DriveMap() = default;
    explicit DriveMap(std::vector<Drive> drives);
    static DriveMap fromSettings(const SettingsStore& settings);

    /// The logical drive roots in letter order: "C:\", "X:\".
    [[nodiscard]] std::vector<std::string> roots() const;
    [[nodiscard]] DriveKind kind(std::string_view drive) const;  ///< of "X:" or "X:\"
    [[nodiscard]] std::optional<Drive> drive(std::string_view path) const;

    /// Turns a Windows path or a plain path into a path of this system: "\" to "/", a drive letter through the map,
    /// each component found without regard to letter case when no exact one exists (components that do not exist
    /// are kept as written). A relative path is resolved against `base`, and against "/" when there is no base: the
    /// process's current folder never counts. "X:name" is in the root of the drive, as drives have no current folder.
    /// A path on an unknown drive (Q:\a gives /Q:/a) and a share path (\\server\share\a is kept as one name) name
    /// something that does not exist; `TillUNCEnhet` turns a share path into one on a drive first.
    [[nodiscard]] std::filesystem::path resolve(std::string_view path, const std::filesystem::path& base) const;

  private:
    std::vector<Drive> drives_;
};

/// The entry of `folder` whose name equals `name`, exactly or else without regard to letter case and to how its accents
/// are encoded (one character or two); `folder`/`name` when there is none. Of several that differ in letter case only,
/// the first in byte order.
std::filesystem::path findWithoutCase(const std::filesystem::path& folder, const std::string& name);

/// Whether the file or folder lies on a network file system (NFS, SMB, 9p, everything on FUSE ...). For one that does
/// not exist yet, its folder counts; true when the system does not tell.
bool onNetworkFileSystem(const std::filesystem::path& path);

}  // namespace kolmera
