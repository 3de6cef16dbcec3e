#include "platform/engine/odbc/dialect.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

// Locks are waited for by the program, which stays alive and can be cancelled; the server waits only a moment.
// One plan for however many rows: with the rows of a window at hand PostgreSQL counts on each of them finding many, and
// reads whole tables for them, with a sort key of every text.
constexpr std::string_view kPostgresSession[] = {"SET lock_timeout = 200", "SET standard_conforming_strings = on",
                                                 "SET plan_cache_mode = force_generic_plan"};
// READ COMMITTED: a batch sees what others have committed, and locks no gaps between rows.
constexpr std::string_view kMariaSession[] = {
    "SET SESSION sql_mode = 'STRICT_ALL_TABLES,NO_BACKSLASH_ESCAPES,NO_AUTO_VALUE_ON_ZERO'",
    "SET SESSION innodb_lock_wait_timeout = 1, lock_wait_timeout = 1",
    "SET SESSION TRANSACTION ISOLATION LEVEL READ COMMITTED"};
constexpr std::string_view kSqlServerSession[] = {"SET LOCK_TIMEOUT 200", "SET XACT_ABORT OFF"};

constexpr std::array<Dialect, 3> kDialects = {{
    {.name = "PostgreSQL",
     .openQuote = '"',
     .closeQuote = '"',
     .newId = Dialect::NewId::Returning,
     .limit = Dialect::Limit::Limit,
     .givenIds = Dialect::GivenIds::MoveSequence,
     .survives = Dialect::Survives::Nothing,
     .textNumbers = true,
     .sendsBegin = true,
     .utf8Texts = false,
     .storesNul = false,
     .nullsLast = true,
     .rowsAs = Dialect::RowsAs::Arrays,
     .columns =
         "SELECT attname, format_type(atttypid, -1), (SELECT quote_ident(nspname) || '.' || quote_ident(collname) "
         "FROM pg_collation c JOIN pg_namespace n ON n.oid = c.collnamespace WHERE c.oid = attcollation) "
         "FROM pg_attribute WHERE attrelid = to_regclass('\"{}\"') AND attnum > 0 AND NOT attisdropped",
     .echo = "SELECT CAST(? AS text)",
     .lastId = "SELECT pg_sequence_last_value(pg_get_serial_sequence('\"{}\"', 'ID')::regclass)",
     .emptyRow = " DEFAULT VALUES",
     .mostParameters = 7000,  // the driver's library takes a description of 30000 bytes for a broken connection
     .session = kPostgresSession},
    {.name = "MariaDB",
     .openQuote = '`',
     .closeQuote = '`',
     .newId = Dialect::NewId::Returning,
     .limit = Dialect::Limit::Limit,
     .givenIds = Dialect::GivenIds::Nothing,
     .survives = Dialect::Survives::MostErrors,
     .textNumbers = false,
     .sendsBegin = false,
     .utf8Texts = true,   // a unit with the low byte D8 to DB, as of Ø, is half a character to it
     .storesNul = false,  // the server does; its driver cuts a text at NUL when it is read
     .nullsLast = false,
     .rowsAs = Dialect::RowsAs::Json,
     .columns = "SELECT COLUMN_NAME, DATA_TYPE, COLLATION_NAME FROM information_schema.COLUMNS "
                "WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = '{}'",
     .echo = "SELECT ?",
     .lastId = "SELECT AUTO_INCREMENT - 1 FROM information_schema.TABLES WHERE TABLE_SCHEMA = DATABASE() AND "
               "TABLE_NAME = '{}'",
     .emptyRow = " () VALUES ()",
     .mostParameters = 20000,
     .session = kMariaSession},
    {.name = "Microsoft SQL Server",
     .openQuote = '[',
     .closeQuote = ']',
     .newId = Dialect::NewId::ScopeIdentity,
     .limit = Dialect::Limit::Top,
     .givenIds = Dialect::GivenIds::IdentityInsert,
     .survives = Dialect::Survives::RefusedRows,
     .textNumbers = false,
     .sendsBegin = false,
     .utf8Texts = false,
     .storesNul = true,
     .nullsLast = false,
     .rowsAs = Dialect::RowsAs::Nothing,
     .columns = {},
     .echo = "SELECT CAST(? AS nvarchar(20))",
     .lastId = "SELECT IDENT_CURRENT('{}')",
     .emptyRow = " DEFAULT VALUES",
     .mostParameters = 2000,
     .session = kSqlServerSession},
}};

/// SQLSTATEs (or how they begin) and the servers' own numbers; 0 stands for every number.
constexpr struct {
    std::string_view state;
    int native;
    Failure failure;
} kFailures[] = {
    {"28", 0, Failure::NotAdmitted},
    {"", 1045, Failure::NotAdmitted},   // MariaDB
    {"", 18456, Failure::NotAdmitted},  // SQL Server
    {kSilentState, 0, Failure::Silent},
    {"08", 0, Failure::Gone},
    {"57P0", 0, Failure::Gone},
    {"42501", 0, Failure::NotPermitted},  // PostgreSQL; the others' numbers:
    {"", 1044, Failure::NotPermitted},    // MariaDB: to the database
    {"", 1142, Failure::NotPermitted},    // MariaDB: to the table
    {"", 1143, Failure::NotPermitted},    // MariaDB: to the column
    {"", 1227, Failure::NotPermitted},    // MariaDB: a privilege of the server
    {"", 229, Failure::NotPermitted},     // SQL Server: to the table
    {"", 230, Failure::NotPermitted},     // SQL Server: to the column
    {"", 262, Failure::NotPermitted},     // SQL Server: in the database
    {"", 916, Failure::NotPermitted},     // SQL Server: to the database
    {"", 1088, Failure::NotPermitted},    // SQL Server: SET IDENTITY_INSERT wants the right to alter the table
    {"25006", 0, Failure::ReadOnly},
    {"", 1290, Failure::ReadOnly},  // MariaDB: a server started for reading only
    {"", 1792, Failure::ReadOnly},  // MariaDB: a transaction for reading only
    {"", 1836, Failure::ReadOnly},  // MariaDB: read-only mode
    {"", 1036, Failure::ReadOnly},  // MariaDB: a table for reading only
    {"", 3906, Failure::ReadOnly},  // SQL Server
    {"53100", 0, Failure::Full},
    {"", 1021, Failure::Full},      // MariaDB: its disk
    {"", 1114, Failure::Full},      // MariaDB: a table, as its disk is
    {"", 1226, Failure::Full},      // MariaDB: a limit of the user's
    {"", 1101, Failure::Full},      // SQL Server: a file group
    {"", 1105, Failure::Full},      // SQL Server: a file group
    {"", 9002, Failure::Full},      // SQL Server: the log
    {"53", 0, Failure::Unwell},     // PostgreSQL: memory, connections
    {"57014", 0, Failure::Unwell},  // PostgreSQL: told to stop, or its time is over
    {"58", 0, Failure::Unwell},     // PostgreSQL: input and output
    {"XX", 0, Failure::Unwell},     // PostgreSQL: damage
    {"", 1026, Failure::Unwell},    // MariaDB: writing
    {"", 1030, Failure::Unwell},    // MariaDB: the storage engine
    {"", 1034, Failure::Unwell},    // MariaDB: an index
    {"", 1037, Failure::Unwell},    // MariaDB: memory
    {"", 1194, Failure::Unwell},    // MariaDB: a damaged table
    {"", 1317, Failure::Unwell},    // MariaDB: told to stop
    {"", 1969, Failure::Unwell},    // MariaDB: its time is over
    {"", 701, Failure::Unwell},     // SQL Server: memory
    {"", 823, Failure::Unwell},     // SQL Server: input and output
    {"", 824, Failure::Unwell},     // SQL Server: a damaged page
    {"23505", 0, Failure::DuplicateKey},
    {"23000", 1062, Failure::DuplicateKey},
    {"23000", 2601, Failure::DuplicateKey},
    {"23000", 2627, Failure::DuplicateKey},
    {"22001", 0, Failure::TextTooLong},
    {"", 1406, Failure::TextTooLong},  // MariaDB
    {"", 2628, Failure::TextTooLong},  // SQL Server, from 2019 on; before, and still in some settings:
    {"", 8152, Failure::TextTooLong},
    {"22003", 0, Failure::WrongType},
    {"22005", 0, Failure::WrongType},
    {"22007", 0, Failure::WrongType},
    {"22008", 0, Failure::WrongType},
    {"22018", 0, Failure::WrongType},
    {"22P02", 0, Failure::WrongType},
    {"42P01", 0, Failure::UnknownTable},
    {"42S02", 0, Failure::UnknownTable},
    {"42703", 0, Failure::UnknownField},
    {"42S22", 0, Failure::UnknownField},
    {"55P03", 0, Failure::Locked},
    {"40P01", 0, Failure::Deadlock},
    {"40001", 0, Failure::Deadlock},
    {"", 1205, Failure::Locked},    // MariaDB; SQL Server's deadlock of that number has the state 40001
    {"", 1213, Failure::Deadlock},  // MariaDB
    {"", 1222, Failure::Locked},    // SQL Server
    {"", 2006, Failure::Gone},      // MariaDB: server has gone away
    {"", 2013, Failure::Gone},      // MariaDB: lost connection
    {"", 1927, Failure::Gone},      // MariaDB: connection was killed
    {"", 20003, Failure::Gone},     // FreeTDS: timed out
    {"", 20006, Failure::Gone},     // FreeTDS: write failed
    {"", 20047, Failure::Gone},     // FreeTDS: dead
};

/// The number of a value that is a whole number, wherever it comes from.
std::optional<double> numberOf(const Value& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
    if (const auto* number = std::get_if<double>(&value)) return *number;
    return std::nullopt;
}

}  // namespace

const Dialect* dialectNamed(std::string_view dbms) {
    const auto* const found = std::find_if(kDialects.begin(), kDialects.end(), [&](const Dialect& dialect) {
        return startsWithNoCase(dbms, dialect.name);
    });
    return found == kDialects.end() ? nullptr : found;
}

Failure failureOf(const ServerError& error) {
    // PostgreSQL's driver has one state for every connection that is not made; the server's own refusal is "FATAL".
    if (error.state == "08001" && error.description.find("FATAL:") != std::string::npos) return Failure::NotAdmitted;
    for (const auto& row : kFailures) {
        if (error.state.starts_with(row.state) && (row.native == 0 || row.native == error.native)) return row.failure;
    }
    return Failure::Other;
}

int errorNumber(Failure failure) {
    switch (failure) {
        case Failure::DuplicateKey:
            return errors::kDuplicateKey;
        case Failure::TextTooLong:
            return errors::kTextTooLong;
        case Failure::WrongType:
            return errors::kWrongType;
        case Failure::UnknownTable:
            return errors::kUnknownTable;
        case Failure::UnknownField:
            return errors::kUnknownField;
        case Failure::Locked:
        case Failure::Deadlock:
            return errors::kLocked;
        case Failure::Gone:
            return errors::kServerGone;
        case Failure::Silent:
            return errors::kServerSilent;
        case Failure::NotAdmitted:
            return errors::kWrongPassword;
        case Failure::NotPermitted:
            return errors::kNotPermitted;
        case Failure::ReadOnly:
            return errors::kReadOnly;
        case Failure::Full:
            return errors::kDiskFull;
        case Failure::Unwell:
            return errors::kServerUnwell;
        case Failure::Other:
            break;
    }
    return errors::kInternal;
}

bool liesWithServer(Failure failure) { return failure >= Failure::NotAdmitted; }

bool survives(const Dialect& dialect, Failure failure) {
    // A transaction that waits for a lock lets its own locks go, so that two such cannot wait for each other.
    if (failure == Failure::Locked || failure == Failure::Deadlock) return false;
    switch (dialect.survives) {
        case Dialect::Survives::Nothing:
            return false;
        case Dialect::Survives::RefusedRows:
            return failure == Failure::DuplicateKey || failure == Failure::TextTooLong;
        case Dialect::Survives::MostErrors:
            break;
    }
    return true;
}

std::string quotedName(const Dialect& dialect, std::string_view name) {
    std::string quoted(1, dialect.openQuote);
    for (const char c : name) {
        if (c == dialect.closeQuote) quoted += c;
        quoted += c;
    }
    return quoted += dialect.closeQuote;
}

std::string parameterMark(const Dialect& dialect, const Value& value) {
    constexpr double kLargestSmall = 32767;
    constexpr double kLargestBig = 9e18;
    const auto number = numberOf(value);
    if (!dialect.textNumbers || !number) return "?";
    // A text of digits takes the type of the column; one that does not fit that type would be an error, not a miss.
    if (*number != std::trunc(*number) || std::fabs(*number) >= kLargestBig) return "CAST(? AS double precision)";
    return std::fabs(*number) <= kLargestSmall ? "?" : "CAST(? AS bigint)";
}

}  // namespace kolmera
