#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/descriptor.h"
#include "platform/engine/value.h"

namespace kolmera {

/// A row of a sheet.
struct SheetRow {
    std::uint64_t number = 0;       ///< from 1, as the sheet shows it
    std::vector<Value> values;      ///< see `readFirstSheet`; not empty, and the last one is not Null
    std::uint64_t errorValues = 0;  ///< cells with "#N/A" and its like, which are Null
};

/// Gives the rows of a sheet in their order; one without a value is passed over. Throws PlatformError.
class SheetRows {
  public:
    virtual ~SheetRows() = default;
    virtual bool next(SheetRow& row) = 0;
    [[nodiscard]] virtual double progress() const = 0;  ///< from 0 to 1
};

/// What is read of a workbook.
struct SheetChoice {
    std::string name;                 ///< without regard to letter case; empty for the first worksheet
    std::size_t columns = 16384;      ///< the cells behind them are not kept
    std::size_t rowBytes = SIZE_MAX;  ///< of the texts of a row; a longer one is a kRowTooLong
    bool leadingZeros = false;        ///< a whole number whose format is zeros alone is the text that the sheet shows
};

std::unique_ptr<SheetRows> openXlsx(Descriptor file, const SheetChoice& choice);
/// The cells of a whole sheet (at most 65536 rows) are in memory at once: some programs store them in another order. A
/// text that many cells share is there once.
std::unique_ptr<SheetRows> openXls(Descriptor file, const SheetChoice& choice);
std::unique_ptr<SheetRows> openOds(Descriptor file, const SheetChoice& choice);

struct SheetName {
    std::string name;
    bool isHidden;
};
/// The worksheets of a workbook.
std::vector<SheetName> xlsxSheets(const Descriptor& file);
std::vector<SheetName> xlsSheets(Descriptor file);
std::vector<SheetName> odsSheets(const Descriptor& file);

}  // namespace kolmera
