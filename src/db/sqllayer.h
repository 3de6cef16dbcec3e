#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/attempt.h"
#include "platform/engine/database.h"
#include "platform/engine/odbc/serverdatabase.h"
#include "platform/locale.h"

namespace kolmera {

/// Up to five keys of a seek.
using Keys = std::span<const Value>;

/// One company database behind one interface: a file or a database on a server. Every operation tests the
/// server-mode flag itself, so callers never branch on it. Statement texts are built for both modes.
class SqlLayer {
  public:
    explicit SqlLayer(const Locale& locale) : locale_(locale) {}

    std::unique_ptr<Database> FtgDB;  ///< the open company database
    bool ÄrSQLFöretag = false;        ///< the open company lives on a database server
    const std::string& anslutning() const { return connectString_; }
    const std::string& senasteSats() const { return lastStatement_; }

    /// Opens a database by its connect string, or throws PlatformError.
    std::function<std::unique_ptr<Database>(const std::string& connectString, const ServerOptions& options)>
        openServerDatabase = kolmera::openServerDatabase;
    /// Called while the layer waits before it tries again.
    std::function<void()> letEventsRun;

    // Mode and connection.
    static bool ÄrSQLDatabas(std::string_view name);
    /// Looks the name up in DVSQLSvr.ini of the data folder (created empty when missing) and keeps its connect string.
    bool SQLServerSlåUpp(const std::filesystem::path& dataFolder, std::string_view name);
    /// Opens the server database of the kept connect string; up to four tries, one second apart, events running.
    /// A server that lets the user not in, or that does not answer at all, is tried once. `waitForLock` is asked while
    /// another session holds a lock (`ServerOptions::wait`), `waitForAnswer` while the server does not answer.
    bool SQLÖppnaServer(const std::function<void()>& letEventsRunMeanwhile,
                        const std::function<bool()>& waitForLock = {},
                        const std::function<bool(std::chrono::milliseconds)>& waitForAnswer = {});
    /// Why the server that was looked up last was not found or could not be opened.
    const std::optional<PlatformError>& serverError() const { return serverError_; }
    /// "name TAB description" per registered server company; nothing when DVSQLSvr.ini is missing.
    static std::vector<std::string> SQLServerLista(const std::filesystem::path& dataFolder);

    // Opening recordsets on FtgDB; the engine's errors reach the caller.
    std::unique_ptr<Recordset> SQLÖppnaRs(std::string_view source, RecordsetType type, std::int32_t options = 0);
    std::unique_ptr<Recordset> SQLÖppnaTabell(std::string_view table, std::string_view index, std::int32_t options,
                                              bool ordered);
    void SQLSättIndex(Recordset& recordset, std::string_view index);
    std::string SQLIndexSortering(const Recordset& recordset, std::string_view index);
    /// The index's columns joined by ", "; "PrimaryKey" is "ID" unseen. Empty when there is no such table or index.
    std::string SQLIndexKolumner(std::string_view table, std::string_view index);

    // Seeking.
    /// Errors are noted, not raised; test `noMatch` afterwards.
    void SQLSök(Recordset& recordset, std::string_view comparison, Keys keys, PassedOver& passedOver);
    /// Positions and tells whether nothing matched; in server mode the recordset is re-opened on the keys.
    bool SQLSökIngenTräff(std::unique_ptr<Recordset>& recordset, std::string_view comparison, Keys keys);
    /// Table and order of a SELECT statement with a WHERE or an ORDER BY; nothing for any other text.
    static std::optional<std::pair<std::string, std::string>> SQLDelaSelect(std::string_view statement);
    /// The criteria text of a seek: a term for each of the first five order columns that has a key. Throws
    /// PlatformError for a column that the table lacks and for a key that is no literal of its column's type.
    std::string SQLVillkor(std::string_view table, std::string_view comparison, std::string_view orderColumns,
                           Keys keys);

    // Literals and statements.
    /// Between single quotes, or between double quotes when the text holds an apostrophe. A text with both kinds is put
    /// between single quotes with every apostrophe doubled; `SQLKör` hands such a text on as a parameter.
    static std::string SQLText(std::string_view value);
    static std::string SQLTalSng(float value);
    static std::string SQLTalDbl(double value);
    std::string SQLDatum(Date value) const;
    /// The literal of a value for a field of that type. Throws PlatformError(kWrongType) when a number, Boolean or date
    /// field is given something else: such a text would become part of the statement.
    std::string SQLLiteral(const Value& value, FieldType type) const;
    /// Runs an action statement; errors are noted, not raised. Returns whether it succeeded.
    bool SQLKör(std::string_view statement, PassedOver& passedOver);
    /// The same with "?" parameters, for values that a statement's text cannot carry.
    bool SQLKör(std::string_view statement, std::span<const Value> parameters, PassedOver& passedOver);

    const Locale& locale() const { return locale_; }

  private:
    /// A seek by "=" whose keys are parameters.
    struct Seek {
        std::string statement;
        std::vector<FieldType> types;  ///< of the keys
    };

    Database& database();  ///< FtgDB, or PlatformError when no company is open
    std::string indexFields(std::string_view table, std::string_view index);
    bool tryServer(const ServerOptions& options);
    const Seek* seekOf(const Recordset& recordset, Keys keys);

    Locale locale_;
    std::string connectString_;
    std::string lastStatement_;
    std::unordered_map<std::string, Seek> seeks_;  ///< by name and order of the recordset, and number of keys
    std::optional<PlatformError> serverError_;
};

}  // namespace kolmera
