#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "wholeruns/sqlite.h"

namespace kolmera::bench {

/// One row of a table at a time: sought by a condition, some columns read, and written with one statement that names
/// only the columns whose value changed. Columns are addressed by their place in `columns` (at most 63). Texts that
/// are set must live until `save`.
class Row {
  public:
    /// `condition` has the seek's keys as ?1, ?2 ...; columns outside `read` are written only.
    Row(Connection& connection, std::string table, std::vector<std::string> columns, std::span<const int> read,
        const std::string& condition);

    /// Finds the row of these keys (texts or whole numbers).
    template <typename... Keys>
    bool seek(const Keys&... keys) {
        leave();
        int place = 0;
        (select_.bind(++place, keys), ...);
        return found();
    }
    /// Begins a new row instead.
    void add();
    [[nodiscard]] bool isNew() const { return new_; }

    /// Values as set since the seek, else as stored; 0 and "" for Null and in new rows.
    [[nodiscard]] double real(int column) const;
    [[nodiscard]] std::string_view text(int column) const;
    [[nodiscard]] bool isSet(int column) const { return (changed_ & bit(column)) != 0; }

    void set(int column, double number);
    void set(int column, std::string_view text);

    /// Writes the new row, or the changed columns when there are any.
    void save();
    void remove();

  private:
    using Cell = std::variant<double, std::string_view>;

    static std::uint64_t bit(int column) { return std::uint64_t{1} << column; }
    bool found();
    void leave();
    void note(int column, bool differs, Cell cell);
    Statement& writer();

    Connection& connection_;
    std::string table_;
    std::vector<std::string> columns_;
    Statement select_;
    Statement delete_;
    std::unordered_map<std::uint64_t, Statement> inserts_;
    std::unordered_map<std::uint64_t, Statement> updates_;
    std::vector<Cell> cells_;
    std::uint64_t changed_ = 0;
    std::int64_t id_ = 0;
    bool new_ = false;
};

}  // namespace kolmera::bench
