#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/descriptor.h"
#include "source/rowreader.h"
#include "source/sourceformat.h"

namespace kolmera {

/// Whether a file of this kind is a text whose lines are its rows.
constexpr bool isText(SourceKind kind) { return kind == SourceKind::Delimited || kind == SourceKind::Fixed; }

/// What begins a semicolon text in UTF-8 that is read in the place of a workbook or XML: its lines are the rows.
inline constexpr std::string_view kTextMark = "\xEF\xBB\xBF";

/// Opens a price file as what `format` says. Of the signs of numbers and dates it takes no notice: cells come as they
/// stand (see Cell). Throws PlatformError.
std::unique_ptr<RowReader> openRows(const std::filesystem::path& file, const SourceFormat& format,
                                    const SourceLimits& limits = {});
/// The same of an open file or a pipe (standard input). What has to be read from several places is kept in a nameless
/// temporary file first.
std::unique_ptr<RowReader> openRows(Descriptor file, const SourceFormat& format, const SourceLimits& limits = {});

/// The table of a price file: `SourceFormat::skip` rows are left out, and with `headings` the first row behind them
/// that is not empty names the columns.
class SourceTable {
  public:
    SourceTable(std::unique_ptr<RowReader> rows, const SourceFormat& format);

    /// Empty where the format has none, or the file no row.
    [[nodiscard]] const std::vector<std::string>& headings() const { return headings_; }
    [[nodiscard]] std::uint64_t headingRow() const { return headingRow_; }  ///< Row::number; 0: none in the file
    bool next(Row& row);
    [[nodiscard]] const RowReader& rows() const { return *rows_; }

  private:
    std::unique_ptr<RowReader> rows_;
    std::uint64_t skip_;
    std::vector<std::string> headings_;
    std::uint64_t headingRow_ = 0;
};

}  // namespace kolmera
