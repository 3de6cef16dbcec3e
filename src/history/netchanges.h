#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "history/rowchange.h"
#include "platform/engine/schema.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/sqlitestatement.h"

namespace kolmera {

/// A product of the company, for rows whose change does not tell of which product they are.
struct NamedProduct {
    std::int64_t id = 0;
    std::string_view number, name;
};

/// What a run changed in the end: several changes of one row are one, from what stood before the first of them to what
/// the last one left, and what came back to its old value is none. Order of calls: `add` for each change, `finish`,
/// then queries. Of added and removed rows the cells are left out that hold nothing: 0, False, an empty text.
///
/// The changes lie in a database of SQLite's own, which no name leads to and which goes with the object:
///     row(n, tab, id, kind, product, name)          n counts from 1; tab is a place in `tables()`
///     cell(n, before, after, record, percent, again)     n is cellNumber(row, column)
/// `again` is an earlier record that wrote another value. `percent` is there for changed prices, quantities and other
/// fractional numbers; infinite where 0 stood before.
class NetChanges {
  public:
    static constexpr int kColumnBits = 11;

    struct Table {
        std::string name;
        TableDef definition;  ///< without fields for a table that a company does not have
        int productColumn = -1, nameColumn = -1;
        std::vector<bool> changed;  ///< by column
    };

    NetChanges();

    void add(const RowChange& change);
    void finish();
    /// Tables of which some row does not tell of which product it is, though its column Produktnr does.
    [[nodiscard]] std::vector<std::string> tablesWithoutProduct();
    /// Tells of which products the rows of such a table are; `each` gives their IDs and product numbers.
    void nameRows(
        std::string_view table,
        const std::function<void(const std::function<void(std::int64_t id, std::string_view product)>& take)>& each);
    /// Names the products of rows that lack it; `each` gives the products of the company.
    void nameProducts(const std::function<void(const std::function<void(const NamedProduct&)>& take)>& each);

    [[nodiscard]] const std::vector<Table>& tables() const { return tables_; }
    [[nodiscard]] FieldType typeOf(int table, int column) const;
    [[nodiscard]] SqliteConnection& connection() { return connection_; }

    static std::int64_t cellNumber(std::int64_t row, int column) { return row << kColumnBits | column; }
    static std::int64_t rowOf(std::int64_t cell) { return cell >> kColumnBits; }
    static int columnOf(std::int64_t cell) { return static_cast<int>(cell & ((1 << kColumnBits) - 1)); }

  private:
    struct Row {
        std::int64_t number;
        int kind;
        bool isNew;  ///< this is its first change
    };
    int tableNumber(const std::string& name);
    Row rowFor(const RowChange& change, int table);
    void addCells(const RowChange& change, int table, const Row& row);
    void nameAgain(const RowChange& change, int table, const Row& row);

    SqliteConnection connection_;
    std::vector<TableDef> schema_;
    std::vector<Table> tables_;
    std::int64_t lastRow_ = 0;
    bool again_ = false;  ///< some row was changed more than once
    SqliteStatement findRow_, addRow_, setKind_, nameRow_, addCell_, putCell_, emptyCells_;
};

}  // namespace kolmera
