#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/descriptor.h"
#include "platform/error.h"

namespace kolmera {

/// The user has cancelled while a price file had nothing to read.
struct ReadingCancelled : PlatformError {
    ReadingCancelled() : PlatformError(errors::kInternal, "cancelled", true) {}
};

/// A price file read from front to back, through a buffer whose size does not depend on the file. Lines end at CR or
/// at CR LF; a lone LF stays inside the line. One 0x1A at the very end of the file is dropped; elsewhere it is a
/// character like any other, and so is NUL. Throws PlatformError when the file cannot be opened (a folder, missing,
/// no right to read) or read; the description is the system's.
///
/// A pipe may be silent for long, and a device may be one line without an end: `cancelled` is asked meanwhile, and
/// ReadingCancelled is thrown when it answers true.
class PriceFile {
  public:
    explicit PriceFile(const std::filesystem::path& file, std::function<bool()> cancelled = {});
    /// An open file, which is read from where it stands.
    explicit PriceFile(Descriptor file, std::function<bool()> cancelled = {});
    PriceFile(const PriceFile&) = delete;
    PriceFile& operator=(const PriceFile&) = delete;

    /// Hands over all bytes of the file as they are read, from the first on. Before the first reading.
    void tell(std::function<void(std::string_view)> reader) { reader_ = std::move(reader); }
    [[nodiscard]] bool wholeRead() const { return lastBlock_; }  ///< to its last byte

    [[nodiscard]] bool atEnd();
    /// The next line without its end; valid until the next call (of `atEnd` too). At the end of the file an empty line.
    /// Of a line of more than 16 MB only these are given: a file without CR is one line, and may be of any size.
    std::string_view line();
    /// The next `count` bytes, fewer at the end of the file; valid until the next call.
    std::string_view bytes(std::size_t count);

    [[nodiscard]] std::uint64_t size() const { return size_; }  ///< bytes of the whole file
    [[nodiscard]] std::uint64_t position() const;               ///< bytes read so far, for progress

  private:
    void waitForBytes() const;
    void stopIfCancelled() const;
    bool fill();  ///< reads on behind end_; false at the end of the file. Moves what is not yet read to the front.

    Descriptor descriptor_;
    std::function<bool()> cancelled_;
    std::function<void(std::string_view)> reader_;
    std::uint64_t size_ = 0;
    std::uint64_t fileRead_ = 0;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool lastBlock_ = false;  ///< the end of the file has been seen
};

}  // namespace kolmera
