#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/engine/pages/pagefile.h"
#include "platform/engine/pages/tablepage.h"
#include "platform/engine/schema.h"

namespace kolmera {

/// A table as far as salvaging has to know it.
struct SalvageTable {
    TableDef definition;
    std::uint32_t root = 0;  ///< page where its tree begins, 0 when that is lost
};

/// Whether a page holds a row with all columns of one of the tables.
bool fitsSomeTable(const LeafPage& leaf, std::span<const SalvageTable> tables);

/// A row of the table with that number, its values in the order of the columns.
struct SalvagedRow {
    std::size_t table;
    std::int64_t id;
    std::span<const StoredValue> values;
    bool shortened;    ///< the end of a text was lost with its page
    bool idUncertain;  ///< its own ID does not fit where it stands; `id` is one that does, as far as there is one
};

/// How far the rows of a page can be trusted.
enum class Trust {
    Tree,      ///< a sound page that its table's tree leads to
    Lost,      ///< a sound page that no tree leads to any more; it may be old
    Doubtful,  ///< a page with damage of its own
};

/// Finds the rows of a damaged file. Trees are followed from their roots; what a damaged page cuts off is found by
/// looking at every page that no tree has reached, and given to that of the broken tables whose columns it fits. Rows
/// are to be taken in the order of their trust, so that what is damaged never takes the place of what is whole.
class Salvage {
  public:
    using TakeRow = std::function<void(const SalvagedRow&)>;

    Salvage(const PageFile& file, std::span<const SalvageTable> tables);

    void readRows(Trust trust, const TakeRow& take) const;
    void readAllRows(const TakeRow& take) const;
    /// Whether everything that the tables' trees lead to is whole.
    [[nodiscard]] bool whole() const { return whole_; }
    /// Rows on lost pages that fit no table.
    [[nodiscard]] std::int64_t strangeRows() const { return strangeRows_; }

  private:
    /// IDs that the rows of a page may have: above the first, up to the last.
    struct Range {
        std::int64_t above, last;
    };
    struct FoundPage {
        std::uint32_t page;
        std::size_t table;
        Range ids;
        Trust trust;
    };

    [[nodiscard]] bool reach(std::uint32_t page);
    void markFreePages();
    void readTree(std::uint32_t page, std::size_t table, Range ids, int depth);
    void readLostPages();
    void readLostPage(std::uint32_t page);
    [[nodiscard]] std::optional<std::size_t> ownerOf(const LeafPage& leaf, bool brokenOnly) const;
    [[nodiscard]] bool belongs(const LeafPage& leaf, std::size_t table) const;
    void take(const FoundPage& found, const TakeRow& take) const;
    void takeCarved(const FoundPage& found, const TakeRow& take) const;

    const PageFile& file_;
    std::span<const SalvageTable> tables_;
    std::vector<bool> reached_;  ///< by page: part of a tree, or free
    std::vector<bool> broken_;   ///< by table: its tree has a page that is not what it should be
    std::vector<FoundPage> found_;
    std::int64_t strangeRows_ = 0;
    bool whole_ = true;
};

}  // namespace kolmera
