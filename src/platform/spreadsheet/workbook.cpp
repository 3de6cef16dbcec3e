#include "platform/spreadsheet/workbook.h"

#include "platform/error.h"

namespace kolmera {

void readFirstSheet(const std::filesystem::path& file, const std::function<void(std::span<const Value> row)>&) {
    throw PlatformError(errors::kUnreadableSpreadsheet, file.filename().string() + ": spreadsheets are not read yet");
}

void addSheet(const std::filesystem::path& file, const std::string&, std::span<const SheetColumn>,
              const std::function<std::optional<std::vector<Value>>()>&) {
    throw PlatformError(errors::kUnwritableFormat, file.filename().string() + ": spreadsheets are not written yet");
}

}  // namespace kolmera
