#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "startup/startstate.h"

namespace kolmera {

/// The batch file of a preparation command; it deletes itself when the command has ended.
inline constexpr std::string_view kPreparationBatch = "EXPA@#01.BAT";

/// Writes the batch file of a preparation command and starts it; returns where it lies. It works in the program
/// folder's "Filer" (made when missing), or in the program folder itself when the command names "Filer" on its own.
/// When nothing can be written there, the data folder takes the program folder's place. Throws PlatformError.
std::filesystem::path startPreparation(const StartState& state, const std::string& command);

/// The letter when a path begins with the diskette drive A or B, unless the drive map gives it to a drive that stays.
std::optional<char> disketteDrive(std::string_view path, const DriveMap& drives);

}  // namespace kolmera
