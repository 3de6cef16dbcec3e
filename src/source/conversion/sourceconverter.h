#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "source/conversion/rowconversion.h"
#include "source/conversion/sourcenotes.h"
#include "source/readers/opensource.h"

namespace kolmera {

/// Turns the rows of a price file into the bytes that a mask or a trade format reads, one record after the other.
/// `next` until it answers false, unless `fault` has something.
class SourceConverter {
  public:
    /// Settings and layout have to stay.
    SourceConverter(std::unique_ptr<RowReader> rows, const SourceSettings& settings, const TargetLayout& layout);

    [[nodiscard]] const HeadingFault& fault() const { return conversion_.fault(); }
    /// Of the file at hand.
    [[nodiscard]] const std::vector<std::string>& headings() const { return table_.headings(); }

    /// Lines are taken as they are, whatever they mean.
    [[nodiscard]] bool asItIs() const { return conversion_.asItIs(); }

    /// Appends the bytes of the next record; false at the end. Throws PlatformError.
    bool next(std::string& bytes);
    [[nodiscard]] std::uint64_t row() const { return row_.number; }  ///< of the last record
    [[nodiscard]] std::uint64_t records() const { return records_; }
    [[nodiscard]] std::uint64_t emptyRows() const { return emptyRows_; }
    [[nodiscard]] double progress() const { return table_.rows().progress(); }
    /// Complete when `next` has answered false.
    [[nodiscard]] const SourceNotes& notes() const { return notes_; }

  private:
    using Kind = SourceNote::Kind;

    void write(std::string& bytes);
    void writeFixed(std::string& bytes);
    void writeColumn(std::size_t column, std::string& bytes);
    /// The value in the target's characters, in `encoded_`.
    void encode(std::size_t column);
    void noteMisfits();
    void noteReader();
    [[nodiscard]] SourceNote note(std::size_t column, std::string text) const;

    SourceTable table_;
    const TargetLayout& layout_;
    RowConversion conversion_;
    Row row_;
    std::vector<SourceValue> values_;
    std::string encoded_;
    std::uint64_t records_ = 0, emptyRows_ = 0;
    SourceNotes notes_;
};

}  // namespace kolmera
