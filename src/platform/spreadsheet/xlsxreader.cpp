#include "platform/spreadsheet/xlsxreader.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/spreadsheet/cellformats.h"
#include "platform/spreadsheet/celltext.h"
#include "platform/spreadsheet/package.h"
#include "platform/spreadsheet/richtext.h"
#include "platform/spreadsheet/sharedstrings.h"
#include "platform/spreadsheet/xmlpart.h"

namespace kolmera {

namespace {

constexpr std::uint64_t kMostSheetBytes = std::uint64_t{4} << 30;
constexpr std::size_t kMostColumns = 16384;

[[noreturn]] void refuse(const std::string& reason) { throw PlatformError(errors::kUnreadableSpreadsheet, reason); }

template <typename Number>
std::optional<Number> parsed(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// The column of a reference, counted from 0: "B12" gives 1.
std::size_t columnOf(std::string_view reference) {
    std::size_t column = 0;
    for (const char c : reference) {
        if (c < 'A' || c > 'Z' || column > kMostColumns) break;
        column = column * 26 + static_cast<std::size_t>(c - 'A' + 1);
    }
    if (column == 0 || column > kMostColumns) refuse("The sheet has a cell at \"" + std::string(reference) + "\".");
    return column - 1;
}

Value textOrNull(std::string_view text) {
    if (text.empty()) return Null();
    return unescapedCellText(text);
}

/// The cells of a sheet, row by row.
class SheetPart final : public XmlHandler {
  public:
    SheetPart(const SharedStrings& strings, const CellFormats& formats, bool startsIn1904, std::size_t columns,
              const std::function<void(std::span<const Value> row)>& row)
        : strings_(strings), formats_(formats), startsIn1904_(startsIn1904), columns_(columns), row_(row) {}

    void start(std::string_view name, const XmlAttributes& attributes) override {
        if (name == "sheetData") inData_ = true;
        if (!inData_) return;
        if (name == "row") {
            cells_.clear();
            nextColumn_ = 0;
        } else if (name == "c") {
            startCell(attributes);
        } else if (name == "v") {
            inValue_ = true;
        } else {
            inlineText_.start(name);
        }
    }

    void end(std::string_view name) override {
        if (name == "sheetData") inData_ = false;
        if (!inData_) return;
        if (name == "row") {
            if (!cells_.empty()) row_(cells_);
        } else if (name == "c") {
            setCell();
        } else if (name == "v") {
            inValue_ = false;
        } else {
            inlineText_.end(name);
        }
    }

    void text(std::string_view piece) override {
        if (!inData_) return;
        if (inValue_) {
            appendLimited(value_, piece);
        } else {
            inlineText_.add(piece);
        }
    }

  private:
    void startCell(const XmlAttributes& attributes) {
        const std::string_view reference = attributes["r"];
        column_ = reference.empty() ? nextColumn_ : columnOf(reference);
        nextColumn_ = column_ + 1;
        type_ = attributes["t"];
        format_ = parsed<std::size_t>(attributes["s"]).value_or(0);
        value_.clear();
        inlineText_.clear();
    }

    [[nodiscard]] Value value() const {
        if (type_ == "inlineStr") return textOrNull(inlineText_.text());
        if (value_.empty() || type_ == "e") return Null();
        if (type_ == "s") return sharedText();
        if (type_ == "str") return textOrNull(value_);
        if (type_ == "b") return value_ == "1" || value_ == "true";
        if (type_ == "d") return dateOrText();
        return number();
    }

    [[nodiscard]] Value sharedText() const {
        const auto index = parsed<std::size_t>(value_);
        const auto text = index ? strings_.text(*index) : std::nullopt;
        if (!text) refuse("The sheet refers to a text that the workbook lacks.");
        if (text->empty()) return Null();
        return std::string(*text);
    }

    [[nodiscard]] Value dateOrText() const {
        if (const auto date = Date::fromIso(std::string_view(value_).substr(0, 10))) return *date;
        return value_;
    }

    [[nodiscard]] Value number() const {
        const auto number = parsed<double>(value_);
        if (!number) return value_;  // as the user would see it; what takes the row decides
        if (!std::isfinite(*number)) return Null();
        return formats_.isDate(format_) ? dateOfSerial(*number, startsIn1904_) : Value(*number);
    }

    void setCell() {
        if (column_ >= kMostColumns) refuse("The sheet has more columns than a sheet can have.");
        if (column_ >= columns_) return;
        Value value = this->value();
        if (isNull(value)) return;
        if (column_ >= cells_.size()) cells_.resize(column_ + 1);
        cells_[column_] = std::move(value);
    }

    const SharedStrings& strings_;
    const CellFormats& formats_;
    const bool startsIn1904_;
    const std::size_t columns_;
    const std::function<void(std::span<const Value> row)>& row_;

    bool inData_ = false;
    std::vector<Value> cells_;  ///< of the row so far; the last is not Null
    std::size_t nextColumn_ = 0;
    std::size_t column_ = 0;
    std::string type_;
    std::size_t format_ = 0;
    bool inValue_ = false;
    std::string value_;
    RichText inlineText_;
};

}  // namespace

void readXlsxRows(const std::filesystem::path& file, std::size_t columns,
                  const std::function<void(std::span<const Value> row)>& row) {
    const Archive archive(file);
    const Package package = Package::of(archive);
    const Package::Sheet& sheet = package.firstWorksheet();
    const SharedStrings strings = SharedStrings::of(archive, package.partOfType("sharedStrings"));
    const CellFormats formats = CellFormats::of(archive, package.partOfType("styles"));
    SheetPart part(strings, formats, package.startsIn1904, columns, row);
    readXmlPart(archive, sheet.part, kMostSheetBytes, part);
}

}  // namespace kolmera
