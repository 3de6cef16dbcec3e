#include "platform/engine/odbc/serverdatabase.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <utility>

#include "platform/engine/fieldlookup.h"
#include "platform/engine/fieldvalue.h"
#include "platform/engine/memoryrecordset.h"
#include "platform/engine/odbc/servercatalogue.h"
#include "platform/engine/odbc/serverdynaset.h"
#include "platform/engine/odbc/serversession.h"
#include "platform/engine/odbc/servertable.h"
#include "platform/engine/odbc/serverwindow.h"
#include "platform/engine/selectstatement.h"
#include "platform/engine/statementtext.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/// A database on a server.
class ServerDatabase final : public Database {
  public:
    ServerDatabase(const std::string& connectString, const ServerOptions& options) : session_(connectString, options) {}

    [[nodiscard]] const TableDef& table(std::string_view name) override { return serverTable(name).definition(); }
    [[nodiscard]] std::vector<std::string> tableNames() override {
        readNames();
        return names_;
    }
    std::unique_ptr<Recordset> open(std::string_view source, RecordsetType type, std::int32_t options) override;
    std::unique_ptr<Recordset> openWith(std::string_view select, std::span<const Value> parameters) override;
    std::int64_t execute(std::string_view statement, std::span<const Value> parameters, std::int32_t options) override;
    void insertRows(std::string_view table, std::span<const int> columns,
                    std::span<const std::vector<Value>> rows) override {
        serverTable(table).insertRows(columns, rows);
    }

    void listen(ChangeListener* listener) override { session_.listen(listener); }

    void begin() override { session_.begin(); }
    void commit() override { session_.commit(); }
    /// A server's commit is not put off: other sessions would wait for the locks.
    void commitJoined() override { session_.commit(); }
    void rollback() override { session_.rollback(); }
    [[nodiscard]] bool inTransaction() const override { return session_.inTransaction(); }
    void settle() override {}
    [[nodiscard]] bool hasWindows() const override { return session_.dialect().rowsAs != Dialect::RowsAs::Nothing; }
    void beginWindow() override { window_.begin(); }
    WindowEnd endWindow(bool complete, bool again) override { return window_.end(complete, again); }
    [[nodiscard]] std::uint64_t stamp(std::string_view table) override { return serverTable(table).version(); }
    std::int64_t lastId(std::string_view table);

  private:
    using Tables = std::vector<ServerTable*>;
    /// A statement that has been taken apart.
    struct Select {
        ServerTable* table;
        std::shared_ptr<const ServerDynaset::Columns> columns;
        ServerSelectRest rest;
    };

    void readNames();
    ServerTable* findTable(std::string_view name);
    ServerTable& serverTable(std::string_view name);
    Tables mentioned(std::string_view statement);
    static std::optional<std::string> exactName(const Tables& tables, std::string_view name);
    ServerStatement translated(std::string_view statement, std::span<const Value> parameters, const Tables& tables);

    std::unique_ptr<Recordset> openTable(ServerTable& table, std::string_view source, const SingleTableSelect& select,
                                         RecordsetType type, bool readOnly);
    void takeKnownType(StatementResult& result, std::size_t column, const Tables& tables) const;
    std::unique_ptr<Recordset> openStatement(std::string_view source, std::string_view text, RecordsetType type);

    ServerSession::Hearing hearingOf(std::string_view statement, std::span<const Value> parameters,
                                     ServerStatement& action, std::vector<FieldType>& types);

    ServerSession session_;
    ServerWindow window_{session_};
    std::vector<std::string> names_;
    bool namesRead_ = false;
    std::vector<std::unique_ptr<ServerTable>> tables_;
    std::unordered_map<std::string, Select> selects_;
};

void ServerDatabase::readNames() {
    names_ = readServerTables(session_);
    namesRead_ = true;
}

ServerTable* ServerDatabase::findTable(std::string_view name) {
    for (const auto& table : tables_) {
        if (equalNoCase(table->definition().name, name)) return table.get();
    }
    if (!namesRead_) readNames();
    const auto exact = std::ranges::find_if(names_, [&](const std::string& known) { return equalNoCase(known, name); });
    if (exact == names_.end()) return nullptr;
    tables_.push_back(std::make_unique<ServerTable>(session_, window_, readServerTable(session_, *exact)));
    return tables_.back().get();
}

ServerTable& ServerDatabase::serverTable(std::string_view name) {
    ServerTable* found = findTable(name);
    if (found == nullptr) {
        readNames();  // it may have been made since
        found = findTable(name);
    }
    if (found == nullptr) throw PlatformError(errors::kUnknownTable, "there is no such table").about(std::string(name));
    return *found;
}

/// The tables whose names a statement holds.
ServerDatabase::Tables ServerDatabase::mentioned(std::string_view statement) {
    Tables tables;
    for (const Token& token : tokens(statement)) {
        ServerTable* const table = token.isName() ? findTable(token.text) : nullptr;
        if (table != nullptr && std::ranges::find(tables, table) == tables.end()) tables.push_back(table);
    }
    return tables;
}

std::optional<std::string> ServerDatabase::exactName(const Tables& tables, std::string_view name) {
    for (const ServerTable* table : tables) {
        if (equalNoCase(table->definition().name, name)) return table->definition().name;
    }
    for (const ServerTable* table : tables) {
        const int ordinal = table->definition().ordinal(name);
        if (ordinal >= 0) return table->field(ordinal).name;
    }
    return std::nullopt;
}

ServerStatement ServerDatabase::translated(std::string_view statement, std::span<const Value> parameters,
                                           const Tables& tables) {
    return serverStatement(session_.dialect(), statement, parameters, session_.locale(),
                           [&](std::string_view name) { return exactName(tables, name); });
}

std::unique_ptr<Recordset> ServerDatabase::open(std::string_view source, RecordsetType type, std::int32_t options) {
    const bool readOnly = (options & options::kReadOnly) != 0;
    const std::string_view text = withoutBlanks(source);
    if (!isSelect(text)) return openTable(serverTable(text), source, {}, type, readOnly);
    const auto single = parseSingleTableSelect(text);
    ServerTable* const table = single ? findTable(single->table) : nullptr;
    if (table == nullptr) return openStatement(source, text, type);
    return openTable(*table, source, *single, type, readOnly);
}

std::unique_ptr<Recordset> ServerDatabase::openTable(ServerTable& table, std::string_view source,
                                                     const SingleTableSelect& select, RecordsetType type,
                                                     bool readOnly) {
    std::vector<int> columns(static_cast<std::size_t>(table.columns()));
    std::iota(columns.begin(), columns.end(), 0);
    if (!select.columns.empty()) columns.clear();
    for (const std::string& name : select.columns) {
        columns.push_back(requiredOrdinal(table.definition().fields, name));
    }
    ServerSelectRest rest = serverSelectRest(session_.dialect(), select.rest, session_.locale(),
                                             [&](std::string_view name) { return exactName({&table}, name); });
    // Rows that are equal in the order asked for come by their IDs, as from a file.
    if (table.hasKey()) rest.order = orderWithKey(rest.order, table.quotedKey());
    if (table.hasKey() && type != RecordsetType::Snapshot) {
        return std::make_unique<ServerDynaset>(table, source,
                                               std::make_shared<ServerDynaset::Columns>(table, std::move(columns)),
                                               std::move(rest), readOnly);
    }
    std::vector<FieldDef> fields;
    fields.reserve(columns.size());
    for (const int column : columns) fields.push_back(table.field(column));
    return std::make_unique<MemoryRecordset>(source, type, std::move(fields),
                                             table.readAll(columns, rest.where, rest.order), session_.locale());
}

std::unique_ptr<Recordset> ServerDatabase::openWith(std::string_view select, std::span<const Value> parameters) {
    const std::string text(select);
    auto known = selects_.find(text);
    if (known == selects_.end()) {
        const auto single = parseSingleTableSelect(select);
        if (!single || !single->columns.empty()) throw PlatformError(errors::kInternal, "not on one table: " + text);
        ServerTable& table = serverTable(single->table);
        ServerSelectRest rest = serverSelectRest(
            session_.dialect(), single->rest, session_.locale(),
            [&](std::string_view name) { return exactName({&table}, name); }, parameters);
        rest.order = orderWithKey(rest.order, table.quotedKey());
        rest.where.parameters.clear();
        auto columns =
            std::make_shared<ServerDynaset::Columns>(table, std::vector<int>(table.all().begin(), table.all().end()));
        known = selects_.emplace(text, Select{&table, std::move(columns), std::move(rest)}).first;
    }
    ServerSelectRest rest = known->second.rest;
    rest.where.parameters.assign(parameters.begin(), parameters.end());
    return std::make_unique<ServerDynaset>(*known->second.table, select, known->second.columns, std::move(rest), false);
}

/// A column of a result with the name of a table's column is of its type; drivers call a Boolean a text, for instance.
void ServerDatabase::takeKnownType(StatementResult& result, std::size_t column, const Tables& tables) const {
    FieldDef& field = result.fields[column];
    for (const ServerTable* table : tables) {
        const int ordinal = table->definition().ordinal(field.name);
        if (ordinal < 0) continue;
        field.type = table->field(ordinal).type;
        field.size = table->field(ordinal).size;
        for (std::vector<Value>& row : result.rows) fitToField(field, row[column], session_.locale());
        return;
    }
}

std::unique_ptr<Recordset> ServerDatabase::openStatement(std::string_view source, std::string_view text,
                                                         RecordsetType type) {
    const Tables tables = mentioned(text);
    for (ServerTable* table : tables) window_.settle(*table);
    StatementResult result = session_.read(translated(text, {}, tables), {});
    for (std::size_t i = 0; i < result.fields.size(); ++i) takeKnownType(result, i, tables);
    return std::make_unique<MemoryRecordset>(source, type, std::move(result.fields), std::move(result.rows),
                                             session_.locale());
}

std::int64_t ServerDatabase::execute(std::string_view statement, std::span<const Value> parameters,
                                     std::int32_t /*options*/) {
    if (isSelect(statement)) {
        throw PlatformError(errors::kInternal, "not an action statement: " + std::string(statement));
    }
    const Tables tables = mentioned(statement);
    window_.writeAtOnce();
    for (ServerTable* table : tables) window_.written(*table);
    ServerStatement action = translated(statement, parameters, tables);
    ServerSession::Hearing hearing;
    std::vector<FieldType> types;  // of what comes back
    const bool heard = session_.listener() != nullptr && isTranslated(statement);
    if (heard) hearing = hearingOf(statement, parameters, action, types);
    if (!isTranslated(statement)) session_.startEpoch();
    const StatementResult result =
        isTranslated(statement) ? session_.write(action, types, hearing) : session_.writeOnce(action);
    for (ServerTable* table : tables) table->noteWrite();
    return result.touched > 0 ? result.touched : static_cast<std::int64_t>(result.rows.size());
}

/// How an action statement on one table is heard: what it removes or changes is read by its own condition, what it adds
/// comes back with its answer.
ServerSession::Hearing ServerDatabase::hearingOf(std::string_view statement, std::span<const Value> parameters,
                                                 ServerStatement& action, std::vector<FieldType>& types) {
    const ActionParts parts = actionParts(statement);
    ServerTable* const table = findTable(parts.table);
    const bool inserts = parts.kind == ActionParts::Kind::Insert;
    const bool answers = session_.dialect().newId == Dialect::NewId::Returning;
    if (table == nullptr || !table->hasKey() || (inserts && !answers)) {
        throw PlatformError(errors::kInternal, "what it changes cannot be heard: " + std::string(statement));
    }
    const std::int64_t place = session_.listener()->place();
    if (inserts) {
        types = table->types(table->all());
        action.text += " RETURNING " + joined(table->quoted(table->all()), ", ");
        return std::make_shared<HeardInsert>(*table, place);
    }
    ServerStatement where = serverSelectRest(
                                session_.dialect(), parts.rest, session_.locale(),
                                [&](std::string_view name) { return exactName({table}, name); },
                                parameters.subspan(std::min(parts.parametersBefore, parameters.size())))
                                .where;
    if (parts.kind == ActionParts::Kind::Delete) return std::make_shared<HeardRemoval>(*table, place, std::move(where));
    return std::make_shared<HeardChanges>(*table, place, std::move(where));
}

std::int64_t ServerDatabase::lastId(std::string_view table) {
    constexpr FieldType kTypes[] = {FieldType::Double};
    const std::string& name = serverTable(table).definition().name;
    const StatementResult result = session_.read({fmt::format(fmt::runtime(session_.dialect().lastId), name)}, kTypes);
    if (result.rows.empty()) return 0;
    const auto* id = std::get_if<double>(&result.rows.front().front());
    return id == nullptr ? 0 : static_cast<std::int64_t>(*id);
}

}  // namespace

std::int64_t lastServerId(Database& database, std::string_view table) {
    auto* const server = dynamic_cast<ServerDatabase*>(&database);
    return server == nullptr ? 0 : server->lastId(table);
}

std::unique_ptr<Database> openServerDatabase(const std::string& connectString, const ServerOptions& options) {
    return std::make_unique<ServerDatabase>(connectString, options);
}

}  // namespace kolmera
