#include "platform/spreadsheet/compoundfile.h"

#include <fcntl.h>

#include <algorithm>
#include <utility>

#include "platform/error.h"

namespace kolmera {

namespace {

[[noreturn]] void refuse() { throw PlatformError(errors::kUnreadableSpreadsheet, "The workbook is damaged."); }

/// The fields of the header (offset and width in bytes).
struct Field {
    std::size_t offset, width;
};
constexpr Field kSectorShift = {0x1E, 2};
constexpr Field kSmallSectorShift = {0x20, 2};
constexpr Field kFirstEntrySector = {0x30, 4};
constexpr Field kSmallStreams = {0x38, 4};
constexpr Field kFirstSmallTableSector = {0x3C, 4};
constexpr Field kSmallTableSectors = {0x40, 4};
constexpr Field kFirstTableListSector = {0x44, 4};
constexpr std::size_t kTableList = 0x4C;  // the sectors of the sector table; more stand in sectors of their own
constexpr std::size_t kHeaderSize = 512;

// The fields of an entry of the directory.
constexpr std::size_t kEntrySize = 128;
constexpr Field kNameBytes = {0x40, 2};
constexpr Field kKind = {0x42, 1};
constexpr Field kFirstSector = {0x74, 4};
constexpr Field kStreamSize = {0x78, 4};
constexpr std::uint64_t kStreamKind = 2;

constexpr std::uint32_t kLastSector = 0xFFFFFFFA;  // from here on numbers mean "end" or "free"

std::uint64_t valueOf(std::string_view bytes, Field field) { return littleEndian(bytes, field.offset, field.width); }
std::uint32_t sectorOf(std::string_view bytes, Field field) {
    return static_cast<std::uint32_t>(valueOf(bytes, field));
}

void appendNumbers(std::string_view bytes, std::vector<std::uint32_t>& numbers) {
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        numbers.push_back(static_cast<std::uint32_t>(littleEndian(bytes, at, 4)));
    }
}

/// The sectors from `first` to the end of its chain.
std::vector<std::uint32_t> chainFrom(std::uint32_t first, const std::vector<std::uint32_t>& next) {
    std::vector<std::uint32_t> chain;
    for (std::uint32_t at = first; at < kLastSector; at = next[at]) {
        if (at >= next.size() || chain.size() == next.size()) refuse();  // a chain that is longer runs in a circle
        chain.push_back(at);
    }
    return chain;
}

std::string asciiName(std::string_view entry) {
    std::string name;
    const std::size_t bytes = std::min<std::size_t>(valueOf(entry, kNameBytes), 64);
    for (std::size_t i = 0; i + 2 < bytes; i += 2) name += entry[i + 1] == '\0' ? entry[i] : '?';
    return name;
}

}  // namespace

std::uint64_t littleEndian(std::string_view bytes, std::size_t offset, std::size_t width) {
    if (offset > bytes.size() || bytes.size() - offset < width) refuse();
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < width; ++i) {
        number |= std::uint64_t{static_cast<std::uint8_t>(bytes[offset + i])} << (8 * i);
    }
    return number;
}

CompoundFile::CompoundFile(const std::filesystem::path& file) : CompoundFile(Descriptor(file, O_RDONLY)) {}

CompoundFile::CompoundFile(Descriptor file) : file_(std::move(file)) {
    std::string header(kHeaderSize, '\0');
    if (file_.readAt(0, header.data(), header.size()) != header.size()) refuse();
    const std::uint64_t shift = valueOf(header, kSectorShift);
    const std::uint64_t smallShift = valueOf(header, kSmallSectorShift);
    if ((shift != 9 && shift != 12) || smallShift != 6) refuse();
    sectorSize_ = std::uint64_t{1} << shift;
    smallSectorSize_ = std::uint64_t{1} << smallShift;
    smallStreams_ = valueOf(header, kSmallStreams);
    readSectorTable(header);
    if (valueOf(header, kSmallTableSectors) > 0) {
        for (const std::uint32_t at : chainFrom(sectorOf(header, kFirstSmallTableSector), next_)) {
            appendNumbers(sector(at), nextSmall_);
        }
    }
    readEntries(sectorOf(header, kFirstEntrySector));
}

std::uint64_t CompoundFile::offsetOf(std::uint32_t sector) const { return (std::uint64_t{sector} + 1) * sectorSize_; }

std::string CompoundFile::sector(std::uint32_t number) const {
    std::string bytes(sectorSize_, '\0');
    bytes.resize(file_.readAt(offsetOf(number), bytes.data(), bytes.size()));
    if (bytes.empty()) refuse();
    return bytes;
}

void CompoundFile::readSectorTable(std::string_view header) {
    const std::size_t sectors = file_.size() / sectorSize_ + 1;
    Chain tableSectors;
    appendNumbers(header.substr(kTableList), tableSectors);
    std::uint32_t more = sectorOf(header, kFirstTableListSector);
    for (std::size_t count = 0; more < kLastSector; ++count) {
        if (count > sectors) refuse();
        const std::string list = sector(more);
        appendNumbers(list, tableSectors);
        more = tableSectors.back();
        tableSectors.pop_back();
    }
    for (const std::uint32_t at : tableSectors) {
        if (at >= kLastSector || next_.size() > sectors) continue;
        appendNumbers(sector(at), next_);
    }
}

void CompoundFile::readEntries(std::uint32_t first) {
    for (const std::uint32_t at : chainFrom(first, next_)) {
        const std::string bytes = sector(at);
        for (std::size_t offset = 0; offset + kEntrySize <= bytes.size(); offset += kEntrySize) {
            const std::string_view entry = std::string_view(bytes).substr(offset, kEntrySize);
            entries_.push_back({asciiName(entry), valueOf(entry, kKind) == kStreamKind, sectorOf(entry, kFirstSector),
                                valueOf(entry, kStreamSize)});
        }
    }
    if (entries_.empty()) refuse();
}

CompoundFile::Stream CompoundFile::streamOfSectors(std::uint32_t first, std::uint64_t size) const {
    Stream stream;
    stream.file_ = &file_;
    stream.pieceSize_ = sectorSize_;
    for (const std::uint32_t at : chainFrom(first, next_)) stream.pieces_.push_back(offsetOf(at));
    stream.size_ = std::min(size, stream.pieces_.size() * sectorSize_);
    return stream;
}

CompoundFile::Stream CompoundFile::streamOfSmallSectors(std::uint32_t first, std::uint64_t size) const {
    const Stream all = streamOfSectors(entries_.front().first, entries_.front().size);
    Stream stream;
    stream.file_ = &file_;
    stream.pieceSize_ = smallSectorSize_;
    for (const std::uint32_t at : chainFrom(first, nextSmall_)) {
        const std::uint64_t offset = at * smallSectorSize_;
        if (offset >= all.size()) refuse();
        stream.pieces_.push_back(all.pieces_[offset / sectorSize_] + offset % sectorSize_);
    }
    stream.size_ = std::min(size, stream.pieces_.size() * smallSectorSize_);
    return stream;
}

std::optional<CompoundFile::Stream> CompoundFile::stream(std::string_view name) const {
    const auto entry = std::ranges::find_if(entries_, [name](const Entry& e) { return e.isStream && e.name == name; });
    if (entry == entries_.end()) return std::nullopt;
    return entry->size < smallStreams_ ? streamOfSmallSectors(entry->first, entry->size)
                                       : streamOfSectors(entry->first, entry->size);
}

void CompoundFile::Stream::readAt(std::uint64_t offset, std::size_t count, std::string& bytes) const {
    bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - std::min(offset, size_))));
    for (std::size_t done = 0; done < bytes.size();) {
        const std::uint64_t within = (offset + done) % pieceSize_;
        const auto piece = static_cast<std::size_t>(std::min(pieceSize_ - within, std::uint64_t{bytes.size() - done}));
        const std::uint64_t from = pieces_[static_cast<std::size_t>((offset + done) / pieceSize_)] + within;
        if (file_->readAt(from, bytes.data() + done, piece) != piece) refuse();
        done += piece;
    }
}

}  // namespace kolmera
