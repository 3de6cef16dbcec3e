#include "platform/bytestream.h"

#include <poll.h>
#include <unistd.h>
#define ZLIB_CONST  // zlib does not change what it reads
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <new>
#include <utility>

#include "platform/error.h"
#include "platform/pricefile.h"
#include "platform/workplaces.h"

namespace kolmera {

namespace {
constexpr std::size_t kPiece = std::size_t{64} << 10;
}

std::size_t readFully(ByteStream& stream, char* bytes, std::size_t count) {
    std::size_t total = 0;
    while (total < count) {
        const std::size_t got = stream.read(bytes + total, count - total);
        if (got == 0) break;
        total += got;
    }
    return total;
}

void stopIfCancelled(const std::function<bool()>& cancelled) {
    if (cancelled && cancelled()) throw ReadingCancelled();
}

FileStream::FileStream(Descriptor file, std::function<bool()> cancelled)
    : file_(std::move(file)), cancelled_(std::move(cancelled)), size_(file_.size()) {}

std::size_t FileStream::read(char* bytes, std::size_t count) {
    constexpr int kPause = 20;  // milliseconds
    pollfd file{.fd = file_.get(), .events = POLLIN, .revents = 0};
    do {
        stopIfCancelled(cancelled_);
    } while (poll(&file, 1, kPause) <= 0);
    const std::size_t got = file_.read(bytes, count);
    read_ += got;
    return got;
}

double FileStream::progress() const {
    return size_ == 0 ? 0 : std::min(1.0, static_cast<double>(read_) / static_cast<double>(size_));
}

struct GzipStream::Inflation {
    z_stream zlib{};
    std::array<char, kPiece> in{};
    bool behindMember = false;
};

GzipStream::GzipStream(std::unique_ptr<ByteStream> packed, std::uint64_t most)
    : packed_(std::move(packed)), most_(most), inflation_(std::make_unique<Inflation>()) {
    constexpr int kGzipOnly = 16;
    if (inflateInit2(&inflation_->zlib, MAX_WBITS + kGzipOnly) != Z_OK) throw std::bad_alloc();
}

GzipStream::~GzipStream() { inflateEnd(&inflation_->zlib); }

bool GzipStream::fill() {
    const std::size_t got = packed_->read(inflation_->in.data(), inflation_->in.size());
    inflation_->zlib.next_in = reinterpret_cast<const Bytef*>(inflation_->in.data());
    inflation_->zlib.avail_in = static_cast<uInt>(got);
    in_ += got;
    return got > 0;
}

std::size_t GzipStream::read(char* bytes, std::size_t count) {
    const auto refuse = [](int error) { throw PlatformError(error, "The packed file is damaged or a trap."); };
    z_stream& zlib = inflation_->zlib;
    zlib.next_out = reinterpret_cast<Bytef*>(bytes);
    zlib.avail_out = static_cast<uInt>(std::min<std::size_t>(count, kPiece));
    const uInt asked = zlib.avail_out;
    while (zlib.avail_out == asked) {
        if (zlib.avail_in == 0 && !fill()) {
            if (!inflation_->behindMember) refuse(errors::kUnreadableArchive);
            return 0;
        }
        if (inflation_->behindMember) {
            // Another packed file may follow; zeros fill up the blocks of a tape.
            while (zlib.avail_in > 0 && *zlib.next_in == 0) {
                ++zlib.next_in;
                --zlib.avail_in;
            }
            if (zlib.avail_in == 0) continue;
            inflateReset(&zlib);
            inflation_->behindMember = false;
        }
        const int status = inflate(&zlib, Z_NO_FLUSH);
        if (status == Z_STREAM_END) {
            inflation_->behindMember = true;
        } else if (status != Z_OK && status != Z_BUF_ERROR) {
            refuse(errors::kUnreadableArchive);
        }
    }
    const std::size_t got = asked - zlib.avail_out;
    out_ += got;
    if (out_ > most_ || (out_ > kSmallUnpacked && out_ / kMostUnpackedRatio > in_)) refuse(errors::kUnpacksTooLarge);
    return got;
}

PrefixedStream::PrefixedStream(std::string prefix, std::unique_ptr<ByteStream> rest)
    : prefix_(std::move(prefix)), rest_(std::move(rest)) {}

std::size_t PrefixedStream::read(char* bytes, std::size_t count) {
    if (at_ == prefix_.size()) return rest_ ? rest_->read(bytes, count) : 0;
    const std::size_t got = prefix_.copy(bytes, count, at_);
    at_ += got;
    return got;
}

Descriptor namelessFile() { return workFile(workPlaces(std::filesystem::temp_directory_path()), 0); }

Descriptor keptInNamelessFile(ByteStream& stream) {
    Descriptor file = namelessFile();
    std::string piece(kPiece, '\0');
    for (;;) {
        const std::size_t got = stream.read(piece.data(), piece.size());
        if (got == 0) return file;
        file.write(std::string_view(piece).substr(0, got));
    }
}

}  // namespace kolmera
