#include "platform/engine/sqlite/filedatabase.h"

#include <sqlite3.h>

#include <algorithm>
#include <numeric>

#include "platform/engine/fieldlookup.h"
#include "platform/engine/fieldvalue.h"
#include "platform/engine/memoryrecordset.h"
#include "platform/engine/selectstatement.h"
#include "platform/engine/sqlite/heardwrite.h"
#include "platform/engine/sqlite/keysetrecordset.h"
#include "platform/engine/sqlite/openchecks.h"
#include "platform/engine/sqlite/password.h"
#include "platform/engine/sqlite/sqliteschema.h"
#include "platform/engine/sqlite/tablerecordset.h"
#include "platform/engine/sqlitenames.h"
#include "platform/engine/statementtext.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr std::size_t kMostKeptActions = 32;

ConnectionOptions connectionOptions(const std::filesystem::path& file, const OpenOptions& options) {
    return {.create = false,
            .readOnly = options.readOnly,
            .exclusive = options.exclusive,
            .onNetwork = options.onNetwork(std::filesystem::absolute(file).parent_path()),
            .wait = options.wait};
}

std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

}  // namespace

FileDatabase::FileDatabase(const std::filesystem::path& file, const OpenOptions& options)
    : session_(file, connectionOptions(file, options), options.locale) {
    checkHeader(session_.connection, file, options.knownTables);
    names_ = readTableNames(session_.connection);
    checkPages(session_.connection, file, session_.connection.onNetwork(), names_);
    checkPassword(session_.connection, options.password);  // a damaged file is repaired unasked
    session_.connection.prepareForWork();
}

FileDatabase::FileDatabase(const std::filesystem::path& file, const Locale& locale,
                           const std::function<void(SqliteConnection&)>& fill)
    : session_(file, {.create = true, .alone = true}, locale) {
    fill(session_.connection);
    names_ = readTableNames(session_.connection);
    session_.connection.prepareForWork();
}

std::vector<std::string> FileDatabase::tableNames() {
    names_ = readTableNames(session_.connection);
    return names_;
}

FileTable* FileDatabase::findTable(std::string_view name) {
    for (const auto& table : tables_) {
        if (equalNoCase(table->definition().name, name)) return table.get();
    }
    const auto exact = std::find_if(names_.begin(), names_.end(),
                                    [&](const std::string& candidate) { return equalNoCase(candidate, name); });
    if (exact == names_.end()) return nullptr;
    tables_.push_back(std::make_unique<FileTable>(session_, readTable(session_.connection, *exact)));
    return tables_.back().get();
}

FileTable& FileDatabase::fileTable(std::string_view name) {
    FileTable* found = findTable(name);
    if (found == nullptr) {
        names_ = readTableNames(session_.connection);  // it may have been made since
        found = findTable(name);
    }
    if (found == nullptr) throw PlatformError(errors::kUnknownTable, "there is no such table").about(std::string(name));
    return *found;
}

std::optional<std::string> FileDatabase::exactName(std::string_view name) {
    if (const FileTable* table = findTable(name)) return table->definition().name;
    for (const std::string& tableName : names_) {
        const TableDef& definition = fileTable(tableName).definition();
        if (const int ordinal = definition.ordinal(name); ordinal >= 0) {
            return definition.fields[static_cast<std::size_t>(ordinal)].name;
        }
    }
    return std::nullopt;
}

std::string FileDatabase::translate(std::string_view statement) {
    return translated(statement, session_.locale, [this](std::string_view name) { return exactName(name); });
}

void FileDatabase::flushAll() {
    for (const auto& table : tables_) table->flush();
}

std::unique_ptr<Recordset> FileDatabase::open(std::string_view source, RecordsetType type, std::int32_t options) {
    flushAll();
    const bool readOnly = (options & options::kReadOnly) != 0;
    const std::string_view text = withoutBlanks(source);
    if (FileTable* table = findTable(text)) return openTable(*table, source, type, readOnly);
    if (type == RecordsetType::Table || !isSelect(text)) {
        return openTable(fileTable(text), source, type, readOnly);
    }
    const auto single = parseSingleTableSelect(text);
    FileTable* table = single ? findTable(single->table) : nullptr;
    if (table != nullptr && type == RecordsetType::Dynaset) {
        return openKeyset(*table, source, single->columns, single->rest, readOnly);
    }
    return openInMemory(source, translate(text), type);
}

std::unique_ptr<Recordset> FileDatabase::openTable(FileTable& table, std::string_view source, RecordsetType type,
                                                   bool readOnly) {
    switch (type) {
        case RecordsetType::Table:
            return std::make_unique<TableRecordset>(table, source, readOnly);
        case RecordsetType::Dynaset:
            return openKeyset(table, source, {}, {}, readOnly);
        default:
            return openInMemory(source, "SELECT * FROM " + table.quotedName(), type);
    }
}

std::unique_ptr<Recordset> FileDatabase::openKeyset(FileTable& table, std::string_view source,
                                                    const std::vector<std::string>& columns, const std::string& rest,
                                                    bool readOnly) {
    std::vector<int> ordinals(static_cast<std::size_t>(table.columns()));
    std::iota(ordinals.begin(), ordinals.end(), 0);
    if (!columns.empty()) ordinals.clear();
    for (const std::string& name : columns) ordinals.push_back(requiredOrdinal(table.definition().fields, name));
    SqliteStatement query(session_.connection, "SELECT rowid FROM " + table.quotedName() + " " + translate(rest));
    std::vector<std::int64_t> ids;
    while (query.step()) ids.push_back(query.integer(0));
    return std::make_unique<KeysetRecordset>(table, source, std::move(ordinals), std::move(ids), readOnly);
}

std::unique_ptr<Recordset> FileDatabase::openInMemory(std::string_view source, const std::string& statement,
                                                      RecordsetType type) {
    SqliteStatement query(session_.connection, statement);
    std::vector<FieldDef> fields;
    fields.reserve(static_cast<std::size_t>(query.columns()));
    for (int i = 0; i < query.columns(); ++i) fields.push_back(fieldOf(query, i));
    std::vector<MemoryRecordset::Record> records;
    while (query.step()) {
        auto& record = records.emplace_back(fields.size());
        for (std::size_t i = 0; i < fields.size(); ++i) query.read(static_cast<int>(i), fields[i].type, record[i]);
    }
    return std::make_unique<MemoryRecordset>(source, type, std::move(fields), std::move(records), session_.locale);
}

/// The field that a result column comes from; the result of an expression counts as a memo.
FieldDef FileDatabase::fieldOf(const SqliteStatement& statement, int column) {
    const char* tableName = sqlite3_column_table_name(statement.handle(), column);
    const char* origin = sqlite3_column_origin_name(statement.handle(), column);
    FieldDef field{.name = sqlite3_column_name(statement.handle(), column), .type = FieldType::Memo};
    FileTable* table = tableName != nullptr && origin != nullptr ? findTable(tableName) : nullptr;
    const int ordinal = table != nullptr ? table->definition().ordinal(origin) : -1;
    if (ordinal < 0) return field;
    const std::string shown = field.name;
    field = table->field(ordinal);
    field.name = shown;
    return field;
}

SqliteStatement& FileDatabase::actionStatement(std::string_view text) {
    const auto found =
        std::find_if(actions_.begin(), actions_.end(), [&](const auto& kept) { return kept.first == text; });
    if (found != actions_.end()) {
        std::rotate(found, found + 1, actions_.end());
        return actions_.back().second;
    }
    SqliteStatement statement(session_.connection, translate(text));
    if (statement.changesNothing()) {
        throw PlatformError(errors::kInternal, "not an action statement: " + std::string(text));
    }
    if (actions_.size() >= kMostKeptActions) actions_.erase(actions_.begin());
    return actions_.emplace_back(text, std::move(statement)).second;
}

std::int64_t FileDatabase::execute(std::string_view statement, std::span<const Value> parameters,
                                   std::int32_t /*options*/) {
    flushAll();
    HeardWrite write(session_, HeardWrite::Rows::AsStored);  // before the statement is compiled: see `listen`
    SqliteStatement& action = actionStatement(statement);
    if (static_cast<std::size_t>(action.parameters()) != parameters.size()) {
        throw PlatformError(errors::kInternal, "the statement takes " + std::to_string(action.parameters()) +
                                                   " parameters, not " + std::to_string(parameters.size()));
    }
    const StatementUse use(action);
    for (std::size_t i = 0; i < parameters.size(); ++i) action.bind(static_cast<int>(i) + 1, parameters[i]);
    const int before = sqlite3_total_changes(session_.connection.handle());
    while (action.step()) {
    }
    write.done();
    session_.connection.startEpoch();
    session_.transactions.afterPlainWrite();
    return sqlite3_total_changes(session_.connection.handle()) - before;
}

void FileDatabase::insertRows(std::string_view table, std::span<const int> columns,
                              std::span<const std::vector<Value>> rows) {
    flushAll();
    FileTable& target = fileTable(table);
    ColumnSet written;
    for (const int column : columns) written.add(column);
    std::vector<std::size_t> places;  // of the statement's parameters, in a row
    written.forEach([&](int column) {
        places.push_back(static_cast<std::size_t>(std::ranges::find(columns, column) - columns.begin()));
    });
    SqliteStatement& statement = target.insertStatement(written);
    std::vector<Value> values(places.size());  // the statement reads texts where they lie, when it is run
    for (const std::vector<Value>& row : rows) {
        HeardWrite write(session_, HeardWrite::Rows::AsStored);
        const StatementUse use(statement);
        for (std::size_t i = 0; i < places.size(); ++i) {
            values[i] = row[places[i]];
            fitToField(target.field(columns[places[i]]), values[i], session_.locale);
            statement.bind(static_cast<int>(i) + 1, values[i]);
        }
        statement.step();
        write.done();
    }
    target.noteWrite();
    session_.transactions.afterPlainWrite();
}

/// Statements are compiled anew: without a listener SQLite empties a table without looking at its rows. The tables are
/// opened now, because nothing can be read while a row is told.
void FileDatabase::listen(ChangeListener* listener) {
    flushAll();
    settle();
    actions_.clear();
    if (listener != nullptr) {
        for (const std::string& name : tableNames()) (void)fileTable(name);
    }
    session_.connection.listen(listener);
}

void FileDatabase::begin() { session_.transactions.begin(); }

bool FileDatabase::beginWhole() {
    session_.transactions.beginWhole();
    return true;
}

void FileDatabase::commit() {
    flushAll();
    session_.transactions.commit();
}

void FileDatabase::commitJoined() {
    flushAll();
    session_.transactions.commitJoined();
}

std::uint64_t FileDatabase::stamp(std::string_view table) {
    session_.connection.noticeOthers();
    return fileTable(table).version();
}

void requireFile(const std::filesystem::path& file) {
    std::error_code none;
    if (!std::filesystem::exists(file, none)) {
        throw PlatformError(errors::kFileNotFound, "the file does not exist").about(file.string());
    }
}

std::unique_ptr<Database> openFileDatabase(const std::filesystem::path& file, const OpenOptions& options) {
    requireFile(file);
    return std::make_unique<FileDatabase>(file, options);
}

}  // namespace kolmera
