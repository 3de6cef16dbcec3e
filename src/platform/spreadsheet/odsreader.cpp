#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <optional>
#include <set>
#include <utility>

#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/spreadsheet/archive.h"
#include "platform/spreadsheet/richtext.h"
#include "platform/spreadsheet/sheetrows.h"
#include "platform/spreadsheet/xmlpart.h"

namespace kolmera {

namespace {

constexpr const char* kContent = "content.xml";
constexpr const char* kManifest = "META-INF/manifest.xml";
constexpr std::uint64_t kMostContentBytes = std::uint64_t{4} << 30;
constexpr std::uint64_t kMostManifestBytes = std::uint64_t{16} << 20;
constexpr std::size_t kMostColumns = 16384;
constexpr std::uint64_t kMostRows = std::uint64_t{1} << 24;

[[noreturn]] void refuse(const std::string& reason) { throw PlatformError(errors::kUnreadableSpreadsheet, reason); }

/// How often a cell or a row stands there; 1 where nothing sensible is said.
std::uint64_t repetitions(std::string_view text) {
    std::uint64_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    return error == std::errc() && count > 0 ? count : 1;
}

/// Knows which table of the document an element is in. Tables within cells, changes and links are none.
class TablesPart : public XmlHandler {
  public:
    void start(std::string_view name, const XmlAttributes& attributes) final {
        ++depth_;
        if (depth_ == kTableDepth && name == "table") tableBegun(attributes);
        element(name, attributes);
    }
    void end(std::string_view name) final {
        elementEnded(name);
        if (depth_ == kTableDepth && name == "table") tableEnded();
        --depth_;
    }

  protected:
    virtual void tableBegun(const XmlAttributes& attributes) = 0;
    virtual void tableEnded() {}
    virtual void element(std::string_view /*name*/, const XmlAttributes& /*attributes*/) {}
    virtual void elementEnded(std::string_view /*name*/) {}

  private:
    static constexpr int kTableDepth = 4;  // document-content, body, spreadsheet
    int depth_ = 0;
};

class TableNames final : public TablesPart {
  public:
    std::vector<SheetName> names;

  private:
    void tableBegun(const XmlAttributes& attributes) override {
        names.push_back({std::string(attributes["name"]), hidden_.contains(attributes["style-name"])});
    }
    /// Styles stand before the tables. It is a table's style that hides it.
    void element(std::string_view name, const XmlAttributes& attributes) override {
        if (name == "style") {
            style_ = attributes.has("family", "table") ? attributes["name"] : std::string_view();
        } else if (name == "table-properties" && attributes.has("display", "false")) {
            hidden_.emplace(style_);
        }
    }

    std::string style_;
    std::set<std::string, std::less<>> hidden_;
};

/// "PT08H30M00S" as part of a day, as other workbooks store a time of day.
std::optional<double> partOfDay(std::string_view text) {
    constexpr std::pair<char, double> kUnits[] = {{'H', 24}, {'M', 24 * 60}, {'S', 24 * 60 * 60}};
    if (!text.starts_with("PT")) return std::nullopt;
    text.remove_prefix(2);
    double days = 0;
    for (const auto& [unit, ofDay] : kUnits) {
        double number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end == text.data() + text.size() || *end != unit) continue;
        days += number / ofDay;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    }
    return text.empty() && std::isfinite(days) ? std::optional(days) : std::nullopt;
}

/// The cells of a table; `rowEnded` is called when a row is whole, and says how often it stands there.
class TableCells final : public TablesPart {
  public:
    explicit TableCells(const SheetChoice& choice) : choice_(choice) {}

    std::function<void(std::uint64_t times)> rowEnded;
    SheetRow row;
    bool found = false;

    void text(std::string_view piece) override {
        if (paragraphDepth_ > 0) appendLimited(text_, piece);
    }

  private:
    void tableBegun(const XmlAttributes& attributes) override {
        inTable_ = !found && (choice_.name.empty() || equalNoCase(attributes["name"], choice_.name));
        found |= inTable_;
    }
    void tableEnded() override { inTable_ = false; }

    void element(std::string_view name, const XmlAttributes& attributes) override {
        if (!inTable_) return;
        if (cellDepth_ > 0) {
            ++cellDepth_;
            return inCell(name, attributes);
        }
        if (name == "table-row") {
            rowTimes_ = repetitions(attributes["number-rows-repeated"]);
            row.values.clear();
            row.errorValues = 0;
            column_ = 0;
            bytes_ = 0;
        } else if (name == "table-cell" || name == "covered-table-cell") {
            startCell(attributes);
        }
    }

    void elementEnded(std::string_view name) override {
        if (!inTable_) return;
        if (cellDepth_ > 0) {
            if (cellDepth_ == paragraphDepth_) paragraphDepth_ = 0;
            if (--cellDepth_ == 0) setCell();
        } else if (name == "table-row") {
            endRow();
        }
    }

    void startCell(const XmlAttributes& attributes) {
        cellDepth_ = 1;
        cellTimes_ = repetitions(attributes["number-columns-repeated"]);
        isError_ = attributes.has("value-type", "error");
        type_ = attributes["value-type"];
        stored_ = attributes[type_ == "date"      ? "date-value"
                             : type_ == "time"    ? "time-value"
                             : type_ == "boolean" ? "boolean-value"
                             : type_ == "string"  ? "string-value"
                                                  : "value"];
        text_.clear();
        paragraphs_ = 0;
    }

    /// Texts of notes and drawings in a cell are not the cell's.
    void inCell(std::string_view name, const XmlAttributes& attributes) {
        constexpr int kChild = 2;
        if (name == "p" && cellDepth_ == kChild) {
            if (paragraphs_++ > 0) appendLimited(text_, "\n");
            paragraphDepth_ = cellDepth_;
        } else if (paragraphDepth_ == 0) {
            return;
        } else if (name == "s") {
            constexpr std::uint64_t kMostBlanks = 1024;
            appendLimited(text_, std::string(std::min(repetitions(attributes["c"]), kMostBlanks), ' '));
        } else if (name == "tab") {
            appendLimited(text_, "\t");
        } else if (name == "line-break") {
            appendLimited(text_, "\n");
        }
    }

    [[nodiscard]] Value value() {
        if (isError_) {
            row.errorValues += cellTimes_;
            return Null();
        }
        if (type_ == "boolean") return stored_ == "true";
        if (type_ == "date") {
            if (const auto date = Date::fromIso(std::string_view(stored_).substr(0, 10))) return *date;
        }
        if (type_ == "time") {
            if (const auto days = partOfDay(stored_)) return *days;
        }
        if (type_ == "float" || type_ == "percentage" || type_ == "currency") {
            if (const auto number = this->number()) return *number;
        }
        if (paragraphs_ == 0 && type_ == "string") text_ = stored_;
        return text_.empty() ? Value() : Value(text_);
    }

    /// A number with leading zeros shows them in its text.
    [[nodiscard]] std::optional<Value> number() const {
        double number = 0;
        const auto [end, error] = std::from_chars(stored_.data(), stored_.data() + stored_.size(), number);
        if (error != std::errc() || end != stored_.data() + stored_.size()) return std::nullopt;
        if (!std::isfinite(number)) return Null();
        const bool zeros = choice_.leadingZeros && text_.size() > 1 && text_[0] == '0' &&
                           text_.find_first_not_of("0123456789") == std::string::npos;
        return zeros && number == std::floor(number) ? Value(text_) : Value(number);
    }

    void setCell() {
        const std::uint64_t from = column_;
        column_ += cellTimes_;
        Value value = this->value();
        // What is empty may be repeated to the edge of the sheet.
        if (isNull(value)) return;
        if (column_ > kMostColumns) refuse("The sheet has more columns than a sheet can have.");
        const auto to = std::min(static_cast<std::size_t>(column_), choice_.columns);
        if (from >= to) return;
        bytes_ += textOf(value).size() * (to - from);
        if (bytes_ > choice_.rowBytes) {
            throw PlatformError(errors::kRowTooLong, "a row is too long").about(std::to_string(row.number + 1));
        }
        row.values.resize(from);
        row.values.resize(to, value);
    }

    void endRow() {
        row.number += 1;
        if (row.values.empty()) {
            row.number += rowTimes_ - 1;
        } else {
            if (row.number + rowTimes_ > kMostRows) refuse("The sheet has more rows than a sheet can have.");
            rowEnded(rowTimes_);
        }
    }

    const SheetChoice choice_;
    bool inTable_ = false;
    std::uint64_t rowTimes_ = 1;
    std::uint64_t column_ = 0;
    std::size_t bytes_ = 0;
    int cellDepth_ = 0;       ///< 1 in a cell, 2 in its children; 0 outside
    int paragraphDepth_ = 0;  ///< that of the paragraph, 0 outside
    int paragraphs_ = 0;
    std::uint64_t cellTimes_ = 1;
    bool isError_ = false;
    std::string type_;
    std::string stored_;
    std::string text_;
};

Archive openedOds(const Descriptor& file) {
    Archive archive(file);
    if (!archive.find(kContent)) refuse("The file is not a workbook.");
    if (archive.find(kManifest) &&
        archive.bytes(kManifest, kMostManifestBytes).find("encryption-data") != std::string::npos) {
        throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected by a password.");
    }
    return archive;
}

class OdsRows final : public SheetRows {
  public:
    OdsRows(const Descriptor& file, const SheetChoice& choice)
        : archive_(openedOds(file)),
          cells_(choice),
          name_(choice.name),
          xml_(archive_.openPart(kContent, kMostContentBytes), cells_, damagedPart(kContent)) {
        cells_.rowEnded = [this](std::uint64_t times) {
            times_ = times;
            xml_.pause();
        };
    }

    bool next(SheetRow& row) override {
        if (times_ > 1) {
            --times_;
            ++cells_.row.number;
        } else if (!xml_.readOn()) {
            if (!cells_.found) throw PlatformError(errors::kNoSuchSheet, "not in the workbook").about(name_);
            return false;
        }
        row = cells_.row;
        return true;
    }
    [[nodiscard]] double progress() const override { return xml_.progress(); }

  private:
    Archive archive_;
    TableCells cells_;
    std::string name_;
    XmlReader xml_;
    std::uint64_t times_ = 0;  ///< that the row is still to be given
};

}  // namespace

std::unique_ptr<SheetRows> openOds(Descriptor file, const SheetChoice& choice) {
    return std::make_unique<OdsRows>(file, choice);
}

std::vector<SheetName> odsSheets(const Descriptor& file) {
    const Archive archive = openedOds(file);
    TableNames names;
    XmlReader(archive.openPart(kContent, kMostContentBytes), names, damagedPart(kContent)).readOn();
    return names.names;
}

}  // namespace kolmera
