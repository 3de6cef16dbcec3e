#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/schema.h"
#include "platform/jet/jetcontent.h"

namespace kolmera {

/// What of an Access-format file is not in the company as it was in the file.
struct AccessRemark {
    enum class Kind : std::uint8_t {
        BinaryLeftOut,      ///< values: pictures and the like
        TimeCut,            ///< values: the time of the day
        DigitsRounded,      ///< values: amounts of more digits than are kept
        NotFitting,         ///< values that the column's type cannot be; nothing instead
        Unreadable,         ///< values that are damaged; nothing instead
        CharactersDamaged,  ///< texts with characters that are damaged
        OtherType,          ///< a column that has another type in companies
        AsText,             ///< a column of a type that companies do not have
        StandardLeftOut,    ///< a column's value for new rows
        RuleLeftOut,        ///< a condition that values of a column, or rows of a table, had to meet
        RequiredLeftOut,    ///< a column that had to have a value
        CounterLeftOut,     ///< a column that got its values by itself
        PropertiesLeftOut,  ///< what a column or a table was shown and written by
        ColumnLeftOut,      ///< a column whose name cannot be used
        RowsRefused,        ///< rows that have a value of a unique index twice
        RowsLost,           ///< rows that the file says it has
        TableLeftOut,       ///< a table that is damaged, or whose name cannot be used
        IndexLeftOut,       ///< an index of columns that are left out
        LinkLeftOut,        ///< a table that lies in another file
        QueryLeftOut,
        RelationLeftOut,  ///< columns that had to agree
        ObjectLeftOut,    ///< forms, reports, macros, modules
        PasswordLeftOut,  ///< of the file
        TableMissing,     ///< a table that companies have, and the file has not
        ColumnMissing,    ///< such a column
    };
    Kind kind;
    std::string place;  ///< "Table", "Table.Column", and what was there in brackets
    std::int64_t count = 0;
};

/// Where the columns of a table of the file go.
struct AccessTable {
    TableDef made;             ///< as the company gets it
    std::vector<int> columns;  ///< of each column of the file: its ordinal in the company, -1 when it is left out
    std::int64_t rows = 0;     ///< as the file says
    bool leftOut = false;
};

/// Decides what tables a company gets from a file. The tables that companies have stand first, with all their columns
/// in their order, because columns are known by their places; sizes of texts and what the file has besides are the
/// file's.
class AccessPlan {
  public:
    AccessPlan();

    void add(const jet::Table& table);
    /// Call when all tables are added: tells what is missing.
    void complete();

    [[nodiscard]] const std::vector<AccessTable>& tables() const { return tables_; }  ///< in the order of `add`
    [[nodiscard]] std::vector<TableDef> definitions() const;
    /// Whether a table that companies have is not in the file.
    [[nodiscard]] bool isMissing(std::string_view table) const;

    std::vector<AccessRemark> remarks;

  private:
    struct Known {
        TableDef definition;
        bool found = false;
    };
    AccessTable planned(const jet::Table& table, TableDef made, bool known);
    int place(const jet::Column& column, TableDef& made, std::size_t knownColumns, const std::string& name);
    void remarkLost(const jet::Column& column, const FieldDef& kept, const std::string& name);
    void addIndexes(const jet::Table& table, AccessTable& planned);

    std::vector<Known> known_;
    std::vector<AccessTable> tables_;
};

}  // namespace kolmera
