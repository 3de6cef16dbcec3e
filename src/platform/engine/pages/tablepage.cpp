#include "platform/engine/pages/tablepage.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "platform/engine/pages/utf8text.h"

namespace kolmera {

namespace {

constexpr std::uint8_t kInnerPage = 0x05;
constexpr std::uint8_t kLeafPage = 0x0D;
constexpr std::int64_t kGreatestId = std::numeric_limits<std::int64_t>::max();
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

std::size_t pointersThatFit(const PageHeader& header, const PageFile& file) {
    return std::min(header.cells, (file.usableSize() - header.pointers) / 2);
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

/// Appends the rest of a row from its chain of overflow pages, as far as the chain leads.
void appendOverflow(const PageFile& file, std::uint32_t page, LeafPage::Row& row) {
    while (row.cut()) {
        const std::string bytes = file.read(page);
        if (bytes.empty()) return;
        row.record.append(bytes, 4, std::min(row.size - row.record.size(), file.usableSize() - 4));
        page = static_cast<std::uint32_t>(bigEndian(bytes, 0, 4));
    }
}

/// A row and the bytes of the page that it takes.
struct Cell {
    LeafPage::Row row;
    std::size_t begin, end;
};

std::optional<Cell> readCell(const PageFile& file, std::string_view bytes, const std::size_t begin) {
    constexpr std::size_t kSmallestCell = 4;
    std::size_t at = begin;
    const auto size = takeVarint(bytes, at);
    const auto id = size ? takeVarint(bytes, at) : std::nullopt;
    if (!id || *size > std::uint64_t{file.count()} * file.pageSize()) return std::nullopt;
    const auto whole = static_cast<std::size_t>(*size);
    const std::size_t local = localSize(whole, file.usableSize());
    const std::size_t end = std::max(at + local + (local < whole ? 4 : 0), begin + kSmallestCell);
    if (end > bytes.size()) return std::nullopt;
    Cell cell{{static_cast<std::int64_t>(*id), std::string(bytes.substr(at, local)), local, whole}, begin, end};
    appendOverflow(file, static_cast<std::uint32_t>(bigEndian(bytes, at + local, 4)), cell.row);
    return cell;
}

/// Reads the cells of one page.
class LeafReader {
  public:
    LeafReader(const PageFile& file, std::uint32_t page)
        : file_(file), bytes_(file.read(page)), header_(headerOf(bytes_, page)) {
        bytes_.resize(file.usableSize());
        readCells();
    }

    [[nodiscard]] LeafPage page() && {
        LeafPage leaf{{}, damaged_, header_.kind == kLeafPage, accounted()};
        for (Cell& cell : cells_) leaf.rows.push_back(std::move(cell.row));
        return leaf;
    }

    [[nodiscard]] std::vector<LeafPage::Row> carve(const std::function<bool(const LeafPage::Row&)>& accept) {
        std::vector<LeafPage::Row> rows;
        std::ranges::sort(cells_, {}, &Cell::begin);
        std::size_t at = carvingBegin();
        for (const Cell& cell : cells_) {
            carveBetween(at, cell.begin, accept, rows);
            at = std::max(at, cell.end);
        }
        carveBetween(at, bytes_.size(), accept, rows);
        return rows;
    }

  private:
    void readCells() {
        const std::size_t count = pointersThatFit(header_, file_);
        damaged_ = header_.cells - count;
        std::size_t lowest = bytes_.size();  // where the cells begin, the places of the cells end
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t pointer = header_.pointers + 2 * i;
            const auto at = static_cast<std::size_t>(bigEndian(bytes_, pointer, 2));
            auto cell = pointer + 2 <= lowest && at >= header_.pointers ? readCell(file_, bytes_, at) : std::nullopt;
            if (cell && parseRow(cell->row)) {
                lowest = std::min(lowest, at);
                cells_.push_back(std::move(*cell));
            } else {
                ++damaged_;
            }
        }
    }

    [[nodiscard]] std::size_t contentBegin() const {
        const auto written = static_cast<std::size_t>(bigEndian(bytes_, header_.at + 5, 2));
        return written == 0 ? 65536 : written;
    }

    [[nodiscard]] bool accounted() const {
        std::size_t sum = static_cast<std::size_t>(bigEndian(bytes_, header_.at + 7, 1));  // too small to be listed
        auto block = static_cast<std::size_t>(bigEndian(bytes_, header_.at + 1, 2));
        while (block != 0 && block + 4 <= bytes_.size() && sum <= bytes_.size()) {
            sum += static_cast<std::size_t>(bigEndian(bytes_, block + 2, 2));
            const auto next = static_cast<std::size_t>(bigEndian(bytes_, block, 2));
            if (next != 0 && next <= block) return false;
            block = next;
        }
        for (const Cell& cell : cells_) sum += cell.end - cell.begin;
        return contentBegin() + sum == bytes_.size() && header_.pointers + 2 * header_.cells <= contentBegin();
    }

    /// What lies before the cells is old; but the place where they begin may be what is damaged.
    [[nodiscard]] std::size_t carvingBegin() const {
        const bool before = std::ranges::any_of(cells_, [&](const Cell& cell) { return cell.begin < contentBegin(); });
        return before || contentBegin() >= bytes_.size() ? header_.pointers
                                                         : std::max(contentBegin(), header_.pointers);
    }

    void carveBetween(std::size_t at, std::size_t end, const std::function<bool(const LeafPage::Row&)>& accept,
                      std::vector<LeafPage::Row>& rows) const {
        const std::string_view bytes = std::string_view(bytes_).substr(0, std::max(at, end));
        while (at + 4 <= end) {
            auto cell = readCell(file_, bytes, at);
            const bool taken = cell && parseRow(cell->row) && accept(cell->row);
            at = taken ? cell->end : at + 1;
            if (taken) rows.push_back(std::move(cell->row));
        }
    }

    const PageFile& file_;
    std::string bytes_;
    PageHeader header_;
    std::vector<Cell> cells_;
    std::size_t damaged_ = 0;
};

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

constexpr std::uint64_t kFirstTextType = 13;

/// A value that reaches into overflow pages, which may be lost, or hold something else now.
StoredValue valueWithOverflow(std::uint64_t type, std::string_view bytes, std::size_t size, bool& shortened) {
    if (type < kFirstTextType) {
        shortened = shortened || bytes.size() < size;
        return bytes.size() < size ? StoredValue() : valueOf(type, bytes);
    }
    const std::size_t readable = readableLength(bytes);
    shortened = shortened || readable < size;
    return readable == 0 && size > 0 ? StoredValue() : StoredValue(bytes.substr(0, readable));
}

}  // namespace

std::optional<RowValues> parseRow(const LeafPage::Row& row) {
    const std::string_view record = row.record;
    std::size_t at = 0;
    const auto headerSize = takeVarint(record, at);
    if (!headerSize || *headerSize < at || *headerSize > record.size()) return std::nullopt;
    const std::string_view header = record.substr(0, static_cast<std::size_t>(*headerSize));
    std::size_t valueAt = header.size();
    RowValues result;
    while (at < header.size()) {
        const auto type = takeVarint(header, at);
        const auto size = type ? sizeOfType(*type) : std::nullopt;
        if (!size || *size > row.size - valueAt) return std::nullopt;
        const std::string_view bytes = record.substr(std::min(valueAt, record.size()), *size);
        valueAt += *size;
        result.values.push_back(valueAt <= row.local ? valueOf(*type, bytes)
                                                     : valueWithOverflow(*type, bytes, *size, result.shortened));
    }
    if (valueAt != row.size) return std::nullopt;
    return result;
}

LeafPage readLeafPage(const PageFile& file, std::uint32_t page) { return LeafReader(file, page).page(); }

std::vector<LeafPage::Row> carveRows(const PageFile& file, std::uint32_t page,
                                     const std::function<bool(const LeafPage::Row&)>& accept) {
    return LeafReader(file, page).carve(accept);
}

std::optional<std::vector<ChildPage>> readInnerPage(const PageFile& file, std::uint32_t page) {
    const std::string bytes = file.read(page);
    const PageHeader header = headerOf(bytes, page);
    if (header.kind != kInnerPage) return std::nullopt;
    std::vector<ChildPage> below;
    for (std::size_t i = 0; i < pointersThatFit(header, file); ++i) {
        const auto at = static_cast<std::size_t>(bigEndian(bytes, header.pointers + 2 * i, 2));
        std::size_t keyAt = at + 4;
        const auto key = takeVarint(bytes, keyAt);
        below.push_back(
            {static_cast<std::uint32_t>(bigEndian(bytes, at, 4)), static_cast<std::int64_t>(key.value_or(0))});
    }
    below.push_back({static_cast<std::uint32_t>(bigEndian(bytes, header.at + 8, 4)), kGreatestId});
    return below;
}

}  // namespace kolmera
