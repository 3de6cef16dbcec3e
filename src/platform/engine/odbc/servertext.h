#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/odbc/dialect.h"
#include "platform/engine/statementtext.h"
#include "platform/engine/value.h"
#include "platform/locale.h"

namespace kolmera {

/// A statement for a server: its text, the same for every use, and the values of its "?".
struct ServerStatement {
    std::string text;
    std::vector<Value> parameters = {};
};

/// Turns a statement as the programs write them into the server's language: every text, date, number and truth value
/// becomes a parameter, and names get their exact spelling between quotes. So nothing that a text holds is ever read as
/// part of a statement, and statements that differ in their values only are prepared once. `given` are the values of
/// the "?" that it has already. Statements other than SELECT, INSERT, UPDATE and DELETE stay as they are. Throws
/// kWrongType for "#" around what is no date, kInternal for too few or too many values.
ServerStatement serverStatement(const Dialect& dialect, std::string_view statement, std::span<const Value> given,
                                const Locale& locale, const NameLookup& exactName);

/// Whether `serverStatement` translates it.
bool isTranslated(std::string_view statement);

/// What follows the table in a SELECT on one table: its condition, without WHERE, and its order, without ORDER BY, both
/// in the server's language.
struct ServerSelectRest {
    ServerStatement where;
    std::string order;
};
ServerSelectRest serverSelectRest(const Dialect& dialect, std::string_view rest, const Locale& locale,
                                  const NameLookup& exactName, std::span<const Value> given = {});

/// An action statement on one table, taken apart.
struct ActionParts {
    enum class Kind { Insert, Update, Delete };
    Kind kind{};
    std::string table;
    std::string rest;                  ///< UPDATE, DELETE: "WHERE ..." as it is written, or empty
    std::size_t parametersBefore = 0;  ///< "?" before the rest
};
/// No table for what is none.
ActionParts actionParts(std::string_view statement);

/// An order with the key as its last column, unless the key is in it already: servers may refuse a column that comes
/// twice. An order by the key alone is the key's name alone.
std::string orderWithKey(std::string_view order, std::string_view key);

/// The parts of a SELECT on one table; names are quoted. `limit` 0 asks for all rows.
struct SelectParts {
    std::span<const std::string> columns;
    std::string_view table;
    std::string_view where = {};
    std::string_view order = {};
    int limit = 0;
};
std::string selectText(const Dialect& dialect, const SelectParts& parts);
/// Gives the new row's ID back.
std::string insertText(const Dialect& dialect, std::string_view table, std::span<const std::string> columns,
                       std::string_view id);
/// Rows with their IDs, each with a value for every column.
std::string insertRowsText(const Dialect& dialect, std::string_view table, std::span<const std::string> columns,
                           std::size_t rows);
/// Lets the server's next ID follow the largest; empty where it sees to that itself. Names are not quoted.
std::string moveSequenceText(const Dialect& dialect, std::string_view table, std::string_view id);
/// A value for each column, then the ID.
std::string updateText(std::string_view table, std::span<const std::string> columns, std::string_view id);
std::string deleteText(std::string_view table, std::string_view id);

/// The texts, with a separator between them.
std::string joined(std::span<const std::string> texts, std::string_view separator);

}  // namespace kolmera
