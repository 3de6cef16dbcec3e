#include "platform/engine/pages/salvage.h"

#include <algorithm>
#include <limits>

#include "platform/engine/pages/idorder.h"
#include "platform/engine/pages/utf8text.h"

namespace kolmera {

namespace {

constexpr int kDeepestTree = 20;
constexpr std::int64_t kSmallestId = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kGreatestId = std::numeric_limits<std::int64_t>::max();

bool isTextType(FieldType type) {
    return type == FieldType::Text || type == FieldType::Memo || type == FieldType::Date;
}

/// The ID stands in the row's key; its column is empty.
bool fitsField(const StoredValue& value, const FieldDef& field) {
    if (std::holds_alternative<std::monostate>(value)) return true;
    if (field.counter) return false;
    if (const auto* text = std::get_if<std::string_view>(&value)) return isTextType(field.type) && isReadable(*text);
    return !isTextType(field.type);
}

bool fitsExactly(std::span<const StoredValue> values, const TableDef& table) {
    return values.size() == table.fields.size() &&
           std::equal(values.begin(), values.end(), table.fields.begin(), fitsField);
}

/// A row of a sound page may hold values in other forms, and be shorter when columns were added later.
bool fitsTable(std::span<const StoredValue> values, const TableDef& table, bool exactly) {
    return exactly ? fitsExactly(values, table) : values.size() <= table.fields.size();
}

bool fitsTable(const LeafPage::Row& row, const TableDef& table, bool exactly) {
    return fitsTable(parseRow(row)->values, table, exactly);
}

/// Whether some row of a page fits a table.
bool fits(const LeafPage& leaf, const TableDef& table, bool exactly) {
    return std::any_of(leaf.rows.begin(), leaf.rows.end(),
                       [&](const LeafPage::Row& row) { return fitsTable(row, table, exactly); });
}

/// A page that says it is of another kind is a leaf when most of it can be read as one.
bool canBeLeaf(const LeafPage& leaf) { return leaf.declared || leaf.rows.size() > leaf.damaged; }

std::vector<std::int64_t> idsOf(const LeafPage& leaf) {
    std::vector<std::int64_t> ids;
    for (const LeafPage::Row& row : leaf.rows) ids.push_back(row.id);
    return ids;
}

}  // namespace

bool fitsSomeTable(const LeafPage& leaf, std::span<const SalvageTable> tables) {
    return std::ranges::any_of(tables, [&](const SalvageTable& table) { return fits(leaf, table.definition, true); });
}

Salvage::Salvage(const PageFile& file, std::span<const SalvageTable> tables)
    : file_(file), tables_(tables), reached_(std::size_t{file.count()} + 1), broken_(tables.size()) {
    for (std::size_t i = 0; i < tables.size(); ++i) readTree(tables[i].root, i, {kSmallestId, kGreatestId}, 0);
    whole_ = whole_ && std::ranges::find(broken_, true) == broken_.end();
    if (std::ranges::find(broken_, true) != broken_.end()) readLostPages();
}

/// Marks a page; false when it has been reached before, or is none.
bool Salvage::reach(std::uint32_t page) {
    if (!file_.has(page) || reached_[page]) return false;
    reached_[page] = true;
    return true;
}

/// Free pages may still hold rows that were deleted.
void Salvage::markFreePages() {
    std::uint32_t trunk = file_.firstFreePage();
    while (reach(trunk)) {
        const std::string bytes = file_.read(trunk);
        const std::uint64_t leaves = std::min<std::uint64_t>(bigEndian(bytes, 4, 4), file_.usableSize() / 4 - 2);
        for (std::size_t i = 0; i < leaves; ++i) {
            const auto page = static_cast<std::uint32_t>(bigEndian(bytes, 8 + 4 * i, 4));
            if (file_.has(page)) reached_[page] = true;
        }
        trunk = static_cast<std::uint32_t>(bigEndian(bytes, 0, 4));
    }
}

void Salvage::readTree(std::uint32_t page, std::size_t table, Range ids, int depth) {
    if (depth > kDeepestTree || !file_.has(page) || reached_[page]) {
        broken_[table] = true;
        return;
    }
    const LeafPage leaf = readLeafPage(file_, page);
    if (belongs(leaf, table)) {
        reached_[page] = true;
        const bool sound = leaf.sound() && inOrder(idsOf(leaf), ids.above, ids.last);
        whole_ = whole_ && sound;
        found_.push_back({page, table, ids, sound ? Trust::Tree : Trust::Doubtful});
        return;
    }
    const auto below = readInnerPage(file_, page);
    if (!below) {
        broken_[table] = true;
        return;
    }
    reached_[page] = true;
    for (const ChildPage& child : *below) {
        const std::int64_t last = std::min(child.lastId, ids.last);
        readTree(child.page, table, {ids.above, last}, depth + 1);
        ids.above = std::max(ids.above, last);
    }
}

/// Whether a page that a table's tree points at is one of its pages. A damaged inner page may point into the tree of
/// another table: such a page is left for its owner.
bool Salvage::belongs(const LeafPage& leaf, std::size_t table) const {
    if (leaf.rows.empty()) return leaf.declared && leaf.damaged == 0;
    if (canBeLeaf(leaf) && fits(leaf, tables_[table].definition, true)) return true;
    return leaf.declared && leaf.damaged == 0 && !ownerOf(leaf, false) && fits(leaf, tables_[table].definition, false);
}

/// The first table that some row of a page fits.
std::optional<std::size_t> Salvage::ownerOf(const LeafPage& leaf, bool brokenOnly) const {
    for (std::size_t table = 0; table < tables_.size(); ++table) {
        if ((broken_[table] || !brokenOnly) && fits(leaf, tables_[table].definition, true)) return table;
    }
    return std::nullopt;
}

void Salvage::readLostPages() {
    markFreePages();
    for (std::uint32_t page = 1; page <= file_.count(); ++page) {
        if (!reached_[page]) readLostPage(page);
    }
}

void Salvage::readLostPage(std::uint32_t page) {
    const LeafPage leaf = readLeafPage(file_, page);
    if (leaf.rows.empty() || !canBeLeaf(leaf)) return;
    const auto table = ownerOf(leaf, true);
    if (!table && leaf.sound() && !ownerOf(leaf, false)) strangeRows_ += static_cast<std::int64_t>(leaf.rows.size());
    if (!table) return;
    const bool sound = leaf.sound() && inOrder(idsOf(leaf), kSmallestId, kGreatestId);
    found_.push_back({page, *table, {kSmallestId, kGreatestId}, sound ? Trust::Lost : Trust::Doubtful});
}

void Salvage::readRows(Trust trust, const TakeRow& takeRow) const {
    for (const FoundPage& found : found_) {
        if (found.trust == trust) take(found, takeRow);
        if (found.trust == trust && trust == Trust::Doubtful) takeCarved(found, takeRow);
    }
}

void Salvage::readAllRows(const TakeRow& take) const {
    for (const Trust trust : {Trust::Tree, Trust::Lost, Trust::Doubtful}) readRows(trust, take);
}

void Salvage::take(const FoundPage& found, const TakeRow& takeRow) const {
    const LeafPage leaf = readLeafPage(file_, found.page);
    const auto places = placesInOrder(idsOf(leaf), found.ids.above, found.ids.last);
    for (std::size_t i = 0; i < leaf.rows.size(); ++i) {
        const auto row = parseRow(leaf.rows[i]);
        if (!fitsTable(row->values, tables_[found.table].definition, found.trust != Trust::Tree)) continue;
        takeRow({found.table, places[i].id, row->values, row->shortened, places[i].uncertain});
    }
}

void Salvage::takeCarved(const FoundPage& found, const TakeRow& takeRow) const {
    const auto accept = [&](const LeafPage::Row& row) {
        return row.id > found.ids.above && row.id <= found.ids.last &&
               fitsTable(row, tables_[found.table].definition, true);
    };
    for (const LeafPage::Row& carved : carveRows(file_, found.page, accept)) {
        const auto row = parseRow(carved);
        takeRow({found.table, carved.id, row->values, row->shortened, false});
    }
}

}  // namespace kolmera
