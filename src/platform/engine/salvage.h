#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "platform/engine/pagefile.h"
#include "platform/engine/schema.h"
#include "platform/engine/tablepage.h"

namespace kolmera {

/// A table as far as salvaging has to know it.
struct SalvageTable {
    TableDef definition;
    std::uint32_t root = 0;  ///< page where its tree begins, 0 when that is lost
};

/// Finds the rows of a damaged file. Trees are followed from their roots; what a damaged page cuts off is found by
/// looking at every page that no tree has reached, and given to the table whose columns it fits.
class Salvage {
  public:
    /// Takes a row of the table with that number: its ID and its values in the order of the columns.
    using TakeRow = std::function<void(std::size_t table, std::int64_t id, std::span<const StoredValue> values)>;

    explicit Salvage(const PageFile& file);

    /// Calls `take` for every readable row of the tables.
    void readTables(std::span<const SalvageTable> tables, const TakeRow& take);

  private:
    [[nodiscard]] bool reach(std::uint32_t page);
    void markFreePages();
    void readTree(std::uint32_t page, std::size_t table, int depth);
    void readLostPages();
    [[nodiscard]] bool belongs(const LeafPage& leaf, std::size_t table) const;
    [[nodiscard]] static bool fits(const LeafPage& leaf, const TableDef& table, bool exactly);
    void takeRows(const LeafPage& leaf, std::size_t table, bool exactly);

    const PageFile& file_;
    std::vector<bool> reached_;  ///< by page: part of a tree, or free
    bool broken_ = false;        ///< some tree has a page that is not what it should be
    std::span<const SalvageTable> tables_;
    const TakeRow* take_ = nullptr;
};

}  // namespace kolmera
