#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/engine/value.h"

namespace kolmera {

/// What a driver says of a statement that failed.
struct ServerError {
    std::string state;  ///< SQLSTATE, five characters
    int native = 0;     ///< the server's own number
    std::string description;
};

/// The SQLSTATE of a server that did not answer in time; it is ours, no driver's.
inline constexpr std::string_view kSilentState = "08KOL";

/// What an error means, as far as the engine tells errors apart.
enum class Failure {
    Other,
    DuplicateKey,
    TextTooLong,
    WrongType,
    UnknownTable,
    UnknownField,
    Locked,    ///< another session holds a lock longer than this session waits
    Deadlock,  ///< the server has rolled the transaction back to free others
    Gone,      ///< there is no connection any more
    Silent,    ///< the server did not answer in time, and the connection has been given up
    // Errors of the server, not of the record: the next statement would meet them too.
    NotAdmitted,   ///< the user or the password
    NotPermitted,  ///< the user lacks a right
    ReadOnly,      ///< the server or its database cannot be written
    Full,          ///< its disk, its log or a quota
    Unwell,        ///< short of memory, damaged, or told to stop
};

/// How one kind of server wants its statements and takes its errors. The types of a schema follow from this: a Boolean
/// is `boolean` on PostgreSQL, `tinyint(1)` on MariaDB and `bit` on SQL Server; a Byte is `smallint` on PostgreSQL and
/// `tinyint` (MariaDB: `unsigned`) elsewhere; Currency is `numeric(19,4)` everywhere. Every table has its key column
/// ID, which the server fills in.
struct Dialect {
    /// SQL Server refuses OUTPUT on a table with triggers, and an ID that a trigger has used is not the row's.
    enum class NewId { Returning, ScopeIdentity };
    enum class Limit { Limit, Top };
    /// What rows need that come with their IDs.
    enum class GivenIds { Nothing, MoveSequence, IdentityInsert };
    /// After which errors of a statement the transaction goes on, all other statements kept.
    enum class Survives { Nothing, RefusedRows, MostErrors };
    /// How many rows go as a few parameters: an array for each column, or all as one JSON text. Without, records are
    /// not taken in windows.
    enum class RowsAs { Nothing, Arrays, Json };

    std::string_view name;  ///< as the driver calls its server
    char openQuote, closeQuote;
    NewId newId;
    Limit limit;
    GivenIds givenIds;
    Survives survives;
    bool textNumbers;  ///< numbers go and come as texts: the driver prints doubles with too few digits
    bool sendsBegin;   ///< the driver begins a transaction with a statement of its own
    bool utf8Texts;    ///< texts go and come as UTF-8: the driver miscounts UTF-16
    bool storesNul;    ///< texts may hold NUL
    bool nullsLast;    ///< ORDER BY puts Null last unless told otherwise
    RowsAs rowsAs;
    std::string_view columns;    ///< SELECT of the columns of a table: name, type, collation; "{}" is the table's name
    std::string_view echo;       ///< a statement that gives its text parameter back
    std::string_view lastId;     ///< SELECT of the last ID that a table has given; "{}" is its name
    std::string_view emptyRow;   ///< behind the table's name in an INSERT without columns
    std::size_t mostParameters;  ///< of one statement
    std::span<const std::string_view> session;  ///< statements run after connecting
};

/// The dialect of a server, by the name that its driver gives (SQL_DBMS_NAME); nullptr for one that is not known.
const Dialect* dialectNamed(std::string_view dbms);

Failure failureOf(const ServerError& error);
/// The engine's error number for a failure.
int errorNumber(Failure failure);
/// Whether an error lies with the server, whatever the record.
bool liesWithServer(Failure failure);
/// Whether a transaction goes on after such an error of one of its statements.
bool survives(const Dialect& dialect, Failure failure);

/// A name between the dialect's quotes.
std::string quotedName(const Dialect& dialect, std::string_view name);
/// The mark of a parameter that is compared or computed with: a number that a server could take for a smaller type
/// than it is gets its type said.
std::string parameterMark(const Dialect& dialect, const Value& value);

}  // namespace kolmera
