#include "definitions/sourcelist.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/lettercase.h"
#include "platform/locale.h"
#include "platform/pricefile.h"
#include "source/detection/recordlength.h"

namespace kolmera {
namespace {

// A file without line ends is one field, of any size: a row shows its beginning.
constexpr std::size_t kShownBytes = 500;

void add(SourceFields& fields, std::string_view bytes, CodePage page, Piece piece = {}) {
    const std::string shown = printable(toUtf8(bytes.substr(0, kShownBytes), page));
    fields.push_back({fmt::format("{:2}.\t{}", fields.size() + 1, shown), piece});
}

Piece restOf(std::string_view record, std::span<const Piece> pieces) {
    const int first = pieces.empty() ? 1 : std::max(1, pieces.back().FrånPos + pieces.back().Längd);
    return {first, std::max(0, static_cast<int>(record.size()) - first + 1)};
}

std::vector<std::string> fieldsOf(PriceFile& file, const Mask& mask) {
    std::vector<std::string> fields;
    const auto add = [&](std::string_view bytes) {
        fields.push_back(printable(toUtf8(bytes.substr(0, kShownBytes), codePageOf(mask))));
    };
    if (mask.FilTyp == 'F') {
        for (int line = 0; line < std::min(typedNumber(mask.AntalRader), kMostSources); ++line) add(file.line());
        return fields;
    }
    std::string_view line = file.line();
    for (int column = 0; column < kMostSources; ++column) {
        const auto tab = line.find('\t');
        add(line.substr(0, tab));
        if (tab == std::string_view::npos) break;
        line.remove_prefix(tab + 1);
    }
    return fields;
}

}  // namespace

// Tabs and line ends inside a field would be taken for the columns of the list. A line feed ends no line and has to be
// seen.
std::string printable(std::string text) {
    text = replaceAll(text, "\n", "↵");
    constexpr unsigned char kFirstPrintable = 0x20;
    std::ranges::replace_if(
        text, [](char letter) { return static_cast<unsigned char>(letter) < kFirstPrintable; }, ' ');
    return text;
}

std::string_view cut(std::string_view record, Piece piece) {
    if (piece.FrånPos < 1 || static_cast<std::size_t>(piece.FrånPos) > record.size()) return {};
    return record.substr(static_cast<std::size_t>(piece.FrånPos - 1), static_cast<std::size_t>(piece.Längd));
}

CodePage codePageOf(const Mask& mask) { return mask.Tecken == 'J' ? CodePage::Oem850 : CodePage::Windows1252; }

SampleRecords recordsOf(const std::filesystem::path& sample, const Mask& mask, std::size_t count) {
    PriceFile file(sample);
    SampleRecords records;
    const auto length = static_cast<std::size_t>(typedNumber(mask.Postlängd));
    if (mask.FilTyp == 'F' && typedNumber(mask.AntalRader) < 1) return records;
    if (mask.FilTyp == 'P' && length == 0) return records;
    while (records.size() < count && !file.atEnd()) {
        if (mask.FilTyp != 'P') {
            records.fields.push_back(fieldsOf(file, mask));
            continue;
        }
        records.bytes.emplace_back(file.bytes(length));
        file.bytes(1);  // as a run drops it
    }
    return records;
}

SourceFields linesOf(const std::filesystem::path& sample, int lines, CodePage page) {
    PriceFile file(sample);
    SourceFields fields;
    for (int line = 0; line < std::min(lines, kMostSources); ++line) add(fields, file.line(), page);
    return fields;
}

SourceColumns columnsOf(const std::filesystem::path& sample, CodePage page) {
    PriceFile file(sample);
    std::string_view line = file.line();
    SourceColumns columns{.fields = {}, .count = 1 + static_cast<int>(std::ranges::count(line, '\t'))};
    for (int column = std::min(columns.count, kMostSources); column > 0; --column) {
        const std::size_t length = std::min(line.find('\t'), line.size());
        add(columns.fields, line.substr(0, length), page);
        line.remove_prefix(std::min(length + 1, line.size()));
    }
    return columns;
}

SourceFields piecesOf(const std::filesystem::path& sample, int length, std::span<const Piece> pieces, CodePage page) {
    PriceFile file(sample);
    const std::string_view record = file.bytes(static_cast<std::size_t>(length));
    SourceFields fields;
    for (const Piece& piece : pieces) add(fields, cut(record, piece), page, piece);
    const Piece rest = restOf(record, pieces);
    add(fields, cut(record, rest), page, rest);
    return fields;
}

std::size_t repeatedLengthOf(const std::filesystem::path& sample, CodePage page) {
    constexpr std::size_t kLooked = std::size_t{1} << 16;
    PriceFile file(sample);
    const std::string bytes(file.bytes(kLooked));
    return repeatedLength(toUtf8(bytes, page), file.atEnd());
}

int typedNumber(std::string_view text) {
    constexpr double kMost = 9999;
    return static_cast<int>(std::clamp(roundHalfEven(leadingNumber(text)), 0.0, kMost));
}

}  // namespace kolmera
