#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/spreadsheet/compoundfile.h"

namespace kolmera {

/// The records of an .xls workbook, one after the other. Numbers and texts are taken from the current record, and a
/// text goes on in the records that continue it. Reading beyond them is a kUnreadableSpreadsheet.
class BiffRecords {
  public:
    explicit BiffRecords(CompoundFile::Stream stream) : stream_(std::move(stream)) {}

    /// Goes to the next record; false at the end.
    bool next();
    /// Makes the record at this place of the stream the next one.
    void seek(std::uint64_t position);

    [[nodiscard]] int kind() const { return kind_; }

    std::uint8_t byte() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t word() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t doubleWord() { return static_cast<std::uint32_t>(number(4)); }
    double real();
    void skip(std::size_t bytes);
    /// Bytes left in this record.
    [[nodiscard]] std::size_t left() const { return bytes_.size() - at_; }

    /// A text: its length in UTF-16 units (two bytes), flags, characters, and what belongs to formatting.
    std::string text();
    /// A text whose length has one byte and that has no formatting: the name of a sheet.
    std::string shortText();

  private:
    std::uint64_t number(std::size_t width);
    void readRecord();
    void continued();
    void appendCharacters(std::size_t count, bool isWide, std::string& text);

    CompoundFile::Stream stream_;
    std::uint64_t nextPosition_ = 0;
    int kind_ = 0;
    std::string bytes_;
    std::size_t at_ = 0;
    std::uint64_t windowStart_ = 0;
    std::string window_;
    std::string_view peek(std::uint64_t position, std::size_t count);
};

}  // namespace kolmera
