#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/engine/sqlite/filetable.h"
#include "platform/engine/sqlite/tablerow.h"
#include "platform/engine/value.h"

namespace kolmera {

/// Finds rows of a table in the order of an index: by the columns of the index, then by ID. Without an index the order
/// is that of the IDs alone. Every search is one or a few statements that the index answers, each for the first row of
/// one stretch of it; they are kept.
class IndexWalk {
  public:
    enum class Direction { Forward, Backward };

    IndexWalk(FileTable& table, TableRow& row) : table_(table), row_(row) {}

    void setIndex(const TableIndex* index);
    [[nodiscard]] const TableIndex* index() const { return index_; }

    // Each makes the row that it finds current and returns true; otherwise the current row stays, and the result is
    // false.
    bool first(Direction direction);
    /// The first row whose leading columns equal these keys.
    bool equal(std::span<const Value> keys);
    /// The first row, forward, whose key is behind these keys, or (with `orEqual`) equal to them.
    bool behind(std::span<const Value> keys, bool orEqual);
    /// The row next to a place: the keys of all columns of the index, and an ID.
    bool next(std::span<const Value> keys, std::int64_t id, Direction direction);

  private:
    enum class Test : std::uint8_t { None, Greater, GreaterOrEqual, Less, IsNull, IsNotNull };

    /// A stretch of the index: rows that equal the first `equal` keys and whose next column (the ID behind the last
    /// one) passes a test.
    struct Stretch {
        std::size_t equal = 0;
        std::uint32_t nulls = 0;  ///< which of the equal keys are Null, bit by bit
        Test test = Test::None;
        Direction direction = Direction::Forward;
        bool operator==(const Stretch&) const = default;
    };

    [[nodiscard]] std::size_t keyColumns() const { return index_ != nullptr ? index_->columns.size() : 0; }
    [[nodiscard]] bool unique(const Stretch& stretch) const;
    bool search(const Stretch& stretch, std::span<const Value> keys, std::int64_t id);
    bool behindColumn(std::span<const Value> keys, std::size_t column, Direction direction);
    SqliteStatement& statementFor(const Stretch& stretch);
    [[nodiscard]] std::string statementText(const Stretch& stretch) const;
    [[nodiscard]] std::string conditions(const Stretch& stretch) const;
    [[nodiscard]] std::string order(Direction direction) const;
    [[nodiscard]] std::string columnName(std::size_t column) const;

    FileTable& table_;
    TableRow& row_;
    const TableIndex* index_ = nullptr;
    std::vector<std::pair<Stretch, SqliteStatement>> kept_;
    std::size_t keptSelection_ = 0;
};

}  // namespace kolmera
