#include "platform/compression.h"

#define ZLIB_CONST  // zlib does not change what it reads
#include <zlib.h>

#include <array>

#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::size_t kPiece = 64 * 1024;

void give(z_stream& stream, std::string_view bytes) {
    stream.next_in = reinterpret_cast<const Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
}

}  // namespace

struct Compressor::Stream {
    z_stream zlib{};
    std::array<char, kPiece> out{};
};

Compressor::Compressor() : stream_(std::make_unique<Stream>()) {
    if (deflateInit(&stream_->zlib, Z_BEST_SPEED) != Z_OK)
        throw PlatformError(errors::kInternal, "no memory to compress");
}

Compressor::~Compressor() { deflateEnd(&stream_->zlib); }

void Compressor::add(std::string_view bytes, const TakeBytes& take) {
    give(stream_->zlib, bytes);
    run(Z_NO_FLUSH, take);
}

void Compressor::finish(const TakeBytes& take) {
    give(stream_->zlib, {});
    run(Z_FINISH, take);
}

void Compressor::run(int flush, const TakeBytes& take) {
    z_stream& zlib = stream_->zlib;
    do {
        zlib.next_out = reinterpret_cast<Bytef*>(stream_->out.data());
        zlib.avail_out = kPiece;
        deflate(&zlib, flush);
        const std::size_t made = kPiece - zlib.avail_out;
        if (made > 0) take({stream_->out.data(), made});
    } while (zlib.avail_out == 0);
}

struct Decompressor::Stream {
    z_stream zlib{};
    std::array<char, kPiece> out{};
};

Decompressor::Decompressor() : stream_(std::make_unique<Stream>()) {
    if (inflateInit(&stream_->zlib) != Z_OK) throw PlatformError(errors::kInternal, "no memory to decompress");
}

Decompressor::~Decompressor() { inflateEnd(&stream_->zlib); }

void Decompressor::add(std::string_view bytes, const TakeBytes& take) {
    z_stream& zlib = stream_->zlib;
    give(zlib, bytes);
    do {
        zlib.next_out = reinterpret_cast<Bytef*>(stream_->out.data());
        zlib.avail_out = kPiece;
        const int code = inflate(&zlib, Z_NO_FLUSH);
        if (code != Z_OK && code != Z_STREAM_END && code != Z_BUF_ERROR)
            throw PlatformError(errors::kDamaged, "the compressed bytes are damaged");
        const std::size_t made = kPiece - zlib.avail_out;
        if (made > 0) take({stream_->out.data(), made});
    } while (zlib.avail_out == 0);
}

}  // namespace kolmera
