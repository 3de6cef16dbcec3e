#pragma once

#include <string>

#include "platform/spreadsheet/archive.h"

namespace kolmera {

/// The part of a new workbook's only sheet, which the caller adds.
inline constexpr const char* kNewSheetPart = "xl/worksheets/sheet1.xml";

/// Adds the parts that surround the sheet of a new .xlsx workbook.
void addNewFrame(Archive& archive, const std::string& sheetName);

}  // namespace kolmera
