#pragma once

#include <filesystem>
#include <functional>
#include <span>

#include "platform/engine/value.h"

namespace kolmera {

/// Streams the rows of the first worksheet of an .xlsx workbook, the names of the columns among them. Rows without a
/// value are passed over, trailing Nulls left out. Cells beyond the first `columns` are not kept.
void readXlsxRows(const std::filesystem::path& file, std::size_t columns,
                  const std::function<void(std::span<const Value> row)>& row);

}  // namespace kolmera
