#include "history/changeblock.h"

#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::uint8_t kPlace = 3;  // behind the numbers of ChangeKind

std::string_view labelOf(const ChangedRow& row, int column) {
    if (column < 0) return {};
    for (const ChangedCell& cell : row.cells) {
        if (cell.column == column) return textOf(cell.after != nullptr ? *cell.after : *cell.before);
    }
    const auto place = static_cast<std::size_t>(column);
    const Value* known = place < row.known.size() ? row.known[place] : nullptr;
    return known != nullptr ? textOf(*known) : std::string_view();
}

struct Entry {
    RowChange row;
    RecordPlace place;
    bool isPlace = false;
};

void readEntry(BlockReader& block, Entry& entry) {
    const std::uint8_t kind = block.byte();
    entry.isPlace = kind == kPlace;
    if (entry.isPlace) {
        entry.place.record = block.signedNumber();
        entry.place.offset = block.signedNumber();
        entry.place.length = block.signedNumber();
        return;
    }
    if (kind > kPlace) throw PlatformError(errors::kDamaged, "the record of the run is damaged");
    RowChange& row = entry.row;
    row.kind = static_cast<ChangeKind>(kind);
    row.table = block.word();
    row.id = block.signedNumber();
    row.record = block.signedNumber();
    row.label = block.text();
    row.cells.clear();
    for (std::uint64_t cells = block.number(); cells > 0; --cells) {
        CellChange& cell = row.cells.emplace_back();
        cell.column = static_cast<int>(block.number());
        if (row.kind != ChangeKind::Added) cell.before = block.value();
        if (row.kind != ChangeKind::Removed) cell.after = block.value();
    }
}

}  // namespace

int labelColumn(const TableDef& table) {
    if (const int product = table.ordinal("Produktnr"); product >= 0) return product;
    return table.name == "Produkt" ? table.ordinal("Nummer") : -1;
}

void writePlace(BlockWriter& block, const RecordPlace& place) {
    block.byte(kPlace);
    block.signedNumber(place.record);
    block.signedNumber(place.offset);
    block.signedNumber(place.length);
}

void writeRow(BlockWriter& block, ChangeKind kind, const ChangedRow& row, int label) {
    block.byte(static_cast<std::uint8_t>(kind));
    block.word(row.table.name);
    block.signedNumber(row.id);
    block.signedNumber(row.place);
    block.text(labelOf(row, label));
    block.number(row.cells.size());
    for (const ChangedCell& cell : row.cells) {
        block.number(static_cast<std::uint64_t>(cell.column));
        if (kind != ChangeKind::Added) block.value(*cell.before);
        if (kind != ChangeKind::Removed) block.value(*cell.after);
    }
}

void writeRemark(BlockWriter& block, const RecordRemark& remark) {
    block.word(remark.kind);
    block.signedNumber(remark.record);
    block.signedNumber(remark.offset);
    block.signedNumber(remark.length);
    block.text(remark.product);
    block.word(remark.column);
    block.text(remark.text);
    block.word(remark.reason);
}

bool readRows(std::string_view block, const std::function<bool(const RowChange&)>& take) {
    BlockReader reader(block);
    for (Entry entry; !reader.atEnd();) {
        readEntry(reader, entry);
        if (!entry.isPlace && !take(entry.row)) return false;
    }
    return true;
}

bool readPlaces(std::string_view block, const std::function<bool(const RecordPlace&)>& take) {
    BlockReader reader(block);
    for (Entry entry; !reader.atEnd();) {
        readEntry(reader, entry);
        if (entry.isPlace && !take(entry.place)) return false;
    }
    return true;
}

bool readRemarks(std::string_view block, bool lengths, const std::function<bool(const RecordRemark&)>& take) {
    BlockReader reader(block);
    while (!reader.atEnd()) {
        RecordRemark remark;
        remark.kind = reader.word();
        remark.record = reader.signedNumber();
        remark.offset = reader.signedNumber();
        if (lengths) remark.length = reader.signedNumber();
        remark.product = reader.text();
        remark.column = reader.word();
        remark.text = reader.text();
        remark.reason = reader.word();
        if (!take(remark)) return false;
    }
    return true;
}

}  // namespace kolmera
