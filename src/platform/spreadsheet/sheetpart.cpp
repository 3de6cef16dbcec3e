#include "platform/spreadsheet/sheetpart.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/spreadsheet/celltext.h"

namespace kolmera {

namespace {

constexpr int kMostRows = 1048576;
constexpr std::size_t kMostColumns = 16384;
constexpr std::size_t kMostCharacters = 32767;
constexpr std::size_t kPiece = std::size_t{1} << 16;

template <typename Number>
void appendNumber(Number number, std::string& xml) {
    char digits[32];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), number);
    xml.append(digits, end);
}

/// Spaces at the ends and line ends get lost without a request to keep them.
bool needsKeptSpaces(std::string_view text) {
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\n'; };
    return isSpace(text.front()) || isSpace(text.back()) || text.find('\n') != std::string_view::npos;
}

/// The width of a column in characters: enough for what it can hold, within reason.
int widthOf(const SheetColumn& column) {
    constexpr int kNumber = 10;
    constexpr int kWidest = 60;
    const int name = static_cast<int>(characterCount(column.name));
    const int content = column.type == FieldType::Text ? column.size : kNumber;
    return std::min(std::max(name, content), kWidest) + 2;
}

}  // namespace

SheetPartWriter::SheetPartWriter(const std::filesystem::path& file, std::span<const SheetColumn> columns,
                                 std::string_view xmlNamespace)
    : file_(file, O_WRONLY | O_CREAT | O_EXCL), columns_(columns) {
    if (columns.size() > kMostColumns) {
        throw PlatformError(errors::kUnwritableFormat, fmt::format("A sheet can have {} columns.", kMostColumns));
    }
    begin(xmlNamespace);
    beginRow();
    for (const SheetColumn& column : columns_) cell(column.name, FieldType::Text);
    endRow();
}

void SheetPartWriter::begin(std::string_view xmlNamespace) {
    xml_ = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
    xml_ += fmt::format("<worksheet xmlns=\"{}\">", xmlNamespace);
    if (!columns_.empty()) xml_ += "<cols>";
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        xml_ +=
            fmt::format("<col min=\"{0}\" max=\"{0}\" width=\"{1}\" customWidth=\"1\"/>", i + 1, widthOf(columns_[i]));
    }
    if (!columns_.empty()) xml_ += "</cols>";
    xml_ += "<sheetData>";
}

void SheetPartWriter::row(std::span<const Value> values) {
    beginRow();
    const std::size_t count = std::min(values.size(), columns_.size());
    for (std::size_t i = 0; i < count; ++i) cell(values[i], columns_[i].type);
    endRow();
}

void SheetPartWriter::beginRow() {
    if (++rows_ > kMostRows) {
        throw PlatformError(errors::kUnwritableFormat, fmt::format("A sheet can have {} rows.", kMostRows));
    }
    xml_ += fmt::format("<row r=\"{}\">", rows_);
}

void SheetPartWriter::endRow() {
    xml_ += "</row>";
    if (xml_.size() >= kPiece) flush();
}

// A cell without a reference stands to the right of the one before; an empty cell has to be there, then.
void SheetPartWriter::cell(const Value& value, FieldType type) {
    if (const auto* number = std::get_if<double>(&value); number && std::isfinite(*number)) {
        xml_ += "<c><v>";
        // A number of a Single column is written as it was entered: 0.1, not 0.10000000149011612.
        const auto single = static_cast<float>(*number);
        type == FieldType::Single&& std::isfinite(single) ? appendNumber(single, xml_) : appendNumber(*number, xml_);
        xml_ += "</v></c>";
    } else if (const auto* whole = std::get_if<std::int64_t>(&value)) {
        xml_ += "<c><v>";
        appendNumber(*whole, xml_);
        xml_ += "</v></c>";
    } else if (const auto* truth = std::get_if<bool>(&value)) {
        xml_ += *truth ? "<c t=\"b\"><v>1</v></c>" : "<c t=\"b\"><v>0</v></c>";
    } else if (const auto* date = std::get_if<Date>(&value)) {
        text(date->iso());
    } else {
        text(textOf(value));
    }
}

void SheetPartWriter::text(std::string_view text) {
    if (text.empty()) {
        xml_ += "<c/>";
        return;
    }
    if (characterCount(text) > kMostCharacters) {
        throw PlatformError(errors::kTextTooLong,
                            fmt::format("A cell can hold a text of {} characters.", kMostCharacters));
    }
    xml_ += needsKeptSpaces(text) ? "<c t=\"inlineStr\"><is><t xml:space=\"preserve\">" : "<c t=\"inlineStr\"><is><t>";
    appendCellText(text, xml_);
    xml_ += "</t></is></c>";
}

void SheetPartWriter::flush() {
    file_.writeAt(written_, xml_);
    written_ += xml_.size();
    xml_.clear();
}

void SheetPartWriter::finish() {
    xml_ += "</sheetData></worksheet>";
    flush();
}

}  // namespace kolmera
