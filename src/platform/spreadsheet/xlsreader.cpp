#include <algorithm>
#include <bit>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/spreadsheet/biffrecords.h"
#include "platform/spreadsheet/cellformats.h"
#include "platform/spreadsheet/compoundfile.h"
#include "platform/spreadsheet/sharedstrings.h"
#include "platform/spreadsheet/sheetrows.h"

namespace kolmera {

namespace {

enum Kind : int {
    kFormula = 0x06,
    kEnd = 0x0A,
    kDateMode = 0x22,
    kPassword = 0x2F,
    kSheetEntry = 0x85,
    kManyNumbers = 0xBD,
    kRichLabel = 0xD6,
    kCellFormat = 0xE0,
    kSharedTexts = 0xFC,
    kSharedLabel = 0xFD,
    kNumber = 0x203,
    kLabel = 0x204,
    kTruthOrError = 0x205,
    kFormulaText = 0x207,
    kShortNumber = 0x27E,
    kNumberFormat = 0x41E,
    kBegin = 0x809,
};

constexpr std::uint16_t kVersion8 = 0x600;
constexpr std::size_t kMostRows = 65536;
constexpr std::size_t kMostColumns = 256;

[[noreturn]] void refuse(const std::string& reason) { throw PlatformError(errors::kUnreadableSpreadsheet, reason); }

/// A number in four bytes: a whole number or the upper half of a floating-point one, perhaps a hundredth of it.
double expanded(std::uint32_t bits) {
    const bool isWhole = (bits & 2) != 0;
    const double number =
        isWhole ? static_cast<std::int32_t>(bits) >> 2 : std::bit_cast<double>(std::uint64_t{bits & 0xFFFFFFFC} << 32);
    return (bits & 1) != 0 ? number / 100 : number;
}

/// What stands in front of the sheets: texts, formats, and where the worksheets are.
class Globals {
  public:
    explicit Globals(BiffRecords& records) {
        if (!records.next() || records.kind() != kBegin) refuse("The file is not a workbook.");
        if (records.word() != kVersion8) refuse("Workbooks from before 1997 cannot be read.");
        while (records.next() && records.kind() != kEnd) read(records);
        if (sheets_.empty()) refuse("The workbook has no sheets.");
    }

    struct Sheet {
        SheetName name;
        std::uint64_t position;
    };
    [[nodiscard]] const std::vector<Sheet>& sheets() const { return sheets_; }
    /// Where the sheet of this name begins, the first one for an empty name.
    [[nodiscard]] std::uint64_t positionOf(const std::string& name) const {
        for (const Sheet& sheet : sheets_) {
            if (name.empty() || equalNoCase(sheet.name.name, name)) return sheet.position;
        }
        throw PlatformError(errors::kNoSuchSheet, "not in the workbook").about(name);
    }

    [[nodiscard]] Value sharedText(std::size_t number) const { return std::string(*texts_.text(number)); }
    /// Whether a shared text has characters; it has to be there.
    [[nodiscard]] bool hasText(std::size_t number) const {
        const auto text = texts_.text(number);
        if (!text) refuse("The sheet refers to a text that the workbook lacks.");
        return !text->empty();
    }

    [[nodiscard]] Value number(double number, std::size_t format, bool leadingZeros) const {
        return formats_.valueOf(number, format, startsIn1904_, leadingZeros);
    }

  private:
    void read(BiffRecords& records) {
        switch (records.kind()) {
            case kPassword:
                throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected by a password.");
            case kDateMode:
                startsIn1904_ = records.word() == 1;
                break;
            case kNumberFormat: {
                const int id = records.word();
                formats_.define(id, records.text());
                break;
            }
            case kCellFormat:
                records.skip(2);
                formats_.add(records.word());
                break;
            case kSheetEntry:
                readSheetEntry(records);
                break;
            case kSharedTexts:
                readTexts(records);
                break;
            default:
                break;
        }
    }

    void readSheetEntry(BiffRecords& records) {
        const std::uint32_t position = records.doubleWord();
        const bool isHidden = records.byte() != 0;
        const bool isWorksheet = records.byte() == 0;
        if (isWorksheet) sheets_.push_back({{records.shortText(), isHidden}, position});
    }

    void readTexts(BiffRecords& records) {
        records.skip(4);
        for (std::uint32_t left = records.doubleWord(); left > 0; --left) texts_.add(records.text());
    }

    std::vector<Sheet> sheets_;
    SharedStrings texts_;
    CellFormats formats_;
    bool startsIn1904_ = false;
};

struct SharedText {
    std::uint32_t number;
};

struct Cell {
    std::uint16_t row;
    std::uint16_t column;
    std::variant<Value, SharedText> value;
};

/// Collects the cells of a sheet.
class SheetCells {
  public:
    SheetCells(BiffRecords& records, const Globals& globals, const SheetChoice& choice)
        : records_(records), globals_(globals), columns_(choice.columns), leadingZeros_(choice.leadingZeros) {
        records.seek(globals.positionOf(choice.name));
        if (!records.next() || records.kind() != kBegin) refuse("The workbook is damaged.");
        // Charts in the sheet have a beginning and an end of their own.
        for (int depth = 1; depth > 0 && records.next();) {
            if (records.kind() == kBegin) ++depth;
            if (records.kind() == kEnd) --depth;
            if (depth == 1) read();
        }
        const auto isBefore = [](const Cell& a, const Cell& b) {
            return a.row != b.row ? a.row < b.row : a.column < b.column;
        };
        std::ranges::stable_sort(cells_, isBefore);
    }

    [[nodiscard]] const std::vector<Cell>& cells() const { return cells_; }
    [[nodiscard]] std::uint64_t errorValues(std::uint16_t row) const {
        const auto found = errorValues_.find(row);
        return found == errorValues_.end() ? 0 : found->second;
    }

    [[nodiscard]] Value valueOf(const Cell& cell) const {
        const auto* shared = std::get_if<SharedText>(&cell.value);
        return shared != nullptr ? globals_.sharedText(shared->number) : std::get<Value>(cell.value);
    }

  private:
    void read() {
        switch (records_.kind()) {
            case kNumber:
                return readCell(
                    [this](std::size_t format) { return globals_.number(records_.real(), format, leadingZeros_); });
            case kShortNumber:
                return readCell([this](std::size_t format) {
                    return globals_.number(expanded(records_.doubleWord()), format, leadingZeros_);
                });
            case kManyNumbers:
                return readManyNumbers();
            case kSharedLabel:
                return readSharedText();
            case kLabel:
            case kRichLabel:
                return readCell([this](std::size_t) { return textOrNull(records_.text()); });
            case kTruthOrError:
                return readCell([this](std::size_t) {
                    const bool truth = records_.byte() != 0;
                    if (records_.byte() == 0) return Value(truth);
                    ++errorValues_[row_];
                    return Value();
                });
            case kFormula:
                return readCell([this](std::size_t format) { return formulaValue(format); });
            case kFormulaText:
                if (waiting_) add(waiting_->row, waiting_->column, textOrNull(records_.text()));
                waiting_.reset();
                return;
            default:
                return;
        }
    }

    template <typename ReadValue>
    void readCell(ReadValue readValue) {
        row_ = records_.word();
        column_ = records_.word();
        const std::size_t format = records_.word();
        add(row_, column_, readValue(format));
    }

    void readSharedText() {
        const std::uint16_t row = records_.word();
        const std::uint16_t column = records_.word();
        records_.skip(2);
        const std::uint32_t number = records_.doubleWord();
        if (globals_.hasText(number)) keep({row, column, SharedText{number}});
    }

    void readManyNumbers() {
        constexpr std::size_t kPair = 6;
        const std::uint16_t row = records_.word();
        for (std::uint16_t column = records_.word(); records_.left() >= kPair; ++column) {
            const std::size_t format = records_.word();
            add(row, column, globals_.number(expanded(records_.doubleWord()), format, leadingZeros_));
        }
    }

    /// The saved value. A text comes in a record of its own, later.
    Value formulaValue(std::size_t format) {
        const double number = records_.real();
        const auto bits = std::bit_cast<std::uint64_t>(number);
        if (bits >> 48 != 0xFFFF) return globals_.number(number, format, leadingZeros_);
        constexpr std::uint8_t kText = 0;
        constexpr std::uint8_t kTruth = 1;
        const auto kind = static_cast<std::uint8_t>(bits);
        constexpr std::uint8_t kError = 2;
        if (kind == kError) ++errorValues_[row_];
        if (kind == kText) waiting_ = Cell{row_, column_, Null()};
        return kind == kTruth ? Value((bits >> 16 & 0xFF) != 0) : Value();
    }

    static Value textOrNull(std::string text) { return text.empty() ? Value() : Value(std::move(text)); }

    void add(std::uint16_t row, std::uint16_t column, Value value) {
        if (!isNull(value)) keep({row, column, std::move(value)});
    }

    void keep(Cell cell) {
        if (cell.column >= kMostColumns) refuse("The sheet has more columns than a sheet can have.");
        if (cell.column >= columns_) return;
        if (cells_.size() == kMostRows * std::min(columns_, kMostColumns)) refuse("The sheet has too many cells.");
        cells_.push_back(std::move(cell));
    }

    BiffRecords& records_;
    const Globals& globals_;
    const std::size_t columns_;
    const bool leadingZeros_;
    std::vector<Cell> cells_;
    std::map<std::uint16_t, std::uint64_t> errorValues_;  ///< by row
    std::uint16_t row_ = 0;
    std::uint16_t column_ = 0;
    std::optional<Cell> waiting_;  ///< the cell of a formula whose text has not come yet
};

BiffRecords workbookOf(const CompoundFile& compound) {
    if (compound.stream("EncryptedPackage")) {
        throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected by a password.");
    }
    auto stream = compound.stream("Workbook");
    if (!stream && compound.stream("Book")) refuse("Workbooks from before 1997 cannot be read.");
    if (!stream) refuse("The file is not a workbook.");
    return BiffRecords(std::move(*stream));
}

class XlsRows final : public SheetRows {
  public:
    XlsRows(Descriptor file, const SheetChoice& choice)
        : compound_(std::move(file)),
          records_(workbookOf(compound_)),
          globals_(records_),
          sheet_(records_, globals_, choice),
          rowBytes_(choice.rowBytes) {}

    bool next(SheetRow& row) override {
        const std::vector<Cell>& cells = sheet_.cells();
        if (at_ == cells.size()) return false;
        const std::uint16_t number = cells[at_].row;
        row.number = number + std::uint64_t{1};
        row.values.clear();
        row.errorValues = sheet_.errorValues(number);
        std::size_t bytes = 0;
        for (; at_ < cells.size() && cells[at_].row == number; ++at_) {
            row.values.resize(cells[at_].column + std::size_t{1});
            row.values.back() = sheet_.valueOf(cells[at_]);
            bytes += textOf(row.values.back()).size();
            if (bytes > rowBytes_) {
                throw PlatformError(errors::kRowTooLong, "a row is too long").about(std::to_string(row.number));
            }
        }
        return true;
    }
    [[nodiscard]] double progress() const override {
        const std::size_t all = sheet_.cells().size();
        return all == 0 ? 1 : static_cast<double>(at_) / static_cast<double>(all);
    }

  private:
    CompoundFile compound_;
    BiffRecords records_;
    Globals globals_;
    SheetCells sheet_;
    std::size_t rowBytes_;
    std::size_t at_ = 0;
};

}  // namespace

std::unique_ptr<SheetRows> openXls(Descriptor file, const SheetChoice& choice) {
    return std::make_unique<XlsRows>(std::move(file), choice);
}

std::vector<SheetName> xlsSheets(Descriptor file) {
    const CompoundFile compound(std::move(file));
    BiffRecords records = workbookOf(compound);
    const Globals globals(records);
    std::vector<SheetName> names;
    for (const auto& sheet : globals.sheets()) names.push_back(sheet.name);
    return names;
}

}  // namespace kolmera
