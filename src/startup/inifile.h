#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace kolmera {

/// The value of record `number` of DVKlient.ini or DORVIK.INI, trimmed; blank beyond the end. A missing file is created
/// empty. Throws PlatformError when it can be neither read nor made.
std::string iniValue(const std::filesystem::path& file, int number);

/// Writes key and value of a record. Throws PlatformError.
void writeIniValue(const std::filesystem::path& file, int number, const std::string& key, const std::string& value);

struct IniLine {
    std::string_view key, value;
};
/// The same for records that follow one another, at once.
void writeIniValues(const std::filesystem::path& file, int first, std::span<const IniLine> lines);

}  // namespace kolmera
