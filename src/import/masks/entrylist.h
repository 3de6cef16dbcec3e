#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "import/masks/loadedmask.h"

namespace kolmera {

/// The texts that a record is cut into, numbered from 1. It is never cleared: an entry that a record does not fill
/// keeps the text of an earlier record, the key included. Only entries that the mask reads are kept.
class EntryList {
  public:
    explicit EntryList(const LoadedMask& mask);

    /// Takes over an entry's bytes in the mask's character set. Numbers outside the list are ignored.
    void set(int number, std::string_view bytes);
    /// The trimmed entry in UTF-8, valid until it is set again; empty for numbers outside the list.
    [[nodiscard]] std::string_view text(int number) const;
    [[nodiscard]] std::string_view text(const Source& source) const { return text(source.entry); }

    /// The last entry that the mask reads.
    [[nodiscard]] int lastUsed() const;
    [[nodiscard]] int size() const { return static_cast<int>(entries_.size()); }

  private:
    struct Entry {
        bool used = false;
        std::string text;
    };
    [[nodiscard]] bool holds(int number) const { return number >= 1 && number <= size(); }

    std::vector<Entry> entries_;
    CodePage codePage_;
};

}  // namespace kolmera
