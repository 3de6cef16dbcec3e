#pragma once

#include <filesystem>
#include <functional>
#include <span>

#include "platform/engine/value.h"

namespace kolmera {

/// Gives the rows of the first worksheet of an .xls workbook (from 1997 on), the names of the columns among them, in
/// their order in the sheet. Rows without a value are passed over, trailing Nulls left out, and cells beyond the first
/// `columns`. The cells of a whole sheet (at most 65536 rows) are in memory at once: some programs store them in
/// another order. A text that many cells share is there once.
void readXlsRows(const std::filesystem::path& file, std::size_t columns,
                 const std::function<void(std::span<const Value> row)>& row);

}  // namespace kolmera
