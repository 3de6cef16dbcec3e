#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/descriptor.h"

namespace kolmera {

/// Bytes that are read from front to back. Errors are PlatformError.
class ByteStream {
  public:
    virtual ~ByteStream() = default;
    /// Reads up to `count` bytes; 0 at the end, and only there.
    virtual std::size_t read(char* bytes, std::size_t count) = 0;
    /// From 0 to 1; 0 where the end is not known.
    [[nodiscard]] virtual double progress() const = 0;
};

/// Reads until `bytes` is full or the stream ends; the number of bytes read.
std::size_t readFully(ByteStream& stream, char* bytes, std::size_t count);

/// Throws ReadingCancelled (platform/pricefile.h) when `cancelled` is there and answers true.
void stopIfCancelled(const std::function<bool()>& cancelled);

/// A file or a pipe from where it stands. While a pipe is silent, and with every piece, `cancelled` is asked.
class FileStream final : public ByteStream {
  public:
    FileStream(Descriptor file, std::function<bool()> cancelled);
    std::size_t read(char* bytes, std::size_t count) override;
    [[nodiscard]] double progress() const override;

  private:
    Descriptor file_;
    std::function<bool()> cancelled_;
    std::size_t size_;
    std::size_t read_ = 0;
};

/// What comes out of a packed stream may be this many times as large; deflate goes up to 1032 times. Real tables stay
/// under 60 times. Below `kSmallUnpacked` bytes no ratio does harm.
inline constexpr std::uint64_t kMostUnpackedRatio = 250;
inline constexpr std::uint64_t kSmallUnpacked = std::uint64_t{64} << 20;

/// The content of a .gz file. Throws kUnreadableArchive, and kUnpacksTooLarge above `most` bytes or beyond the ratio.
class GzipStream final : public ByteStream {
  public:
    GzipStream(std::unique_ptr<ByteStream> packed, std::uint64_t most);
    GzipStream(const GzipStream&) = delete;
    GzipStream& operator=(const GzipStream&) = delete;
    ~GzipStream() override;
    std::size_t read(char* bytes, std::size_t count) override;
    [[nodiscard]] double progress() const override { return packed_->progress(); }

  private:
    bool fill();

    std::unique_ptr<ByteStream> packed_;
    std::uint64_t most_;
    std::uint64_t in_ = 0;
    std::uint64_t out_ = 0;
    struct Inflation;
    std::unique_ptr<Inflation> inflation_;
};

/// Bytes that are at hand, and then the rest of their stream (none: that was all).
class PrefixedStream final : public ByteStream {
  public:
    PrefixedStream(std::string prefix, std::unique_ptr<ByteStream> rest);
    std::size_t read(char* bytes, std::size_t count) override;
    [[nodiscard]] double progress() const override { return rest_ ? rest_->progress() : 0; }

  private:
    std::string prefix_;
    std::size_t at_ = 0;
    std::unique_ptr<ByteStream> rest_;
};

/// A file without a name in the first place for work (platform/workplaces) that can be written, gone when it is closed.
Descriptor namelessFile();
/// The rest of a stream in such a file.
Descriptor keptInNamelessFile(ByteStream& stream);

}  // namespace kolmera
