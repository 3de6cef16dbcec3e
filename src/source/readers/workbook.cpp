#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <variant>

#include "platform/bytestream.h"
#include "platform/date.h"
#include "platform/error.h"
#include "platform/spreadsheet/sheetrows.h"
#include "source/readers/readers.h"

namespace kolmera {
namespace {

/// As many digits as sheets show: 0.1 + 0.2 is 0.3 there.
void appendNumber(double number, std::string& text) {
    constexpr int kDigits = 15;
    std::array<char, 32> rounded{};
    const auto end =
        std::to_chars(rounded.data(), rounded.data() + rounded.size(), number, std::chars_format::general, kDigits).ptr;
    double shown = 0;
    std::from_chars(rounded.data(), end, shown);
    std::array<char, 400> plain{};
    const auto plainEnd = std::to_chars(plain.data(), plain.data() + plain.size(), shown, std::chars_format::fixed).ptr;
    text.append(shown == 0 ? "0" : std::string_view(plain.data(), plainEnd));
}

Cell::Kind appendValue(const Value& value, std::string& text) {
    if (const auto* number = std::get_if<double>(&value)) {
        appendNumber(*number, text);
        return Cell::Kind::Number;
    }
    if (const auto* date = std::get_if<Date>(&value)) {
        text += date->iso();
        return Cell::Kind::Date;
    }
    if (const auto* truth = std::get_if<bool>(&value)) {
        text += *truth ? '1' : '0';
        return Cell::Kind::Truth;
    }
    text += textOf(value);
    return Cell::Kind::Text;
}

class WorkbookReader final : public RowReader {
  public:
    WorkbookReader(std::unique_ptr<SheetRows> rows, const SourceLimits& limits)
        : rows_(std::move(rows)), limits_(limits) {}

    bool next(Row& row) override {
        stopIfCancelled(limits_.cancelled);
        if (!rows_->next(sheetRow_)) return false;
        if (sheetRow_.values.size() > limits_.columns) {
            throw PlatformError(errors::kTooManyColumns, "a row of a sheet").about(std::to_string(sheetRow_.number));
        }
        row.number = sheetRow_.number;
        row.cells.clear();
        text_.clear();
        ends_.clear();
        for (const Value& value : sheetRow_.values) {
            row.cells.push_back({{}, appendValue(value, text_)});
            ends_.push_back(text_.size());
        }
        std::size_t begin = 0;
        for (std::size_t i = 0; i < ends_.size(); ++i) {
            row.cells[i].text = std::string_view(text_).substr(begin, ends_[i] - begin);
            begin = ends_[i];
        }
        note();
        return true;
    }

    [[nodiscard]] double progress() const override { return rows_->progress(); }
    [[nodiscard]] SourceRemarks remarks() const override { return remarks_; }

  private:
    void note() {
        for (std::uint64_t i = 0; i < sheetRow_.errorValues; ++i) remarks_.errorValues.note(sheetRow_.number);
        for (const Value& value : sheetRow_.values) {
            if (textOf(value).find('\n') != std::string_view::npos) remarks_.lineBreaks.note(sheetRow_.number);
        }
    }

    std::unique_ptr<SheetRows> rows_;
    SourceLimits limits_;
    SheetRow sheetRow_;
    std::string text_;               ///< of all cells
    std::vector<std::size_t> ends_;  ///< of each cell in it
    SourceRemarks remarks_;
};

using OpenSheet = std::unique_ptr<SheetRows> (*)(Descriptor file, const SheetChoice& choice);

std::unique_ptr<RowReader> readWorkbook(OpenSheet open, SourceFile file, const SourceFormat& format,
                                        const SourceLimits& limits) {
    SheetChoice choice;
    choice.name = format.sheet;
    choice.rowBytes = limits.rowBytes;
    choice.leadingZeros = true;
    return std::make_unique<WorkbookReader>(open(std::move(file).file(), choice), limits);
}

}  // namespace

std::unique_ptr<RowReader> readXlsx(SourceFile file, const SourceFormat& format, const SourceLimits& limits) {
    return readWorkbook(openXlsx, std::move(file), format, limits);
}

std::unique_ptr<RowReader> readXls(SourceFile file, const SourceFormat& format, const SourceLimits& limits) {
    return readWorkbook(openXls, std::move(file), format, limits);
}

std::unique_ptr<RowReader> readOds(SourceFile file, const SourceFormat& format, const SourceLimits& limits) {
    return readWorkbook(openOds, std::move(file), format, limits);
}

}  // namespace kolmera
