#include "platform/engine/odbc/odbcstatement.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "platform/engine/odbc/widetext.h"
#include "platform/lettercase.h"

namespace kolmera {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "the driver manager's wide characters are UTF-16");

namespace {

constexpr std::size_t kLongestShortText = 4000;  // characters; longer ones are sent as long texts
constexpr std::size_t kBufferUnits = 2048;
constexpr std::size_t kCellUnits = 256;  // of a bound column, with the NUL at its end

SQLWCHAR* wideText(std::u16string& text) { return reinterpret_cast<SQLWCHAR*>(text.data()); }

template <typename Number>
std::string digits(Number value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

/// Some drivers hand a message's UTF-8 bytes on as one character each.
std::string readable(std::u16string_view message) {
    std::string bytes;
    for (const char16_t unit : message) {
        if (unit > 0xFF) return fromWide(message);
        bytes += static_cast<char>(unit);
    }
    return toWide(bytes).find(u'\xFFFD') == std::u16string::npos ? bytes : fromWide(message);
}

/// What a message says to the user: not who passed it on ("[unixODBC][Driver]" before it, "Error while ..." on a line
/// of its own behind it).
std::string_view withoutFrame(std::string_view message) {
    while (message.starts_with('[') && message.find(']') != std::string_view::npos) {
        message.remove_prefix(message.find(']') + 1);
    }
    message = message.substr(0, message.find(";\nError while"));
    return message.substr(0, message.find_last_not_of(" \r\n") + 1);
}

// Values as they come.

Value wholeValue(SQLBIGINT whole, FieldType type) {
    if (type == FieldType::Boolean) return whole != 0;
    return static_cast<std::int64_t>(whole);
}

Value numberValue(double number, FieldType type) {
    return type == FieldType::Single ? static_cast<double>(static_cast<float>(number)) : number;
}

/// A number that comes as text. A Single is read as what it is: the double nearest to its digits is another number.
Value digitsValue(std::string_view text, FieldType type) {
    if (type == FieldType::Single) {
        float number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        return static_cast<double>(number);
    }
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

Value dateValue(const SQL_DATE_STRUCT& date) {
    const auto day = Date::fromCivil(date.year, date.month, date.day);
    return day ? Value(*day) : Value();
}

/// Whether a driver gives a column once more that it has put into its buffer, and any column at any time.
bool reReadsColumns(SQLHDBC connection) {
    constexpr SQLUINTEGER kNeeded = SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER | SQL_GD_BOUND;
    SQLUINTEGER can = 0;
    const SQLRETURN code = SQLGetInfo(connection, SQL_GETDATA_EXTENSIONS, &can, sizeof can, nullptr);
    return SQL_SUCCEEDED(code) && (can & kNeeded) == kNeeded;
}

struct OdbcType {
    int type;
    FieldType field;
};
constexpr OdbcType kTypes[] = {
    {SQL_BIT, FieldType::Boolean},         {SQL_TINYINT, FieldType::Byte},   {SQL_SMALLINT, FieldType::Integer},
    {SQL_INTEGER, FieldType::Long},        {SQL_BIGINT, FieldType::Long},    {SQL_NUMERIC, FieldType::Currency},
    {SQL_DECIMAL, FieldType::Currency},    {SQL_REAL, FieldType::Single},    {SQL_FLOAT, FieldType::Double},
    {SQL_DOUBLE, FieldType::Double},       {SQL_TYPE_DATE, FieldType::Date}, {SQL_DATE, FieldType::Date},
    {SQL_TYPE_TIMESTAMP, FieldType::Date}, {SQL_TIMESTAMP, FieldType::Date}, {SQL_CHAR, FieldType::Text},
    {SQL_VARCHAR, FieldType::Text},        {SQL_WCHAR, FieldType::Text},     {SQL_WVARCHAR, FieldType::Text},
};

}  // namespace

ServerError odbcError(SQLSMALLINT kind, SQLHANDLE handle) {
    std::u16string state(6, u'\0');
    std::u16string message(2000, u'\0');
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const SQLRETURN code = SQLGetDiagRecW(kind, handle, 1, wideText(state), &native, wideText(message),
                                          static_cast<SQLSMALLINT>(message.size()), &length);
    if (!SQL_SUCCEEDED(code)) return {"HY000", 0, "the driver reports an error without a description"};
    message.resize(std::min(message.size(), static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0))));
    state.resize(5);
    return {fromWide(state), native, std::string(withoutFrame(readable(message)))};
}

FieldDef fieldOfOdbcType(std::string_view name, int type, std::string_view typeName, std::int64_t size) {
    FieldDef field{.name = std::string(name), .type = FieldType::Memo};
    const auto* const found =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const OdbcType& row) { return row.type == type; });
    if (found != std::end(kTypes)) field.type = found->field;
    if (equalNoCase(typeName, "bool") || equalNoCase(typeName, "boolean")) field.type = FieldType::Boolean;
    if (field.type != FieldType::Text) return field;
    if (size > 0 && size <= static_cast<std::int64_t>(kLongestShortText)) {
        field.size = static_cast<int>(size);
    } else {
        field.type = FieldType::Memo;
    }
    return field;
}

OdbcStatement::OdbcStatement(SQLHDBC connection, const Dialect& dialect) : dialect_(dialect) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection, &handle_))) {
        error_ = odbcError(SQL_HANDLE_DBC, connection);
    }
    reReads_ = reReadsColumns(connection);
}

OdbcStatement::~OdbcStatement() {
    if (handle_ != SQL_NULL_HSTMT) SQLFreeHandle(SQL_HANDLE_STMT, handle_);
}

bool OdbcStatement::good(SQLRETURN code) {
    if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) return true;
    if (!error_) error_ = odbcError(SQL_HANDLE_STMT, handle_);
    return false;
}

std::optional<ServerError> OdbcStatement::prepare(std::string_view text) {
    std::u16string wide = toWide(text);
    if (!error_) good(SQLPrepareW(handle_, wideText(wide), static_cast<SQLINTEGER>(wide.size())));
    return takeError();
}

std::optional<ServerError> OdbcStatement::run(std::span<const Value> parameters, std::span<const FieldType> types,
                                              StatementResult& result) {
    bound_.clear();
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (!bind(static_cast<SQLUSMALLINT>(i + 1), parameters[i])) return takeError();
    }
    return readAnswer(SQLExecute(handle_), types, result);
}

std::optional<ServerError> OdbcStatement::runDirect(std::string_view text, StatementResult& result) {
    std::u16string wide = toWide(text);
    if (error_) return takeError();
    return readAnswer(SQLExecDirectW(handle_, wideText(wide), static_cast<SQLINTEGER>(wide.size())), {}, result);
}

std::optional<ServerError> OdbcStatement::readAnswer(SQLRETURN code, std::span<const FieldType> types,
                                                     StatementResult& result) {
    if (good(code)) {
        SQLLEN touched = 0;
        SQLRowCount(handle_, &touched);
        result.touched = touched;
        if (fetchAll(types, result)) finish(types, result);
    }
    SQLFreeStmt(handle_, SQL_CLOSE);
    return takeError();
}

/// An error in a later part of a statement is told only when the parts before it have been taken. The rows are those of
/// the first part that has any.
void OdbcStatement::finish(std::span<const FieldType> types, StatementResult& result) {
    SQLRETURN code = SQLMoreResults(handle_);
    while (code != SQL_NO_DATA && good(code)) {
        if (result.rows.empty() && !fetchAll(types, result)) return;
        code = SQLMoreResults(handle_);
    }
}

// Parameters.

bool OdbcStatement::bind(SQLUSMALLINT parameter, const Value& value) {
    Bound& bound = bound_.emplace_back();
    if (isNull(value)) {
        bound.length = SQL_NULL_DATA;
        return good(SQLBindParameter(handle_, parameter, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WVARCHAR, 1, 0, nullptr, 0,
                                     &bound.length));
    }
    if (const auto* date = std::get_if<Date>(&value)) {
        const std::string iso = date->iso();
        bound.date = {static_cast<SQLSMALLINT>(std::stoi(iso.substr(0, 4))),
                      static_cast<SQLUSMALLINT>(std::stoi(iso.substr(5, 2))),
                      static_cast<SQLUSMALLINT>(std::stoi(iso.substr(8, 2)))};
        bound.length = sizeof bound.date;
        return good(SQLBindParameter(handle_, parameter, SQL_PARAM_INPUT, SQL_C_TYPE_DATE, SQL_TYPE_DATE, 10, 0,
                                     &bound.date, 0, &bound.length));
    }
    if (const auto* number = std::get_if<double>(&value)) return bindNumber(parameter, bound, *number);
    if (const auto* text = std::get_if<std::string>(&value)) {
        return bindText(parameter, bound, *text);
    }
    const auto* yes = std::get_if<bool>(&value);
    bound.whole = yes != nullptr ? static_cast<SQLBIGINT>(*yes) : std::get<std::int64_t>(value);
    if (dialect_.textNumbers) {
        return bindText(parameter, bound, digits(bound.whole));
    }
    bound.length = sizeof bound.whole;
    return good(SQLBindParameter(handle_, parameter, SQL_PARAM_INPUT, SQL_C_SBIGINT, SQL_BIGINT, 0, 0, &bound.whole, 0,
                                 &bound.length));
}

bool OdbcStatement::bindText(SQLUSMALLINT parameter, Bound& bound, std::string_view text) {
    if (dialect_.utf8Texts) {
        bound.narrow = text;
        const SQLSMALLINT type = text.size() <= kLongestShortText ? SQL_VARCHAR : SQL_LONGVARCHAR;
        bound.length = static_cast<SQLLEN>(text.size());
        return good(SQLBindParameter(handle_, parameter, SQL_PARAM_INPUT, SQL_C_CHAR, type,
                                     std::max<std::size_t>(text.size(), 1), 0, bound.narrow.data(), bound.length,
                                     &bound.length));
    }
    bound.wide = toWide(text);
    const std::size_t size = bound.wide.size();
    const SQLSMALLINT type = size <= kLongestShortText ? SQL_WVARCHAR : SQL_WLONGVARCHAR;
    bound.length = static_cast<SQLLEN>(size * sizeof(SQLWCHAR));
    return good(SQLBindParameter(handle_, parameter, SQL_PARAM_INPUT, SQL_C_WCHAR, type, std::max<std::size_t>(size, 1),
                                 0, bound.wide.data(), bound.length, &bound.length));
}

/// As few digits as give the same number again, where numbers go as texts.
bool OdbcStatement::bindNumber(SQLUSMALLINT parameter, Bound& bound, double value) {
    if (dialect_.textNumbers) {
        return bindText(parameter, bound, digits(value));
    }
    bound.number = value;
    bound.length = sizeof bound.number;
    return good(SQLBindParameter(handle_, parameter, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DOUBLE, 0, 0, &bound.number, 0,
                                 &bound.length));
}

// Rows.

bool OdbcStatement::fetchAll(std::span<const FieldType> types, StatementResult& result) {
    SQLSMALLINT columns = 0;
    if (!good(SQLNumResultCols(handle_, &columns))) return false;
    if (columns == 0) return true;
    std::vector<FieldType> described;
    if (types.empty()) {
        if (!describe(columns, result)) return false;
        for (const FieldDef& field : result.fields) described.push_back(field.type);
        types = described;
    }
    const bool bound = described.empty() && reReads_ && types.size() == static_cast<std::size_t>(columns);
    if (bound && !bindCells(types)) return false;
    for (;;) {
        const SQLRETURN code = SQLFetch(handle_);
        if (code == SQL_NO_DATA) return true;
        if (!good(code)) return false;
        std::vector<Value>& row = result.rows.emplace_back(types.size());
        for (std::size_t i = 0; i < types.size(); ++i) {
            const auto column = static_cast<SQLUSMALLINT>(i + 1);
            if (!(bound ? takeCell(column, cells_[i], row[i]) : read(column, types[i], row[i]))) return false;
        }
    }
}

/// The columns stay bound when the statement is run again.
bool OdbcStatement::bindCells(std::span<const FieldType> types) {
    if (std::ranges::equal(cells_, types, {}, &Cell::type)) return true;
    if (!good(SQLFreeStmt(handle_, SQL_UNBIND))) return false;
    cells_.clear();
    for (const FieldType type : types) {
        Cell& cell = cells_.emplace_back();
        cell.type = type;
        if (bindCell(static_cast<SQLUSMALLINT>(cells_.size()), cell)) continue;
        cells_.clear();
        return false;
    }
    return true;
}

bool OdbcStatement::bindCell(SQLUSMALLINT column, Cell& cell) {
    const auto bindTo = [&](SQLSMALLINT kind, void* place, std::size_t size) {
        return good(SQLBindCol(handle_, column, kind, place, static_cast<SQLLEN>(size), &cell.length));
    };
    const bool isText = cell.type == FieldType::Text;
    if (comesAsDigits(cell.type) || (isText && dialect_.utf8Texts)) {
        cell.narrow.resize(kCellUnits);
        return bindTo(SQL_C_CHAR, cell.narrow.data(), cell.narrow.size());
    }
    switch (cell.type) {
        case FieldType::Boolean:
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            return bindTo(SQL_C_SBIGINT, &cell.whole, sizeof cell.whole);
        case FieldType::Single:
        case FieldType::Double:
            return bindTo(SQL_C_DOUBLE, &cell.number, sizeof cell.number);
        case FieldType::Date:
            return bindTo(SQL_C_TYPE_DATE, &cell.date, sizeof cell.date);
        case FieldType::Text:
            cell.wide.resize(kCellUnits);
            return bindTo(SQL_C_WCHAR, cell.wide.data(), cell.wide.size() * sizeof(SQLWCHAR));
        case FieldType::Currency:
        case FieldType::Memo:
            break;
    }
    return true;  // a long text is asked for by itself
}

/// What does not fit the buffer is asked for by itself, too.
bool OdbcStatement::takeCell(SQLUSMALLINT column, Cell& cell, Value& into) {
    if (cell.type == FieldType::Memo) return read(column, cell.type, into);
    if (cell.length == SQL_NULL_DATA) {
        into = Null{};
        return true;
    }
    const bool isText = !cell.narrow.empty() || !cell.wide.empty();
    const std::size_t unit = cell.wide.empty() ? 1 : sizeof(SQLWCHAR);
    const bool whole = cell.length >= 0 && static_cast<std::size_t>(cell.length) / unit < kCellUnits;
    if (isText && !whole) return read(column, cell.type, into);
    const std::size_t units = static_cast<std::size_t>(cell.length) / unit;
    if (!cell.wide.empty()) {
        into = fromWide(std::u16string_view(cell.wide).substr(0, units));
    } else if (cell.type == FieldType::Text) {
        into = cell.narrow.substr(0, units);
    } else if (!cell.narrow.empty()) {
        into = digitsValue(std::string_view(cell.narrow).substr(0, units), cell.type);
    } else if (cell.type == FieldType::Date) {
        into = dateValue(cell.date);
    } else if (cell.type == FieldType::Single || cell.type == FieldType::Double) {
        into = numberValue(cell.number, cell.type);
    } else {
        into = wholeValue(cell.whole, cell.type);
    }
    return true;
}

bool OdbcStatement::describe(SQLSMALLINT columns, StatementResult& result) {
    if (columns < 0 && !good(SQLNumResultCols(handle_, &columns))) return false;
    for (SQLSMALLINT i = 1; i <= columns; ++i) {
        std::u16string name(256, u'\0');
        SQLSMALLINT length = 0;
        SQLSMALLINT type = 0;
        SQLSMALLINT decimals = 0;
        SQLSMALLINT nullable = 0;
        SQLULEN size = 0;
        if (!good(SQLDescribeColW(handle_, static_cast<SQLUSMALLINT>(i), wideText(name),
                                  static_cast<SQLSMALLINT>(name.size()), &length, &type, &size, &decimals,
                                  &nullable))) {
            return false;
        }
        name.resize(std::min(name.size(), static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0))));
        result.fields.push_back(fieldOfOdbcType(fromWide(name), type, {}, static_cast<std::int64_t>(size)));
    }
    return true;
}

bool OdbcStatement::read(SQLUSMALLINT column, FieldType type, Value& into) {
    if (comesAsDigits(type)) return readDigits(column, type, into);
    switch (type) {
        case FieldType::Boolean:
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            return readWhole(column, type, into);
        case FieldType::Single:
        case FieldType::Double:
            return readNumber(column, type, into);
        case FieldType::Date:
            return readDate(column, into);
        case FieldType::Currency:
        case FieldType::Text:
        case FieldType::Memo:
            break;
    }
    return readText(column, into);
}

bool OdbcStatement::readWhole(SQLUSMALLINT column, FieldType type, Value& into) {
    SQLBIGINT whole = 0;
    SQLLEN length = 0;
    if (!good(SQLGetData(handle_, column, SQL_C_SBIGINT, &whole, sizeof whole, &length))) return false;
    into = length == SQL_NULL_DATA ? Value() : wholeValue(whole, type);
    return true;
}

bool OdbcStatement::readNumber(SQLUSMALLINT column, FieldType type, Value& into) {
    double number = 0;
    SQLLEN length = 0;
    if (!good(SQLGetData(handle_, column, SQL_C_DOUBLE, &number, sizeof number, &length))) return false;
    into = length == SQL_NULL_DATA ? Value() : numberValue(number, type);
    return true;
}

bool OdbcStatement::readDigits(SQLUSMALLINT column, FieldType type, Value& into) {
    std::array<char, 400> text{};
    SQLLEN length = 0;
    if (!good(SQLGetData(handle_, column, SQL_C_CHAR, text.data(), text.size(), &length))) return false;
    const std::size_t digits = std::min(static_cast<std::size_t>(std::max<SQLLEN>(length, 0)), text.size() - 1);
    into = length < 0 ? Value() : digitsValue({text.data(), digits}, type);
    return true;
}

bool OdbcStatement::readDate(SQLUSMALLINT column, Value& into) {
    SQL_DATE_STRUCT date = {};
    SQLLEN length = 0;
    if (!good(SQLGetData(handle_, column, SQL_C_TYPE_DATE, &date, sizeof date, &length))) return false;
    into = length == SQL_NULL_DATA ? Value() : dateValue(date);
    return true;
}

/// Long texts come in pieces, each closed by a NUL that does not belong to it.
template <typename Text>
bool OdbcStatement::readPieces(SQLUSMALLINT column, SQLSMALLINT type, Text& buffer, Text& whole, bool& null) {
    constexpr std::size_t kUnit = sizeof(typename Text::value_type);
    buffer.resize(kBufferUnits);
    for (;;) {
        SQLLEN length = 0;
        const SQLRETURN code =
            SQLGetData(handle_, column, type, buffer.data(), static_cast<SQLLEN>(buffer.size() * kUnit), &length);
        if (!good(code)) return false;
        null = length == SQL_NULL_DATA;
        if (null || code == SQL_NO_DATA) return true;
        const std::size_t most = buffer.size() - 1;
        const bool more = length == SQL_NO_TOTAL || static_cast<std::size_t>(length) / kUnit > most;
        whole.append(buffer, 0, more ? most : static_cast<std::size_t>(length) / kUnit);
        if (!more) return true;
    }
}

bool OdbcStatement::readText(SQLUSMALLINT column, Value& into) {
    bool null = false;
    if (dialect_.utf8Texts) {
        std::string text;
        if (!readPieces(column, SQL_C_CHAR, buffer_, text, null)) return false;
        into = null ? Value() : Value(std::move(text));
        return true;
    }
    std::u16string text;
    if (!readPieces(column, SQL_C_WCHAR, wideBuffer_, text, null)) return false;
    into = null ? Value() : Value(fromWide(text));
    return true;
}

}  // namespace kolmera
