#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "history/rowchange.h"
#include "platform/engine/sqlite/sqliteconnection.h"

namespace kolmera {

/// What a run changed in one row, all its changes taken together: the values before the first and after the last. A
/// column that is not among the cells was and is Null in an added or removed row, and untouched in a changed one.
struct NetRow {
    ChangeKind kind{};
    int table = 0;  ///< place in NetRows::tables
    std::int64_t id = 0;
    std::int64_t record = 0;  ///< as in RowChange; of the last change that names one
    std::string label;
    std::vector<CellChange> cells;  ///< by column
    bool rebuilt = false;           ///< removed and added again: a column that is not among the cells was Null
    int mark = 0;                   ///< free for whoever goes through the rows
};

/// The net changes of a run, row by row, with all values as they are (NetChanges has what is shown of them). They are
/// in a temporary file that has no name: memory does not grow with the run, and nothing is left whenever the program
/// ends. First `add` all, then the rest.
class NetRows {
  public:
    using Source = std::function<void(const std::function<bool(const RowChange&)>& take)>;

    NetRows();
    NetRows(const NetRows&) = delete;
    NetRows& operator=(const NetRows&) = delete;
    ~NetRows() = default;

    void add(const RowChange& change);

    /// Names of the tables that have changed rows.
    [[nodiscard]] const std::vector<std::string>& tables() const { return tables_; }
    [[nodiscard]] std::int64_t count() const { return rows_; }
    /// The place of a table, -1 when none of its rows changed.
    [[nodiscard]] int place(std::string_view table) const;
    [[nodiscard]] std::optional<NetRow> find(int table, std::int64_t id);
    /// The rows of a table with this mark, by ID, `count` at most, behind that ID.
    [[nodiscard]] std::vector<NetRow> next(int table, std::optional<std::int64_t> behind, int mark, int count);
    /// The same with the cells of these columns alone: of many columns few are unique numbers. Such a row is only to be
    /// marked, or filled.
    [[nodiscard]] std::optional<NetRow> find(int table, std::int64_t id, std::span<const int> columns);
    [[nodiscard]] std::vector<NetRow> next(int table, std::optional<std::int64_t> behind, int mark, int count,
                                           std::span<const int> columns);
    /// Reads all cells of a row.
    void fill(NetRow& row);
    /// Puts a row in the place of the one that has its ID.
    void put(const NetRow& row);
    /// Puts its mark alone.
    void putMark(const NetRow& row);
    /// Gives all rows of one mark another; how many there are.
    std::int64_t remark(int from, int to);

  private:
    static void merge(NetRow& row, const RowChange& change, std::vector<CellChange> cells);
    void fill(NetRow& row, std::span<const int> columns);
    void drop(const NetRow& row);

    SqliteConnection file_;
    SqliteStatement find_, next_, cells_, put_, putCells_, mark_, drop_, dropCells_;
    std::vector<std::string> tables_;
    std::int64_t rows_ = 0;
};

}  // namespace kolmera
