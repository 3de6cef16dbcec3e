#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/engine/odbc/dialect.h"
#include "platform/engine/schema.h"
#include "platform/engine/value.h"

namespace kolmera {

/// What a statement answers: all its rows, read before anything else is sent.
struct StatementResult {
    std::vector<FieldDef> fields;  ///< of the rows, described by the driver where nobody said what they are
    std::vector<std::vector<Value>> rows;
    std::int64_t touched = 0;  ///< rows that an action statement touched; MariaDB counts those that changed
};

/// The error of a handle, with the driver's first message.
ServerError odbcError(SQLSMALLINT kind, SQLHANDLE handle);

/// One statement of a connection, prepared once and run with other parameters again and again.
class OdbcStatement {
  public:
    OdbcStatement(SQLHDBC connection, const Dialect& dialect);
    OdbcStatement(const OdbcStatement&) = delete;
    OdbcStatement& operator=(const OdbcStatement&) = delete;
    ~OdbcStatement();

    [[nodiscard]] std::optional<ServerError> prepare(std::string_view text);
    /// Runs it and reads every row; `types` are those of the columns, or empty to take them as the driver says.
    [[nodiscard]] std::optional<ServerError> run(std::span<const Value> parameters, std::span<const FieldType> types,
                                                 StatementResult& result);
    /// Runs a statement without parameters that was not prepared; servers cannot prepare every kind.
    [[nodiscard]] std::optional<ServerError> runDirect(std::string_view text, StatementResult& result);
    /// Reads what a catalogue function has selected, all as texts; `call` calls it and returns its code.
    template <typename Call>
    [[nodiscard]] std::optional<ServerError> catalogue(Call&& call, StatementResult& result);

  private:
    /// A value as the driver takes it; must not move while the statement runs.
    struct Bound {
        std::u16string wide;
        std::string narrow;
        SQLBIGINT whole = 0;
        double number = 0;
        SQL_DATE_STRUCT date = {};
        SQLLEN length = 0;
    };

    /// A column of the row at hand, where the driver puts it by itself.
    struct Cell {
        FieldType type = FieldType::Memo;
        SQLBIGINT whole = 0;
        double number = 0;
        SQL_DATE_STRUCT date = {};
        std::u16string wide;
        std::string narrow;
        SQLLEN length = 0;
    };

    bool bind(SQLUSMALLINT parameter, const Value& value);
    bool bindText(SQLUSMALLINT parameter, Bound& bound, std::string_view text);
    bool bindNumber(SQLUSMALLINT parameter, Bound& bound, double value);
    std::optional<ServerError> readAnswer(SQLRETURN code, std::span<const FieldType> types, StatementResult& result);
    void finish(std::span<const FieldType> types, StatementResult& result);
    bool fetchAll(std::span<const FieldType> types, StatementResult& result);
    bool describe(SQLSMALLINT columns, StatementResult& result);
    bool bindCells(std::span<const FieldType> types);
    bool bindCell(SQLUSMALLINT column, Cell& cell);
    bool takeCell(SQLUSMALLINT column, Cell& cell, Value& into);
    [[nodiscard]] bool comesAsDigits(FieldType type) const {
        return type == FieldType::Currency ||
               ((type == FieldType::Single || type == FieldType::Double) && dialect_.textNumbers);
    }
    bool read(SQLUSMALLINT column, FieldType type, Value& into);
    bool readWhole(SQLUSMALLINT column, FieldType type, Value& into);
    bool readNumber(SQLUSMALLINT column, FieldType type, Value& into);
    bool readDigits(SQLUSMALLINT column, FieldType type, Value& into);
    bool readDate(SQLUSMALLINT column, Value& into);
    bool readText(SQLUSMALLINT column, Value& into);
    template <typename Text>
    bool readPieces(SQLUSMALLINT column, SQLSMALLINT type, Text& buffer, Text& whole, bool& null);
    /// Keeps the error of a code that is none of the good ones.
    bool good(SQLRETURN code);
    std::optional<ServerError> takeError() { return std::exchange(error_, std::nullopt); }

    const Dialect& dialect_;
    SQLHSTMT handle_ = SQL_NULL_HSTMT;
    std::deque<Bound> bound_;
    bool reReads_ = false;  ///< a bound column can be asked for again, whatever its place
    std::deque<Cell> cells_;
    std::u16string wideBuffer_;
    std::string buffer_;
    std::optional<ServerError> error_;
};

template <typename Call>
std::optional<ServerError> OdbcStatement::catalogue(Call&& call, StatementResult& result) {
    if (good(call(handle_)) && describe(-1, result)) {
        const std::vector<FieldType> texts(result.fields.size(), FieldType::Text);
        fetchAll(texts, result);
    }
    SQLFreeStmt(handle_, SQL_CLOSE);
    return takeError();
}

/// The field that a type of the catalogue makes, `typeName` being the server's own name of it. `columns` is the size in
/// characters or digits.
FieldDef fieldOfOdbcType(std::string_view name, int type, std::string_view typeName, std::int64_t size);

}  // namespace kolmera
