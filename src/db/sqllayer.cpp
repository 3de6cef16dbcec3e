#include "db/sqllayer.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <thread>

#include "db/companyschema.h"
#include "db/conversions.h"
#include "db/serverregister.h"
#include "db/sqltexts.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr std::size_t kRegisteredNameLength = 50;
constexpr std::size_t kMaxKeys = 5;
constexpr std::string_view kColumnSeparator = ", ";

/// Waits in short slices, so that a window stays alive meanwhile.
/// False as soon as `meanwhile`, which is called again and again, says so.
bool pauseFor(std::chrono::milliseconds time, const std::function<bool()>& meanwhile) {
    constexpr std::chrono::milliseconds kSlice(20);
    for (; time.count() > 0; time -= kSlice) {
        if (!meanwhile()) return false;
        std::this_thread::sleep_for(std::min(time, kSlice));
    }
    return true;
}

/// The table that an action statement changes, as it is called when it fails; the statement's first word when it names
/// none.
std::string_view changedTable(std::string_view statement) {
    const auto nextWord = [&statement] {
        statement.remove_prefix(std::min(statement.find_first_not_of(' '), statement.size()));
        const std::string_view word = statement.substr(0, statement.find(' '));
        statement.remove_prefix(word.size());
        return word;
    };
    const std::string_view first = nextWord();
    if (equalNoCase(first, "UPDATE")) return nextWord();
    const std::string_view second = nextWord();
    return equalNoCase(second, "FROM") || equalNoCase(second, "INTO") ? nextWord() : first;
}

/// Behind the quoted text that begins at a place; the next place when the quote is never closed.
std::size_t behindQuoted(std::string_view text, std::size_t place) {
    const std::size_t end = text.find(text[place], place + 1);
    return (end == std::string_view::npos ? place : end) + 1;
}

/// Place of `wanted` (ASCII, upper case) in a statement, letter case not counting. Quoted texts are values, whatever
/// words they hold.
std::size_t findWord(std::string_view statement, std::string_view wanted) {
    const auto same = [](char a, char b) { return (a >= 'a' && a <= 'z' ? a - ('a' - 'A') : a) == b; };
    for (std::size_t place = 0; place < statement.size();) {
        if (statement[place] == '\'' || statement[place] == '"') {
            place = behindQuoted(statement, place);
        } else if (std::ranges::equal(statement.substr(place, wanted.size()), wanted, same)) {
            return place;
        } else {
            ++place;
        }
    }
    return std::string_view::npos;
}

/// Not where the answer would be the same, a lock-out for trying the password too often, or none again.
bool worthAnotherTry(const PlatformError& error) {
    return error.number() != errors::kWrongPassword && error.number() != errors::kNotPermitted &&
           error.number() != errors::kServerSilent;
}

}  // namespace

Database& SqlLayer::database() {
    if (!FtgDB) throw PlatformError(errors::kInternal, "No company database is open.");
    return *FtgDB;
}

// Mode and connection.

bool SqlLayer::ÄrSQLDatabas(std::string_view name) { return name.starts_with("SQL;"); }

bool SqlLayer::SQLServerSlåUpp(const std::filesystem::path& dataFolder, std::string_view name) {
    const std::string_view wanted = trimmed(firstCharacters(name, kRegisteredNameLength));
    serverError_.reset();
    try {
        for (const ServerCompany& server : registeredServers(dataFolder)) {
            if (!equalNoCase(server.name, wanted)) continue;
            connectString_ = server.connectString;
            return true;
        }
        serverError_ = PlatformError(errors::kFileNotFound, "no company of that name is registered in DVSQLSvr.ini");
    } catch (const PlatformError& error) {
        serverError_ = error;
    }
    return false;
}

/// One try: the connection, unless an earlier try made it, and a look at a table that every company has.
bool SqlLayer::tryServer(const ServerOptions& options) {
    try {
        if (!FtgDB) FtgDB = openServerDatabase(connectString_, options);
        // A dynaset asks the server for nothing before something is asked of it.
        static_cast<void>(SQLÖppnaRs("Syinställningar", RecordsetType::Dynaset, options::kReadOnly)->eof());
        return true;
    } catch (const PlatformError& error) {
        serverError_ = error;
        if (error.number() == errors::kServerGone || error.number() == errors::kServerSilent) FtgDB.reset();
        return false;
    }
}

bool SqlLayer::SQLÖppnaServer(const std::function<void()>& letEventsRunMeanwhile,
                              const std::function<bool()>& waitForLock,
                              const std::function<bool(std::chrono::milliseconds)>& waitForAnswer) {
    const ServerOptions options{
        .locale = locale_, .wait = waitForLock, .waitForAnswer = waitForAnswer, .tables = companySchema()};
    constexpr int kTries = 4;
    constexpr std::chrono::seconds kBetweenTries(1);
    serverError_.reset();
    FtgDB.reset();
    bool givenUp = false;
    const auto meanwhile = [&] {
        if (letEventsRunMeanwhile) letEventsRunMeanwhile();
        givenUp = givenUp || (waitForAnswer && !waitForAnswer({}));
        return !givenUp;
    };
    for (int tries = 1; !tryServer(options); ++tries) {
        if (tries < kTries && worthAnotherTry(*serverError_) && pauseFor(kBetweenTries, meanwhile)) continue;
        FtgDB.reset();
        return false;
    }
    return true;
}

std::vector<std::string> SqlLayer::SQLServerLista(const std::filesystem::path& dataFolder) {
    std::vector<std::string> rows;
    std::error_code unreadable;
    if (!std::filesystem::exists(serverRegisterFile(dataFolder), unreadable)) return rows;
    PassedOverSilently passedOver;
    attempt(passedOver, "SQLServerLista", [&] {
        for (const ServerCompany& server : registeredServers(dataFolder)) {
            rows.push_back(server.name + "\t" + server.description);
        }
    });
    return rows;
}

// Opening recordsets.

std::unique_ptr<Recordset> SqlLayer::SQLÖppnaRs(std::string_view source, RecordsetType type, std::int32_t options) {
    if (ÄrSQLFöretag) {
        if (type == RecordsetType::Table) type = RecordsetType::Dynaset;
        options |= options::kSeeChanges;
    }
    return database().open(source, type, options);
}

std::unique_ptr<Recordset> SqlLayer::SQLÖppnaTabell(std::string_view table, std::string_view index,
                                                    std::int32_t options, bool ordered) {
    if (ÄrSQLFöretag && ordered) {
        lastStatement_ = fmt::format("SELECT * FROM {} ORDER BY {}", table, SQLIndexKolumner(table, index));
        return SQLÖppnaRs(lastStatement_, RecordsetType::Dynaset, options);
    }
    std::unique_ptr<Recordset> recordset = SQLÖppnaRs(table, RecordsetType::Table, options);
    SQLSättIndex(*recordset, index);
    return recordset;
}

void SqlLayer::SQLSättIndex(Recordset& recordset, std::string_view index) {
    if (ÄrSQLFöretag) {
        recordset.setSort(SQLIndexSortering(recordset, index));
    } else {
        recordset.setIndex(index);
    }
}

std::string SqlLayer::SQLIndexSortering(const Recordset& recordset, std::string_view index) {
    return SQLIndexKolumner(recordset.name(), index);
}

/// The field list of an index. A server's engine may run out of resources for a moment and says so by error 7: the list
/// is then read again, at once and up to four more times with a pause behind each failure. Every other error ends the
/// look-up with an empty list.
std::string SqlLayer::indexFields(std::string_view table, std::string_view index) {
    constexpr int kOutOfResources = 7;
    constexpr int kReads = 6;
    for (int reads = 1; reads <= kReads; ++reads) {
        try {
            const IndexDef* found = database().table(table).index(index);
            return found ? found->fields : std::string();
        } catch (const PlatformError& error) {
            if (error.number() != kOutOfResources) break;
        }
        if (reads <= 2) continue;
        static_cast<void>(pauseFor(std::chrono::milliseconds(100), [this] {
            if (letEventsRun) letEventsRun();
            return true;
        }));
    }
    return {};
}

std::string SqlLayer::SQLIndexKolumner(std::string_view table, std::string_view index) {
    if (equalNoCase(index, "PrimaryKey")) return "ID";
    const std::string fields = indexFields(table, index);
    return replaceAll(replaceAll(fields, "+", ""), ";", kColumnSeparator);
}

// Seeking.

void SqlLayer::SQLSök(Recordset& recordset, std::string_view comparison, Keys keys, PassedOver& passedOver) {
    const auto select = ÄrSQLFöretag ? SQLDelaSelect(recordset.name()) : std::nullopt;
    attempt(passedOver, select ? select->first : recordset.name(), [&] {
        if (ÄrSQLFöretag) {
            recordset.findFirst(SQLVillkor(recordset.name(), comparison, recordset.sort(), keys));
        } else {
            recordset.seek(comparison, keys);
        }
    });
}

bool SqlLayer::SQLSökIngenTräff(std::unique_ptr<Recordset>& recordset, std::string_view comparison, Keys keys) {
    if (!ÄrSQLFöretag) {
        recordset->seek(comparison, keys);
        return recordset->noMatch();
    }
    if (const Seek* const seek = comparison == "=" ? seekOf(*recordset, keys) : nullptr) {
        lastStatement_ = seek->statement;
        recordset = database().openWith(seek->statement, keys.first(seek->types.size()));
        return recordset->recordCount() == 0;
    }
    const auto& [table, order] =
        SQLDelaSelect(recordset->name()).value_or(std::pair(recordset->name(), recordset->sort()));
    lastStatement_ =
        fmt::format("SELECT * FROM {} WHERE {} ORDER BY {}", table, SQLVillkor(table, comparison, order, keys), order);
    recordset = SQLÖppnaRs(lastStatement_, RecordsetType::Dynaset);
    return recordset->recordCount() == 0;
}

/// Where every record seeks by the same columns, the statement is made once. nullptr for keys that have to be made
/// fit for their columns first, and where it brings nothing.
const SqlLayer::Seek* SqlLayer::seekOf(const Recordset& recordset, Keys keys) {
    constexpr std::int64_t kLargestSmall = 32767;  // larger numbers are written with their types
    if (!database().hasWindows()) return nullptr;
    std::string name = recordset.name();
    name.append(1, '\0').append(recordset.sort()).append(1, static_cast<char>(keys.size()));
    auto known = seeks_.find(name);
    if (known == seeks_.end()) {
        const auto& [table, order] =
            SQLDelaSelect(recordset.name()).value_or(std::pair(recordset.name(), recordset.sort()));
        Seek seek;
        std::string criteria;
        const TableDef& definition = database().table(table);
        for (const std::string& column : split(order, kColumnSeparator)) {
            const int ordinal = definition.ordinal(column);
            if (ordinal < 0 || seek.types.size() >= std::min(keys.size(), kMaxKeys)) break;
            criteria += fmt::format("{}{} = ?", criteria.empty() ? "" : " AND ", column);
            seek.types.push_back(definition.fields[static_cast<std::size_t>(ordinal)].type);
        }
        if (!seek.types.empty()) {
            seek.statement = fmt::format("SELECT * FROM {} WHERE {} ORDER BY {}", table, criteria, order);
        }
        known = seeks_.emplace(std::move(name), std::move(seek)).first;
    }
    const Seek& seek = known->second;
    if (seek.types.size() != keys.size()) return nullptr;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto* const whole = std::get_if<std::int64_t>(&keys[i]);
        const bool text = seek.types[i] == FieldType::Text && std::holds_alternative<std::string>(keys[i]);
        const bool small = whole != nullptr && *whole >= 0 && *whole <= kLargestSmall;
        const bool number = seek.types[i] == FieldType::Long || seek.types[i] == FieldType::Integer;
        if (!text && !(small && number)) return nullptr;
    }
    return &seek;
}

std::optional<std::pair<std::string, std::string>> SqlLayer::SQLDelaSelect(std::string_view statement) {
    constexpr std::string_view kFrom = "FROM ";
    constexpr std::string_view kOrder = "ORDER BY ";
    constexpr auto npos = std::string_view::npos;
    const std::size_t from = findWord(statement, kFrom);
    const std::size_t where = findWord(statement, "WHERE ");
    const std::size_t order = findWord(statement, kOrder);
    if (from == npos || (where == npos && order == npos)) return std::nullopt;
    const std::size_t tableStart = from + kFrom.size();
    const std::size_t tableEnd = (where != npos ? where : order) - 1;
    if (tableEnd == npos || tableEnd < tableStart) return std::nullopt;
    return std::pair(std::string(statement.substr(tableStart, tableEnd - tableStart)),
                     order == npos ? std::string() : std::string(statement.substr(order + kOrder.size())));
}

std::string SqlLayer::SQLVillkor(std::string_view table, std::string_view comparison, std::string_view orderColumns,
                                 Keys keys) {
    const auto& [tableName, order] =
        SQLDelaSelect(table).value_or(std::pair(std::string(table), std::string(orderColumns)));
    if (order.empty()) return {};
    const TableDef& definition = database().table(tableName);
    const std::vector<std::string> columns = split(order, kColumnSeparator);
    std::string criteria;
    for (std::size_t i = 0; i < columns.size() && i < std::min(keys.size(), kMaxKeys); ++i) {
        const int ordinal = definition.ordinal(columns[i]);
        if (ordinal < 0)
            throw PlatformError(errors::kUnknownField, "there is no such column").about(tableName + ", " + columns[i]);
        const FieldType type = definition.fields[static_cast<std::size_t>(ordinal)].type;
        if (i > 0) criteria += " AND ";
        criteria += fmt::format("{} {} {}", columns[i], comparison, SQLLiteral(keys[i], type));
    }
    return criteria;
}

// Literals and statements.

std::string SqlLayer::SQLText(std::string_view value) {
    const bool apostrophe = value.find('\'') != std::string_view::npos;
    const bool quote = value.find('"') != std::string_view::npos;
    if (apostrophe && quote) return fmt::format("'{}'", replaceAll(value, "'", "''"));
    return apostrophe ? fmt::format("\"{}\"", value) : fmt::format("'{}'", value);
}

std::string SqlLayer::SQLTalSng(float value) { return Locale(Locale::Kind::English).formatSingle(value); }

std::string SqlLayer::SQLTalDbl(double value) { return Locale(Locale::Kind::English).formatNumber(value); }

std::string SqlLayer::SQLDatum(Date value) const { return fmt::format("#{}#", locale_.formatDate(value)); }

namespace {

[[noreturn]] void refuse(const Value& value, const Locale& locale) {
    throw PlatformError(errors::kWrongType,
                        fmt::format("\"{}\" does not fit the type of the field.", TillText(value, locale)));
}

double numberOf(const Value& value, const Locale& locale) {
    const bool unreadableText = std::holds_alternative<std::string>(value) && !locale.parseNumber(textOf(value));
    if (isNull(value) || std::holds_alternative<Date>(value) || unreadableText) refuse(value, locale);
    return TillDbl(value, locale);
}

Date dateOf(const Value& value, const Locale& locale) {
    if (const auto* date = std::get_if<Date>(&value)) return *date;
    const std::optional<Date> read = locale.parseDate(textOf(value));
    if (!read) refuse(value, locale);
    return *read;
}

/// The plain text of a Boolean or whole number.
std::string plainText(const Value& value, const Locale& locale) {
    std::string text = TillText(value, locale);
    if (!equalNoCase(text, "True") && !equalNoCase(text, "False")) numberOf(value, locale);
    return text;
}

}  // namespace

std::string SqlLayer::SQLLiteral(const Value& value, FieldType type) const {
    switch (type) {
        case FieldType::Boolean:
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            return plainText(value, locale_);
        case FieldType::Single:
            return SQLTalSng(static_cast<float>(numberOf(value, locale_)));
        case FieldType::Double:
            return SQLTalDbl(numberOf(value, locale_));
        case FieldType::Date:
            return SQLDatum(dateOf(value, locale_));
        case FieldType::Currency:
        case FieldType::Text:
        case FieldType::Memo:
            break;
    }
    return SQLText(TillText(value, locale_));
}

bool SqlLayer::SQLKör(std::string_view statement, PassedOver& passedOver) { return SQLKör(statement, {}, passedOver); }

bool SqlLayer::SQLKör(std::string_view statement, std::span<const Value> parameters, PassedOver& passedOver) {
    return attempt(passedOver, changedTable(statement), [&] {
        if (ÄrSQLFöretag) {
            const BoundStatement bound = serverStatement(statement, parameters);
            database().execute(bound.text, bound.parameters, options::kPassThrough);
        } else {
            database().execute(statement, parameters);
        }
    });
}

}  // namespace kolmera
