#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/descriptor.h"

namespace kolmera {

/// The pages of a SQLite file as raw bytes, for files that SQLite itself refuses to read. Pages count from 1.
class PageFile {
  public:
    /// Throws PlatformError when the file cannot be read. A damaged file header is made up for by the usual values.
    explicit PageFile(const std::filesystem::path& file);

    [[nodiscard]] std::uint32_t count() const { return count_; }
    [[nodiscard]] std::size_t pageSize() const { return pageSize_; }
    /// Bytes of a page that hold content.
    [[nodiscard]] std::size_t usableSize() const { return usableSize_; }
    /// First page of the list of free pages, 0 when there is none or the header is damaged.
    [[nodiscard]] std::uint32_t firstFreePage() const { return firstFreePage_; }

    [[nodiscard]] bool has(std::uint32_t page) const { return page >= 1 && page <= count_; }
    /// The bytes of a page; empty for a page that is not in the file.
    [[nodiscard]] std::string read(std::uint32_t page) const;

  private:
    void readHeader(std::string_view header);

    Descriptor descriptor_;
    std::uint32_t count_ = 0;
    std::size_t pageSize_ = 4096;
    std::size_t usableSize_ = 4096;
    std::uint32_t firstFreePage_ = 0;
};

/// A big-endian number of 1 to 8 bytes at a place; bytes beyond the end count as 0.
std::uint64_t bigEndian(std::string_view bytes, std::size_t at, std::size_t length);

}  // namespace kolmera
