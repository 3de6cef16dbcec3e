#include "platform/spreadsheet/workbook.h"

#include "platform/error.h"
#include "platform/spreadsheet/filekind.h"
#include "platform/spreadsheet/xlsreader.h"
#include "platform/spreadsheet/xlsxreader.h"

namespace kolmera {

void readFirstSheet(const std::filesystem::path& file, std::size_t columns,
                    const std::function<void(std::span<const Value> row)>& row) {
    bool isNames = true;
    const auto dataRow = [&isNames, &row](std::span<const Value> cells) {
        if (!isNames) row(cells);
        isNames = false;
    };
    switch (kindOf(file)) {
        case FileKind::Xlsx:
            return readXlsxRows(file, columns, dataRow);
        case FileKind::Xls:
            return readXlsRows(file, columns, dataRow);
        case FileKind::Encrypted:
            throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected by a password.");
        case FileKind::Other:
            throw PlatformError(errors::kUnreadableSpreadsheet, "The file is not a workbook.");
    }
}

}  // namespace kolmera
