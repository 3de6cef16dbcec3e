#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/spreadsheet/workbook.h"

namespace kolmera {

/// Writes the part of one sheet: plain cells, texts inside them, no formats, so that it fits every workbook. Numbers
/// have the fewest digits that read back as the same number.
class SheetPartWriter {
  public:
    /// Begins the part and writes the columns' names. `xmlNamespace` is that of the workbook.
    SheetPartWriter(const std::filesystem::path& file, std::span<const SheetColumn> columns,
                    std::string_view xmlNamespace);

    /// Throws kUnwritableFormat below the last row of a sheet, kTextTooLong for a text that no cell can hold. Values
    /// beyond the columns are left out.
    void row(std::span<const Value> values);
    void finish();

  private:
    void begin(std::string_view xmlNamespace);
    void beginRow();
    void endRow();
    void cell(const Value& value, FieldType type);
    void text(std::string_view text);
    void flush();

    Descriptor file_;
    std::size_t written_ = 0;
    std::span<const SheetColumn> columns_;
    std::string xml_;
    int rows_ = 0;
};

}  // namespace kolmera
