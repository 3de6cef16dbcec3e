#include "platform/engine/salvage.h"

#include <algorithm>

namespace kolmera {

namespace {

constexpr int kDeepestTree = 20;

/// Whether a text is well-formed UTF-8, as all texts of a company are.
bool isUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<std::uint8_t>(text[i]);
        const std::size_t length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
        if (length == 0 || first > 0xF4 || i + length > text.size()) return false;
        for (std::size_t k = 1; k < length; ++k) {
            if ((static_cast<std::uint8_t>(text[i + k]) & 0xC0) != 0x80) return false;
        }
        i += length;
    }
    return true;
}

bool isTextType(FieldType type) {
    return type == FieldType::Text || type == FieldType::Memo || type == FieldType::Date;
}

/// The ID stands in the row's key; its column is empty.
bool fitsField(const StoredValue& value, const FieldDef& field) {
    if (std::holds_alternative<std::monostate>(value)) return true;
    if (field.counter) return false;
    if (const auto* text = std::get_if<std::string_view>(&value)) return isTextType(field.type) && isUtf8(*text);
    return !isTextType(field.type);
}

bool fitsExactly(std::span<const StoredValue> values, const TableDef& table) {
    return values.size() == table.fields.size() &&
           std::equal(values.begin(), values.end(), table.fields.begin(), fitsField);
}

/// A row of an undamaged page may hold values in other forms, and be shorter when columns were added later.
bool fitsTable(std::span<const StoredValue> values, const TableDef& table, bool exactly) {
    return exactly ? fitsExactly(values, table) : values.size() <= table.fields.size();
}

}  // namespace

Salvage::Salvage(const PageFile& file) : file_(file), reached_(std::size_t{file.count()} + 1) {}

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

void Salvage::readTables(std::span<const SalvageTable> tables, const TakeRow& take) {
    tables_ = tables;
    take_ = &take;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (tables[i].root == 0) {
            broken_ = true;
        } else {
            readTree(tables[i].root, i, 0);
        }
    }
    if (broken_) readLostPages();
}

void Salvage::readTree(std::uint32_t page, std::size_t table, int depth) {
    if (depth > kDeepestTree || !file_.has(page) || reached_[page]) {
        broken_ = true;
        return;
    }
    if (const auto below = readInnerPage(file_, page)) {
        reached_[page] = true;
        for (const std::uint32_t child : *below) readTree(child, table, depth + 1);
        return;
    }
    const auto leaf = readLeafPage(file_, page);
    if (!leaf || !belongs(*leaf, table)) {
        broken_ = true;
        return;
    }
    reached_[page] = true;
    takeRows(*leaf, table, leaf->damaged > 0);
}

/// Whether a page that a table's tree points at is one of its pages. A damaged inner page may point into the tree of
/// another table: such a page is left for its owner.
bool Salvage::belongs(const LeafPage& leaf, std::size_t table) const {
    if (leaf.rows.empty()) return leaf.damaged == 0;
    if (fits(leaf, tables_[table].definition, true)) return true;
    const bool othersPage = std::any_of(tables_.begin(), tables_.end(),
                                        [&](const SalvageTable& other) { return fits(leaf, other.definition, true); });
    return !othersPage && leaf.damaged == 0 && fits(leaf, tables_[table].definition, false);
}

/// Whether some row of a page fits a table.
bool Salvage::fits(const LeafPage& leaf, const TableDef& table, bool exactly) {
    return std::any_of(leaf.rows.begin(), leaf.rows.end(),
                       [&](const LeafPage::Row& row) { return fitsTable(*parseRecord(row.record), table, exactly); });
}

void Salvage::readLostPages() {
    markFreePages();
    for (std::uint32_t page = 1; page <= file_.count(); ++page) {
        if (reached_[page]) continue;
        const auto leaf = readLeafPage(file_, page);
        if (!leaf || leaf->rows.empty()) continue;
        for (std::size_t table = 0; table < tables_.size(); ++table) {
            if (!fits(*leaf, tables_[table].definition, true)) continue;
            takeRows(*leaf, table, true);
            break;
        }
    }
}

void Salvage::takeRows(const LeafPage& leaf, std::size_t table, bool exactly) {
    for (const LeafPage::Row& row : leaf.rows) {
        const auto values = parseRecord(row.record);
        if (fitsTable(*values, tables_[table].definition, exactly)) (*take_)(table, row.id, *values);
    }
}

}  // namespace kolmera
