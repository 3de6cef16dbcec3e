#pragma once

#include <string>
#include <string_view>

#include "platform/paths.h"

namespace kolmera {

/// Makes a folder end in a separator. When the trimmed path ends in neither "/" nor "\", its trailing blanks go and "\"
/// is added ("/" to a path that begins with "/"); otherwise it stays as it is.
void LäggTillSnedstreck(std::string& path);

/// The share path of a network drive's root ("X:\" gives "\\server\share\"), or the root unchanged for any other drive.
std::string NätverksNamn(std::string_view driveRoot, const DriveMap& drives);

/// A share path as the same folder below the first network drive that shows it, or empty. The share is found without
/// regard to letter case but replaced in its exact case.
std::string TillUNCEnhet(std::string_view path, const DriveMap& drives);

/// Whether a folder can be entered. A share path (\\server\...) cannot: it has to go through a drive letter.
bool folderReachable(std::string_view path, const DriveMap& drives);

}  // namespace kolmera
