#pragma once

#include <cstdint>
#include <string_view>

#include "import/masks/entrylist.h"
#include "import/masks/loadedmask.h"
#include "platform/pricefile.h"

namespace kolmera {

/// Lines 1 to `lines` become entries 1 to `lines`; a file that ends before leaves the rest as they are. Returns the
/// number of lines.
int cutLines(PriceFile& file, int lines, EntryList& entries);

/// The text before the k-th tab becomes entry k; the text behind the last tab becomes the last entry, with fewer tabs
/// than entries and with more. Returns the number of texts.
int cutTabs(std::string_view line, EntryList& entries);

/// Piece i, given by the i-th relation's first byte (from 1) and length, becomes entry i. A piece behind the record's
/// end is empty. Returns the number of bytes that the pieces need.
std::size_t cutFixed(std::string_view record, const LoadedMask& mask, EntryList& entries);

/// Reads a price file record by record through a mask. `next` until it answers false; after each, `entries` holds the
/// record.
class MaskRecordReader {
  public:
    MaskRecordReader(PriceFile& file, const LoadedMask& mask)
        : file_(file), mask_(mask), entries_(mask), lastUsed_(entries_.lastUsed()) {}

    /// Reads and counts a record; false at the end of the file.
    [[nodiscard]] bool next();
    [[nodiscard]] const EntryList& entries() const { return entries_; }
    [[nodiscard]] std::int64_t count() const { return count_; }
    /// Where the record stands in the file, and its bytes.
    [[nodiscard]] std::int64_t offset() const { return offset_; }
    [[nodiscard]] std::int64_t length() const { return static_cast<std::int64_t>(file_.position()) - offset_; }
    /// The record has not the lines, columns or bytes that the mask reads: some entry is not what stands in its place.
    [[nodiscard]] bool uneven() const { return uneven_; }

  private:
    void read();
    [[nodiscard]] bool readTabs();
    [[nodiscard]] bool readFixed();

    PriceFile& file_;
    const LoadedMask& mask_;
    EntryList entries_;
    int lastUsed_;
    std::int64_t count_ = 0;
    std::int64_t offset_ = 0;
    bool uneven_ = false;
};

}  // namespace kolmera
