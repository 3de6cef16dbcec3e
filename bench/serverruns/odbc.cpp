#include <array>
#include <charconv>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "wholeruns/sqlite.h"

namespace kolmera::bench {

namespace {

void checkCode(SQLRETURN code, SQLSMALLINT kind, SQLHANDLE handle) {
    if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) return;
    std::array<SQLCHAR, 6> state{};
    std::array<SQLCHAR, 400> message{};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    SQLGetDiagRec(kind, handle, 1, state.data(), &native, message.data(), static_cast<SQLSMALLINT>(message.size()),
                  &length);
    throw std::runtime_error(reinterpret_cast<const char*>(message.data()));
}

bool isWordSign(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isKeyword(std::string_view word) {
    constexpr std::string_view kWords[] = {"SELECT", "FROM", "WHERE", "AND",    "LIMIT",  "NULL",
                                           "UPDATE", "SET",  "INTO",  "INSERT", "VALUES", "DELETE"};
    for (const std::string_view known : kWords) {
        if (known == word) return true;
    }
    return word.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string forServer(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '"') {
            const std::size_t end = text.find('"', at + 1) + 1;
            result.append(text, at, end - at);
            at = end;
        } else if (text[at] == '?') {
            result += '?';
            for (++at; at < text.size() && text[at] >= '0' && text[at] <= '9';) ++at;
        } else if (isWordSign(text[at])) {
            std::size_t end = at;
            while (end < text.size() && isWordSign(text[end])) ++end;
            const std::string word = text.substr(at, end - at);
            const char* quote = isKeyword(word) ? "" : "\"";
            result.append(quote).append(word).append(quote);
            at = end;
        } else {
            result += text[at++];
        }
    }
    return result;
}

SQLCHAR* characters(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }

}  // namespace

Connection::Connection(const std::string& connectString) {
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
    SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, environment_, &handle_);
    // The wide function: after the narrow one the driver would take texts for other than UTF-8.
    std::u16string wide(connectString.begin(), connectString.end());
    checkCode(SQLDriverConnectW(handle_, nullptr, reinterpret_cast<SQLWCHAR*>(wide.data()),
                                static_cast<SQLSMALLINT>(wide.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT),
              SQL_HANDLE_DBC, handle_);
}

Connection::~Connection() {
    SQLDisconnect(handle_);
    SQLFreeHandle(SQL_HANDLE_DBC, handle_);
    SQLFreeHandle(SQL_HANDLE_ENV, environment_);
}

void Connection::beginAll() {
    checkCode(SQLSetConnectAttr(handle_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0),
              SQL_HANDLE_DBC, handle_);
}

void Connection::commit() { checkCode(SQLEndTran(SQL_HANDLE_DBC, handle_, SQL_COMMIT), SQL_HANDLE_DBC, handle_); }

Statement::Statement(Connection& connection, const std::string& text) : connection_(&connection) {
    if (text == "BEGIN" || text == "COMMIT") {
        kind_ = text == "BEGIN" ? Kind::Begin : Kind::Commit;
        return;
    }
    checkCode(SQLAllocHandle(SQL_HANDLE_STMT, connection.handle(), &handle_), SQL_HANDLE_DBC, connection.handle());
    std::string prepared = forServer(text);
    check(SQLPrepare(handle_, characters(prepared), static_cast<SQLINTEGER>(prepared.size())));
}

Statement::Statement(Statement&& other) noexcept
    : connection_(other.connection_),
      kind_(other.kind_),
      handle_(std::exchange(other.handle_, nullptr)),
      parameters_(std::move(other.parameters_)),
      cells_(std::move(other.cells_)),
      running_(other.running_) {}

Statement::~Statement() {
    if (handle_ != SQL_NULL_HSTMT) SQLFreeHandle(SQL_HANDLE_STMT, handle_);
}

void Statement::check(SQLRETURN code) const { checkCode(code, SQL_HANDLE_STMT, handle_); }

Statement::Parameter& Statement::parameter(int place) {
    while (parameters_.size() < static_cast<std::size_t>(place)) parameters_.emplace_back();
    return parameters_[static_cast<std::size_t>(place) - 1];
}

void Statement::bind(int place, std::string_view text) {
    Parameter& bound = parameter(place);
    bound.text = text;
    bound.length = static_cast<SQLLEN>(text.size());
    check(SQLBindParameter(handle_, static_cast<SQLUSMALLINT>(place), SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR,
                           text.empty() ? 1 : text.size(), 0, bound.text.data(), bound.length, &bound.length));
}

/// As digits: the driver prints a double with too few of them.
void Statement::bind(int place, double number) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    bind(place, std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
}

void Statement::bind(int place, std::int64_t number) {
    Parameter& bound = parameter(place);
    bound.number = number;
    bound.length = sizeof bound.number;
    check(SQLBindParameter(handle_, static_cast<SQLUSMALLINT>(place), SQL_PARAM_INPUT, SQL_C_SBIGINT, SQL_BIGINT, 0, 0,
                           &bound.number, 0, &bound.length));
}

void Statement::execute() {
    reset();
    check(SQLExecute(handle_));
    running_ = true;
}

bool Statement::step() {
    if (!running_) execute();
    const SQLRETURN code = SQLFetch(handle_);
    check(code);
    if (code == SQL_NO_DATA) return false;
    readRow();
    return true;
}

void Statement::readRow() {
    SQLSMALLINT columns = 0;
    check(SQLNumResultCols(handle_, &columns));
    cells_.resize(static_cast<std::size_t>(columns));
    std::array<char, 8192> buffer{};
    for (SQLSMALLINT column = 1; column <= columns; ++column) {
        SQLLEN length = 0;
        check(SQLGetData(handle_, static_cast<SQLUSMALLINT>(column), SQL_C_CHAR, buffer.data(),
                         static_cast<SQLLEN>(buffer.size()), &length));
        Cell& into = cells_[static_cast<std::size_t>(column) - 1];
        into.null = length == SQL_NULL_DATA;
        into.text.assign(buffer.data(), into.null ? 0 : static_cast<std::size_t>(length));
    }
}

void Statement::reset() {
    if (running_) SQLFreeStmt(handle_, SQL_CLOSE);
    running_ = false;
}

void Statement::run() {
    switch (kind_) {
        case Kind::Begin:
            return connection_->beginAll();
        case Kind::Commit:
            return connection_->commit();
        case Kind::Prepared:
            execute();
            reset();
    }
}

bool Statement::isText(int column) const {
    std::array<SQLCHAR, 100> name{};
    SQLSMALLINT length = 0;
    SQLSMALLINT type = 0;
    SQLSMALLINT digits = 0;
    SQLSMALLINT nullable = 0;
    SQLULEN size = 0;
    check(SQLDescribeCol(handle_, static_cast<SQLUSMALLINT>(column + 1), name.data(),
                         static_cast<SQLSMALLINT>(name.size()), &length, &type, &size, &digits, &nullable));
    return !isNull(column) && (type == SQL_WVARCHAR || type == SQL_VARCHAR);
}

double Statement::real(int column) const { return std::strtod(cell(column).text.c_str(), nullptr); }

}  // namespace kolmera::bench
