#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace kolmera::test {

/// The entries of a zip file by name.
using Parts = std::map<std::string, std::string>;

/// A workbook with one sheet, whose <sheetData> has these rows. It has a few shared texts and formats of cells:
/// texts 0 "noll", 1 a rich "ett två", 2 empty; formats 0 General, 1 built-in date, 2 own date, 3 time, 4 no date.
Parts workbookOf(std::string_view rows);

void writeZip(const std::filesystem::path& file, const Parts& parts);
Parts readZip(const std::filesystem::path& file);

/// The rows that are read from the first sheet, a line each: texts as they are, "-" for Null, dates as "2024-02-29".
std::string rowsOf(const std::filesystem::path& file);

/// A workbook saved by another program.
std::filesystem::path savedWorkbook(std::string_view name);
std::string savedBytes(std::string_view name);

/// What an .xlsx workbook with a password looks like from outside: a compound file with a stream "EncryptedPackage".
std::string protectedXlsx();

}  // namespace kolmera::test
