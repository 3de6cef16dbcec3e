#include "source/conversion/sourceconverter.h"

#include <algorithm>

#include "platform/encodings.h"

namespace kolmera {
namespace {

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isBreak(char c) { return c == '\t' || c == '\r' || c == '\n' || c == '\0'; }

}  // namespace

SourceConverter::SourceConverter(std::unique_ptr<RowReader> rows, const SourceSettings& settings,
                                 const TargetLayout& layout)
    : table_(std::move(rows), settings.format), layout_(layout), conversion_(settings, layout, table_.headings()) {}

bool SourceConverter::next(std::string& bytes) {
    while (table_.next(row_)) {
        switch (conversion_.read(row_, values_)) {
            case RowConversion::Use::Empty:
                ++emptyRows_;
                continue;
            case RowConversion::Use::LeftOut:
                notes_.add(Kind::LeftOut,
                           {.row = row_.number, .key = {}, .column = {}, .text = conversion_.leftOutBy()});
                continue;
            case RowConversion::Use::Record:
                break;
        }
        ++records_;
        if (!conversion_.asItIs()) noteMisfits();
        write(bytes);
        return true;
    }
    noteReader();
    return false;
}

SourceNote SourceConverter::note(std::size_t column, std::string text) const {
    const bool keyed = layout_.key > 0 && layout_.key <= values_.size() && !conversion_.asItIs();
    return {.row = row_.number,
            .key = keyed ? values_[layout_.key - 1].text : std::string(),
            .column = conversion_.label(column),
            .text = std::move(text)};
}

void SourceConverter::noteMisfits() {
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const ColumnUse use = layout_.columns[i].use;
        if (values_[i].fits || use == ColumnUse::Nothing) continue;
        notes_.add(use == ColumnUse::Number ? Kind::BadNumber : Kind::Misfit, note(i, values_[i].before));
    }
    if (conversion_.isShort(row_)) notes_.add(Kind::Short, note(values_.size(), {}));
}

void SourceConverter::encode(std::size_t column) {
    const std::string& text = values_[column].text;
    if (isAscii(text)) {
        encoded_ = text;
    } else {
        const std::string whole = composed(text);
        encoded_ = fromUtf8(whole, layout_.page);
        if (std::ranges::count(encoded_, '?') > std::ranges::count(whole, '?'))
            notes_.add(Kind::Lacking, note(column, lackingCharacters(whole, layout_.page)));
    }
    if (conversion_.asItIs() || std::ranges::none_of(encoded_, isBreak)) return;
    notes_.add(Kind::Breaks, note(column, text));
    std::ranges::replace_if(encoded_, isBreak, ' ');
}

void SourceConverter::writeColumn(std::size_t column, std::string& bytes) {
    if (layout_.columns[column].use == ColumnUse::Nothing) return;
    encode(column);
    bytes += encoded_;
}

void SourceConverter::write(std::string& bytes) {
    constexpr std::string_view kLineEnd = "\r\n";
    using Records = TargetLayout::Records;
    if (layout_.records == Records::Fixed) return writeFixed(bytes);
    if (conversion_.asItIs()) {
        encode(0);
        bytes.append(encoded_).append(kLineEnd);
        return;
    }
    for (std::size_t i = 0; i < values_.size(); ++i) {
        if (i > 0) bytes += layout_.records == Records::Lines ? kLineEnd : "\t";
        writeColumn(i, bytes);
    }
    bytes += kLineEnd;
}

void SourceConverter::writeFixed(std::string& bytes) {
    std::string record(layout_.recordLength, ' ');
    const auto put = [&](std::size_t column, std::size_t first, std::size_t length) {
        encode(column);
        first = std::min(first, record.size());
        length = std::min(length, record.size() - first);
        if (encoded_.find_last_not_of(' ') + 1 > length) notes_.add(Kind::Cut, note(column, values_[column].text));
        encoded_.resize(length, ' ');
        record.replace(first, length, encoded_);
    };
    if (conversion_.asItIs()) {
        put(0, 0, record.size());
    } else {
        for (std::size_t i = 0; i < values_.size(); ++i) {
            const TargetLayout::Column& column = layout_.columns[i];
            if (column.use != ColumnUse::Nothing) put(i, column.first, column.length);
        }
    }
    // One byte between records, which the reader drops unseen.
    bytes.append(record).append(1, '\r');
}

void SourceConverter::noteReader() {
    const SourceRemarks remarks = table_.rows().remarks();
    const std::pair<Kind, SourceRemarks::Remark> told[] = {{Kind::Malformed, remarks.malformed},
                                                           {Kind::StrayQuotes, remarks.strayQuotes},
                                                           {Kind::ErrorValue, remarks.errorValues}};
    for (const auto& [kind, remark] : told) {
        if (remark.count == 0) continue;
        notes_.add(kind, remark.count, {.row = remark.firstRow, .key = {}, .column = {}, .text = {}});
    }
}

}  // namespace kolmera
