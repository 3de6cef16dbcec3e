#pragma once

#include <filesystem>
#include <functional>
#include <span>

#include "platform/engine/value.h"

namespace kolmera {

/// Streams the rows of the first sheet of an .xls workbook, the names of the columns among them. Rows without a value
/// are passed over, trailing Nulls left out. Truth values come as the numbers 0 and 1.
///
/// The file is taken apart in a process of its own with little memory and time: what the library that does it makes of
/// a damaged file cannot harm this program. That it breaks down is a PlatformError like others.
void readXlsRows(const std::filesystem::path& file, const std::function<void(std::span<const Value> row)>& row);

}  // namespace kolmera
