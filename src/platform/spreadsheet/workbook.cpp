#include "platform/spreadsheet/workbook.h"

#include <fcntl.h>

#include "platform/error.h"
#include "platform/spreadsheet/filekind.h"
#include "platform/spreadsheet/sheetrows.h"

namespace kolmera {
namespace {

std::unique_ptr<SheetRows> openSheet(const std::filesystem::path& file, const SheetChoice& choice) {
    switch (kindOf(file)) {
        case FileKind::Xlsx:
            return openXlsx(Descriptor(file, O_RDONLY), choice);
        case FileKind::Xls:
            return openXls(Descriptor(file, O_RDONLY), choice);
        case FileKind::Encrypted:
            throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected by a password.");
        case FileKind::Other:
            break;
    }
    throw PlatformError(errors::kUnreadableSpreadsheet, "The file is not a workbook.");
}

}  // namespace

void readFirstSheet(const std::filesystem::path& file, std::size_t columns,
                    const std::function<void(std::span<const Value> row)>& row) {
    SheetChoice choice;
    choice.columns = columns;
    const std::unique_ptr<SheetRows> rows = openSheet(file, choice);
    SheetRow cells;
    for (bool isNames = true; rows->next(cells); isNames = false) {
        if (!isNames) row(cells.values);
    }
}

}  // namespace kolmera
