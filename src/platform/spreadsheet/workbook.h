#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/engine/value.h"

namespace kolmera {

/// Streams the data rows of a workbook's first sheet to `row`, of each its first `columns` cells; the first row that is
/// not empty holds the column names and is not given. Reads .xlsx and .xls; the content decides which of them it is,
/// not the file's name.
///
/// A cell is Null, a double, a bool, a Date (by its number format, without its time of day; a time of day alone stays a
/// number) or a text that is not empty. A formula has the value that was saved with it, an error value ("#N/A") is
/// Null. A row ends with its last such cell that is not Null, and a row without one is passed over, so `row` never gets
/// an empty span. Memory does not grow with the cells that are left out, nor with how often a text is used.
///
/// Throws PlatformError: kFileNotFound, kUnreadableSpreadsheet, kProtectedSpreadsheet (it needs a password), or what
/// `row` throws. Rows that were read before a damaged place have been given by then.
void readFirstSheet(const std::filesystem::path& file, std::size_t columns,
                    const std::function<void(std::span<const Value> row)>& row);

/// A column of a sheet to write: its name stands in the first row.
struct SheetColumn {
    std::string name;
    FieldType type;
    int size;  ///< characters of a Text column
};

/// Adds a sheet to an .xlsx workbook, or makes the workbook when there is no such file. The sheet is named `prefix` and
/// the number of sheets that the workbook had (1 for a new one), or the next number that makes the name unique. Rows
/// come from `next` until it gives nothing. Null, an empty text and a number that is not finite give an empty cell, a
/// Date the text "YYYY-MM-DD"; numbers read back as the same numbers. Every other part of the workbook stays byte for
/// byte, and so do the file's rights; a link is followed. All or nothing: the file is replaced whole when everything
/// is on the disk.
///
/// Throws PlatformError: kUnwritableFormat (not .xlsx by name or content; an existing .xlsm is written; more than
/// 1048575 rows), kUnreadableSpreadsheet (not a workbook), kProtectedSpreadsheet (password, signature, protected from
/// changes), kReadOnly, kDiskFull, kTextTooLong (more than 32767 characters), or what `next` throws.
void addSheet(const std::filesystem::path& file, const std::string& prefix, std::span<const SheetColumn> columns,
              const std::function<std::optional<std::vector<Value>>()>& next);

}  // namespace kolmera
