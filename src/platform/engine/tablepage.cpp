#include "platform/engine/tablepage.h"

#include <algorithm>
#include <bit>

namespace kolmera {

namespace {

constexpr std::uint8_t kInnerPage = 0x05;
constexpr std::uint8_t kLeafPage = 0x0D;
constexpr std::size_t kFileHeader = 100;  // bytes before the header of page 1

/// The header of a page of a tree, and where its cells begin.
struct PageHeader {
    std::uint8_t kind;
    std::size_t cells;
    std::size_t at;        ///< of the header itself
    std::size_t pointers;  ///< of the first of the two-byte places of the cells
};

PageHeader headerOf(std::string_view bytes, std::uint32_t page) {
    const std::size_t at = page == 1 ? kFileHeader : 0;
    PageHeader header{static_cast<std::uint8_t>(bigEndian(bytes, at, 1)),
                      static_cast<std::size_t>(bigEndian(bytes, at + 3, 2)), at, 0};
    header.pointers = at + (header.kind == kInnerPage ? 12 : 8);
    return header;
}

bool cellsFit(const PageHeader& header, const PageFile& file) {
    return header.pointers + 2 * header.cells <= file.usableSize();
}

/// A number of one to nine bytes, seven bits a byte; `at` moves behind it.
std::optional<std::uint64_t> takeVarint(std::string_view bytes, std::size_t& at) {
    std::uint64_t number = 0;
    for (int i = 0; i < 9; ++i) {
        if (at >= bytes.size()) return std::nullopt;
        const auto byte = static_cast<std::uint8_t>(bytes[at++]);
        if (i == 8) return number << 8 | byte;
        number = number << 7 | (byte & 0x7F);
        if ((byte & 0x80) == 0) return number;
    }
    return std::nullopt;
}

/// How many bytes of a row of a table stand in the leaf page; the rest is on overflow pages.
std::size_t localSize(std::size_t size, std::size_t usable) {
    const std::size_t most = usable - 35;
    if (size <= most) return size;
    const std::size_t least = (usable - 12) * 32 / 255 - 23;
    const std::size_t local = least + (size - least) % (usable - 4);
    return local <= most ? local : least;
}

/// Appends the rest of a row from its chain of overflow pages; false when the chain is broken.
bool appendOverflow(const PageFile& file, std::uint32_t page, std::size_t missing, std::string& record) {
    while (missing > 0) {
        const std::string bytes = file.read(page);
        if (bytes.empty()) return false;
        const std::size_t part = std::min(missing, file.usableSize() - 4);
        record.append(bytes, 4, part);
        missing -= part;
        page = static_cast<std::uint32_t>(bigEndian(bytes, 0, 4));
    }
    return page == 0;
}

std::optional<LeafPage::Row> readRow(const PageFile& file, std::string_view bytes, std::size_t at) {
    const auto size = takeVarint(bytes, at);
    const auto id = size ? takeVarint(bytes, at) : std::nullopt;
    if (!id || *size > std::uint64_t{file.count()} * file.pageSize()) return std::nullopt;
    const std::size_t local = localSize(static_cast<std::size_t>(*size), file.usableSize());
    const std::size_t missing = static_cast<std::size_t>(*size) - local;
    if (at + local + (missing > 0 ? 4 : 0) > bytes.size()) return std::nullopt;
    LeafPage::Row row{static_cast<std::int64_t>(*id), std::string(bytes.substr(at, local))};
    const auto overflow = static_cast<std::uint32_t>(bigEndian(bytes, at + local, 4));
    if (missing > 0 && !appendOverflow(file, overflow, missing, row.record)) return std::nullopt;
    return row;
}

/// Bytes of a value by its serial type; nothing for the types that records must not have, and for blobs.
std::optional<std::size_t> sizeOfType(std::uint64_t type) {
    constexpr std::size_t kSizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
    if (type < std::size(kSizes)) return kSizes[type];
    if (type < 13 || type % 2 == 0) return std::nullopt;
    return static_cast<std::size_t>((type - 13) / 2);
}

std::int64_t signedNumber(std::string_view bytes) {
    if (bytes.empty()) return 0;
    const std::uint64_t number = bigEndian(bytes, 0, bytes.size());
    const unsigned unused = 64 - 8 * static_cast<unsigned>(bytes.size());
    return static_cast<std::int64_t>(number << unused) >> unused;
}

StoredValue valueOf(std::uint64_t type, std::string_view bytes) {
    if (type == 0) return std::monostate();
    if (type == 7) return std::bit_cast<double>(bigEndian(bytes, 0, 8));
    if (type == 8 || type == 9) return static_cast<std::int64_t>(type - 8);
    if (type < 7) return signedNumber(bytes);
    return bytes;
}

}  // namespace

std::optional<std::vector<StoredValue>> parseRecord(std::string_view record) {
    std::size_t at = 0;
    const auto headerSize = takeVarint(record, at);
    if (!headerSize || *headerSize < at || *headerSize > record.size()) return std::nullopt;
    const std::string_view header = record.substr(0, static_cast<std::size_t>(*headerSize));
    std::size_t valueAt = header.size();
    std::vector<StoredValue> values;
    while (at < header.size()) {
        const auto type = takeVarint(header, at);
        const auto size = type ? sizeOfType(*type) : std::nullopt;
        if (!size || *size > record.size() - valueAt) return std::nullopt;
        values.push_back(valueOf(*type, record.substr(valueAt, *size)));
        valueAt += *size;
    }
    if (valueAt != record.size()) return std::nullopt;
    return values;
}

std::optional<LeafPage> readLeafPage(const PageFile& file, std::uint32_t page) {
    const std::string bytes = file.read(page);
    const PageHeader header = headerOf(bytes, page);
    if (header.kind != kLeafPage || !cellsFit(header, file)) return std::nullopt;
    const std::string_view content = std::string_view(bytes).substr(0, file.usableSize());
    LeafPage leaf;
    for (std::size_t i = 0; i < header.cells; ++i) {
        const auto at = static_cast<std::size_t>(bigEndian(bytes, header.pointers + 2 * i, 2));
        auto row = at >= header.pointers ? readRow(file, content, at) : std::nullopt;
        if (row && parseRecord(row->record)) {
            leaf.rows.push_back(std::move(*row));
        } else {
            ++leaf.damaged;
        }
    }
    return leaf;
}

std::optional<std::vector<std::uint32_t>> readInnerPage(const PageFile& file, std::uint32_t page) {
    const std::string bytes = file.read(page);
    const PageHeader header = headerOf(bytes, page);
    if (header.kind != kInnerPage || !cellsFit(header, file)) return std::nullopt;
    std::vector<std::uint32_t> below;
    for (std::size_t i = 0; i < header.cells; ++i) {
        const auto at = static_cast<std::size_t>(bigEndian(bytes, header.pointers + 2 * i, 2));
        below.push_back(static_cast<std::uint32_t>(bigEndian(bytes, at, 4)));
    }
    below.push_back(static_cast<std::uint32_t>(bigEndian(bytes, header.at + 8, 4)));
    return below;
}

}  // namespace kolmera
