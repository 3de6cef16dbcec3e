#include "platform/engine/pages/pagefile.h"

#include <fcntl.h>

#include <bit>

namespace kolmera {

namespace {

constexpr std::string_view kMagic{"SQLite format 3\0", 16};
constexpr std::size_t kHeaderSize = 100;
constexpr std::size_t kPageSizeAt = 16;
constexpr std::size_t kReservedAt = 20;
constexpr std::size_t kFirstFreePageAt = 32;
constexpr std::size_t kSmallestUsableSize = 480;

}  // namespace

std::uint64_t bigEndian(std::string_view bytes, std::size_t at, std::size_t length) {
    std::uint64_t number = 0;
    for (std::size_t i = at; i < at + length; ++i) {
        number = number << 8 | (i < bytes.size() ? static_cast<std::uint8_t>(bytes[i]) : 0U);
    }
    return number;
}

PageFile::PageFile(const std::filesystem::path& file) : descriptor_(file, O_RDONLY | O_CLOEXEC) {
    std::string header(kHeaderSize, '\0');
    header.resize(descriptor_.readAt(0, header.data(), header.size()));
    if (header.starts_with(kMagic)) readHeader(header);
    count_ = static_cast<std::uint32_t>((descriptor_.size() + pageSize_ - 1) / pageSize_);
}

void PageFile::readHeader(std::string_view header) {
    const auto written = static_cast<std::size_t>(bigEndian(header, kPageSizeAt, 2));
    const std::size_t size = written == 1 ? 65536 : written;
    if (size < 512 || !std::has_single_bit(size)) return;
    pageSize_ = size;
    usableSize_ = size;
    const auto reserved = static_cast<std::size_t>(bigEndian(header, kReservedAt, 1));
    if (size - reserved >= kSmallestUsableSize) usableSize_ = size - reserved;
    firstFreePage_ = static_cast<std::uint32_t>(bigEndian(header, kFirstFreePageAt, 4));
}

std::string PageFile::read(std::uint32_t page) const {
    if (!has(page)) return {};
    std::string bytes(pageSize_, '\0');
    descriptor_.readAt((std::size_t{page} - 1) * pageSize_, bytes.data(), bytes.size());
    return bytes;
}

}  // namespace kolmera
