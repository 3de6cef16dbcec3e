#pragma once

#include <functional>
#include <memory>
#include <string_view>

namespace kolmera {

using TakeBytes = std::function<void(std::string_view)>;

/// Compresses bytes that come in pieces (zlib's format). Memory does not grow with them.
class Compressor {
  public:
    Compressor();
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;
    ~Compressor();

    /// Hands over what of the compressed bytes is ready.
    void add(std::string_view bytes, const TakeBytes& take);
    void finish(const TakeBytes& take);

  private:
    void run(int flush, const TakeBytes& take);

    struct Stream;
    std::unique_ptr<Stream> stream_;
};

/// The other way round. Throws kDamaged.
class Decompressor {
  public:
    Decompressor();
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;
    ~Decompressor();

    void add(std::string_view bytes, const TakeBytes& take);

  private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
};

}  // namespace kolmera
