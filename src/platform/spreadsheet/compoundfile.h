#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/descriptor.h"

namespace kolmera {

/// A compound file: a small file system of sectors, in which old workbooks and protected new ones are kept. Whatever
/// stands in the file, reading stays within it; damage is a kUnreadableSpreadsheet.
class CompoundFile {
  public:
    /// What a stream of the file holds. Lives as long as the file.
    class Stream {
      public:
        [[nodiscard]] std::uint64_t size() const { return size_; }
        /// Reads up to `count` bytes into `bytes`; fewer at the end of the stream.
        void readAt(std::uint64_t offset, std::size_t count, std::string& bytes) const;

      private:
        friend class CompoundFile;
        const Descriptor* file_ = nullptr;
        std::vector<std::uint64_t> pieces_;  ///< where each stands in the file
        std::uint64_t pieceSize_ = 1;
        std::uint64_t size_ = 0;
    };

    explicit CompoundFile(const std::filesystem::path& file);
    explicit CompoundFile(Descriptor file);
    CompoundFile(const CompoundFile&) = delete;  // its streams point to it
    CompoundFile& operator=(const CompoundFile&) = delete;

    /// The stream of a name (ASCII, exact), in whatever folder; nothing when there is none.
    [[nodiscard]] std::optional<Stream> stream(std::string_view name) const;

  private:
    using Chain = std::vector<std::uint32_t>;
    struct Entry {
        std::string name;
        bool isStream;
        std::uint32_t first;
        std::uint64_t size;
    };

    [[nodiscard]] std::string sector(std::uint32_t number) const;
    [[nodiscard]] std::uint64_t offsetOf(std::uint32_t sector) const;
    [[nodiscard]] Stream streamOfSectors(std::uint32_t first, std::uint64_t size) const;
    [[nodiscard]] Stream streamOfSmallSectors(std::uint32_t first, std::uint64_t size) const;
    void readSectorTable(std::string_view header);
    void readEntries(std::uint32_t first);

    Descriptor file_;
    std::uint64_t sectorSize_ = 512;
    std::uint64_t smallSectorSize_ = 64;
    std::uint64_t smallStreams_ = 4096;  ///< streams below this size are in the small sectors
    Chain next_;                         ///< of each sector
    Chain nextSmall_;
    std::vector<Entry> entries_;  ///< the first is the root, whose stream holds the small sectors
};

/// A number of little-endian bytes in a record or a header; throws kUnreadableSpreadsheet beyond the end.
std::uint64_t littleEndian(std::string_view bytes, std::size_t offset, std::size_t width);

}  // namespace kolmera
