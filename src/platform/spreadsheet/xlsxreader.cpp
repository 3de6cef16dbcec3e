
#include <charconv>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/spreadsheet/cellformats.h"
#include "platform/spreadsheet/celltext.h"
#include "platform/spreadsheet/package.h"
#include "platform/spreadsheet/richtext.h"
#include "platform/spreadsheet/sharedstrings.h"
#include "platform/spreadsheet/sheetrows.h"
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

/// The cells of a sheet; `rowEnded` is called when a row is whole.
class SheetPart final : public XmlHandler {
  public:
    SheetPart(const SharedStrings& strings, const CellFormats& formats, bool startsIn1904, const SheetChoice& choice)
        : strings_(strings), formats_(formats), startsIn1904_(startsIn1904), choice_(choice) {}

    std::function<void()> rowEnded;
    SheetRow row;

    void start(std::string_view name, const XmlAttributes& attributes) override {
        if (name == "c" && inData_) {
            startCell(attributes);
        } else if (name == "v") {
            inValue_ = inData_;
        } else if (name == "row" && inData_) {
            startRow(attributes);
        } else if (name == "sheetData") {
            inData_ = true;
        } else if (inData_) {
            inlineText_.start(name);
        }
    }

    void end(std::string_view name) override {
        if (name == "sheetData") inData_ = false;
        if (!inData_) return;
        if (name == "row") {
            if (!row.values.empty()) rowEnded();
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
    void startRow(const XmlAttributes& attributes) {
        row.number = parsed<std::uint64_t>(attributes["r"]).value_or(row.number + 1);
        row.values.clear();
        row.errorValues = 0;
        bytes_ = 0;
        nextColumn_ = 0;
    }

    void startCell(const XmlAttributes& attributes) {
        const std::string_view reference = attributes["r"];
        column_ = reference.empty() ? nextColumn_ : columnOf(reference);
        nextColumn_ = column_ + 1;
        type_ = attributes["t"];
        format_ = parsed<std::size_t>(attributes["s"]).value_or(0);
        value_.clear();
        inlineText_.clear();
    }

    [[nodiscard]] Value value() {
        if (type_ == "inlineStr") return textOrNull(inlineText_.text());
        if (value_.empty()) return Null();
        if (type_ == "e") {
            ++row.errorValues;
            return Null();
        }
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
        return formats_.valueOf(*number, format_, startsIn1904_, choice_.leadingZeros);
    }

    void setCell() {
        if (column_ >= kMostColumns) refuse("The sheet has more columns than a sheet can have.");
        if (column_ >= choice_.columns) return;
        Value value = this->value();
        if (isNull(value)) return;
        bytes_ += textOf(value).size();
        if (bytes_ > choice_.rowBytes) {
            throw PlatformError(errors::kRowTooLong, "a row is too long").about(std::to_string(row.number));
        }
        if (column_ >= row.values.size()) row.values.resize(column_ + 1);
        row.values[column_] = std::move(value);
    }

    const SharedStrings& strings_;
    const CellFormats& formats_;
    const bool startsIn1904_;
    const SheetChoice choice_;

    bool inData_ = false;
    std::size_t bytes_ = 0;  ///< of the row's texts
    std::size_t nextColumn_ = 0;
    std::size_t column_ = 0;
    std::string type_;
    std::size_t format_ = 0;
    bool inValue_ = false;
    std::string value_;
    RichText inlineText_;
};

class XlsxRows final : public SheetRows {
  public:
    XlsxRows(const Descriptor& file, const SheetChoice& choice)
        : archive_(file),
          package_(Package::of(archive_)),
          strings_(SharedStrings::of(archive_, package_.partOfType("sharedStrings"))),
          formats_(CellFormats::of(archive_, package_.partOfType("styles"))),
          part_(strings_, formats_, package_.startsIn1904, choice),
          xml_(archive_.openPart(package_.worksheet(choice.name).part, kMostSheetBytes), part_,
               damagedPart(package_.worksheet(choice.name).part)) {
        part_.rowEnded = [this] { xml_.pause(); };
    }

    bool next(SheetRow& row) override {
        if (!xml_.readOn()) return false;
        std::swap(row, part_.row);
        part_.row.number = row.number;  // a row without a number of its own follows it
        return true;
    }
    [[nodiscard]] double progress() const override { return xml_.progress(); }

  private:
    Archive archive_;
    Package package_;
    SharedStrings strings_;
    CellFormats formats_;
    SheetPart part_;
    XmlReader xml_;
};

}  // namespace

std::unique_ptr<SheetRows> openXlsx(Descriptor file, const SheetChoice& choice) {
    return std::make_unique<XlsxRows>(file, choice);
}

std::vector<SheetName> xlsxSheets(const Descriptor& file) {
    std::vector<SheetName> names;
    for (const Package::Sheet& sheet : Package::of(Archive(file)).sheets) {
        if (sheet.isWorksheet) names.push_back({sheet.name, sheet.isHidden});
    }
    return names;
}

}  // namespace kolmera
