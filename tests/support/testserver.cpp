#include "support/testserver.h"

#include <fmt/format.h>

#include <cstdlib>
#include <stdexcept>

#include "db/companyschema.h"
#include "db/conversions.h"
#include "platform/attempt.h"
#include "platform/engine/odbc/serverdatabase.h"
#include "platform/lettercase.h"

namespace kolmera::test {
namespace {

constexpr const char* kVariable = "KOLMERA_TEST_SERVER";

/// What a test asks of each kind of server; {} is the database, or its number in the lock.
struct Words {
    ServerKind kind;
    std::string_view administration;  ///< a database that is always there
    std::string_view lock, make, drop, countDatabases, endSessions;
};
constexpr Words kWords[] = {
    {.kind = ServerKind::PostgreSql,
     .administration = "postgres",
     .lock = "SELECT CASE WHEN pg_try_advisory_lock({}) THEN 1 ELSE 0 END",
     .make = "CREATE DATABASE {}",
     .drop = "DROP DATABASE IF EXISTS {} WITH (FORCE)",
     .countDatabases = "SELECT COUNT(*) FROM pg_database WHERE datname = '{}'",
     .endSessions = "SELECT COUNT(pg_terminate_backend(pid)) FROM pg_stat_activity WHERE datname = '{}'"},
    {.kind = ServerKind::MariaDb,
     .administration = "mysql",
     .lock = "SELECT GET_LOCK('kolmera{}', 0)",
     .make = "CREATE DATABASE {} CHARACTER SET utf8mb4",
     .drop = "DROP DATABASE IF EXISTS {}",
     .countDatabases = "SELECT COUNT(*) FROM information_schema.schemata WHERE schema_name = '{}'",
     .endSessions = "SELECT id FROM information_schema.processlist WHERE db = '{}'"},
};

const Words& wordsOf(ServerKind kind) {
    for (const Words& words : kWords) {
        if (words.kind == kind) return words;
    }
    throw std::logic_error("no test server of this kind");
}

std::string filled(std::string_view text, const std::string& value) { return fmt::format(fmt::runtime(text), value); }

const std::vector<TableDef>& schema() {
    static const std::vector<TableDef> tables = companySchema();
    return tables;
}

/// Runs a script of the schema. What it says of its own session is not for a driver's.
void runScript(Database& database, const std::string& script) {
    for (const std::string& piece : split(script, ";\n")) {
        const std::string statement = replaceAll(piece, "\n", " ");
        if (trimmed(statement).empty() || statement.starts_with("SET ")) continue;
        database.execute(statement, {}, options::kPassThrough);
    }
}

}  // namespace

bool TestServer::named() { return std::getenv(kVariable) != nullptr; }

TestServer& TestServer::ofProcess() {
    static TestServer server;
    return server;
}

TestServer::TestServer()
    : source_(std::getenv(kVariable)),
      kind_(serverKind(std::string_view(source_).substr(source_.find('=') + 1)).value()),
      administration_(openAdministration()) {
    takeDatabase();
    if (!whole()) make();
}

std::string TestServer::ask(const std::string& statement) {
    const auto records = administration_->open(statement, RecordsetType::Snapshot, options::kPassThrough);
    return TillText(records->value(0), Locale());
}

void TestServer::takeDatabase() {
    for (int number = 1;; ++number) {
        if (ask(filled(wordsOf(kind_).lock, std::to_string(number))) != "1") continue;
        name_ = fmt::format("company{}", number);
        connectString_ = source_ + ";Database=" + name_;
        return;
    }
}

/// For what this object does itself, which is the same in every locale.
Database& TestServer::company() { return session(Locale(locale_)); }

Database& TestServer::session(const Locale& locale) {
    if (!company_ || locale.kind() != locale_) company_ = open(locale);
    locale_ = locale.kind();
    return *company_;
}

/// Whether the database is there with all its tables; an earlier test may have ended while it was made.
bool TestServer::whole() {
    if (ask(filled(wordsOf(kind_).countDatabases, name_)) == "0") return false;
    return company().tableNames().size() == schema().size();
}

void TestServer::drop() {
    company_.reset();
    administration_->execute(filled(wordsOf(kind_).drop, name_), {}, options::kPassThrough);
    tablesChanged_ = false;
}

void TestServer::make() {
    drop();
    administration_->execute(filled(wordsOf(kind_).make, name_), {}, options::kPassThrough);
    runScript(company(), serverSchema(kind_, schema()));
    company_.reset();  // it has seen no tables yet
}

void TestServer::reset() {
    if (tablesChanged_) make();
    empty();
    for (const NewCompanyRow& row : newCompanyRows("Testbolaget")) {
        const auto records = company().open(row.table, RecordsetType::Dynaset);
        records->addNew();
        for (const auto& [column, value] : row.values) records->set(column, value);
        records->update();
    }
}

void TestServer::empty() {
    if (kind_ == ServerKind::PostgreSql) {
        std::string names;
        for (const TableDef& table : schema()) names += (names.empty() ? "\"" : ", \"") + table.name + "\"";
        company().execute("TRUNCATE " + names + " RESTART IDENTITY", {}, options::kPassThrough);
        return;
    }
    for (const TableDef& table : schema()) company().execute("DELETE FROM " + table.name);
    // A refused row uses up an ID and leaves no row.
    constexpr std::string_view kCounted =
        "SELECT table_name FROM information_schema.tables WHERE table_schema = DATABASE() AND auto_increment > 1";
    const auto counted = company().open(kCounted, RecordsetType::Snapshot, options::kPassThrough);
    for (; !counted->eof(); counted->moveNext()) {
        const std::string table = TillText(counted->value(0), Locale());
        company().execute("ALTER TABLE `" + table + "` AUTO_INCREMENT = 1", {}, options::kPassThrough);
    }
}

void TestServer::changeTables(const std::string& statement) {
    tablesChanged_ = true;
    const bool backquotes = kind_ == ServerKind::MariaDb;
    company().execute(backquotes ? replaceAll(statement, "\"", "`") : statement, {}, options::kPassThrough);
}

void TestServer::refuseWriting() {
    if (kind_ == ServerKind::PostgreSql) {
        return changeTables("ALTER DATABASE " + name_ + " SET default_transaction_read_only = on");
    }
    changeTables(
        "CREATE TRIGGER reader BEFORE INSERT ON Produkt FOR EACH ROW "
        "SIGNAL SQLSTATE '42000' SET MYSQL_ERRNO = 1142, MESSAGE_TEXT = 'INSERT command denied'");
}

TestServer::~TestServer() {
    PassedOverSilently passedOver;
    if (tablesChanged_) attempt(passedOver, "drop", [&] { drop(); });
}

std::unique_ptr<Database> TestServer::open(const Locale& locale) const {
    return openServerDatabase(connectString_, {.locale = locale, .tables = schema()});
}

std::unique_ptr<Database> TestServer::openAdministration() const {
    return openServerDatabase(source_ + ";Database=" + std::string(wordsOf(kind_).administration), ServerOptions());
}

void TestServer::endSessions() {
    company_.reset();
    const std::string statement = filled(wordsOf(kind_).endSessions, name_);
    const auto sessions = administration_->open(statement, RecordsetType::Snapshot, options::kPassThrough);
    if (kind_ == ServerKind::PostgreSql) return;
    for (; !sessions->eof(); sessions->moveNext()) {
        const std::string id = TillText(sessions->value(0), Locale());
        administration_->execute("KILL CONNECTION " + id, {}, options::kPassThrough);
    }
}

}  // namespace kolmera::test
