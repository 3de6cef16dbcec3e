#include "source/readers/opensource.h"

#include <fcntl.h>

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/filesample.h"
#include "source/readers/readers.h"
#include "source/sourcefile.h"

namespace kolmera {
namespace {

struct ReaderOfKind {
    SourceKind kind;
    std::unique_ptr<RowReader> (*open)(SourceFile file, const SourceFormat& format, const SourceLimits& limits);
};
/// One row a kind of file.
constexpr ReaderOfKind kReaders[] = {
    {SourceKind::Delimited, readDelimited},
    {SourceKind::Fixed, readFixed},
    {SourceKind::Xlsx, readXlsx},
    {SourceKind::Xls, readXls},
    {SourceKind::Ods, readOds},
    {SourceKind::Xml, readXml},
};

/// A supplier who sends another kind of file is told of as that, not as what its bytes happen to be.
void expectKind(const SourceFile& source, SourceKind kind) {
    const Signature signature = signatureOf(source.beginning());
    const bool isWorkbook = signature == Signature::Zip || signature == Signature::Compound;
    const bool expected = kind == SourceKind::Xlsx || kind == SourceKind::Xls || kind == SourceKind::Ods;
    if (isWorkbook == expected) return;
    const std::string name(nameOf(kind));
    throw PlatformError(isWorkbook ? errors::kIsWorkbook : errors::kIsNoWorkbook, "not of this kind: " + name);
}

/// XML may begin with the mark too.
bool isSemicolonText(std::string_view beginning) {
    if (!beginning.starts_with(kTextMark)) return false;
    const std::size_t first = beginning.find_first_not_of(" \t\r\n", kTextMark.size());
    return first == std::string_view::npos || beginning[first] != '<';
}

}  // namespace

std::unique_ptr<RowReader> openRows(Descriptor file, const SourceFormat& format, const SourceLimits& limits) {
    SourceFile source = SourceFile::of(std::move(file), format.member, limits);
    if (!isText(format.kind) && isSemicolonText(source.beginning()))
        return readDelimited(std::move(source), SourceFormat{}, limits);
    expectKind(source, format.kind);
    for (const ReaderOfKind& reader : kReaders) {
        if (reader.kind == format.kind) return reader.open(std::move(source), format, limits);
    }
    throw PlatformError(errors::kUnknownSource, "no reader").about(std::string(nameOf(format.kind)));
}

std::unique_ptr<RowReader> openRows(const std::filesystem::path& file, const SourceFormat& format,
                                    const SourceLimits& limits) {
    // Opening a pipe must not wait for its writer.
    return openRows(Descriptor(file, O_RDONLY | O_NONBLOCK), format, limits);
}

SourceTable::SourceTable(std::unique_ptr<RowReader> rows, const SourceFormat& format)
    : rows_(std::move(rows)), skip_(format.skip) {
    if (!format.headings && format.kind != SourceKind::Xml) return;
    const auto hasText = [](const Cell& cell) { return !cell.text.empty(); };
    Row row;
    while (headings_.empty() && next(row)) {
        if (std::ranges::none_of(row.cells, hasText)) continue;
        for (const Cell& cell : row.cells) headings_.emplace_back(cell.text);
        headingRow_ = row.number;
    }
}

bool SourceTable::next(Row& row) {
    while (rows_->next(row)) {
        if (row.number > skip_ || row.number == 0) return true;
    }
    return false;
}

}  // namespace kolmera
