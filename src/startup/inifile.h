#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace kolmera {

/// The value of record `number` of DVKlient.ini or DORVIK.INI, trimmed; blank beyond the end. A missing file is created
/// empty. Throws PlatformError when it can be neither read nor made.
std::string iniValue(const std::filesystem::path& file, int number);

struct IniLine {
    std::string_view key, value;
};
/// Writes records that follow one another, at once. Throws PlatformError.
void writeIniValues(const std::filesystem::path& file, int first, std::span<const IniLine> lines);

}  // namespace kolmera
