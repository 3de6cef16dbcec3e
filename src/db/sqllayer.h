#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/attempt.h"
#include "platform/engine/database.h"
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

    // Mode and connection.
    static bool ÄrSQLDatabas(std::string_view name);
    /// Looks the name up in DVSQLSvr.ini of the data folder (created empty when missing) and keeps its connect string.
    bool SQLServerSlåUpp(const std::filesystem::path& dataFolder, std::string_view name);
    /// Opens the server database of the kept connect string; up to four tries, one second apart, events running.
    bool SQLÖppnaServer(const std::function<void()>& letEventsRun);
    /// "name TAB description" per registered server company; nothing when DVSQLSvr.ini is missing.
    static std::vector<std::string> SQLServerLista(const std::filesystem::path& dataFolder);

    // Opening recordsets on FtgDB; the engine's errors reach the caller.
    std::unique_ptr<Recordset> SQLÖppnaRs(std::string_view source, RecordsetType type, std::int32_t options = 0);
    std::unique_ptr<Recordset> SQLÖppnaDirekt(std::string_view statement, RecordsetType type, std::int32_t options = 0);
    std::unique_ptr<Recordset> SQLÖppnaTabell(std::string_view table, std::string_view index, std::int32_t options,
                                              bool ordered);
    void SQLSättIndex(Recordset& recordset, std::string_view index);
    std::string SQLIndexSortering(const Recordset& recordset, std::string_view index);
    std::string SQLIndexKolumner(std::string_view table, std::string_view index);
    void SQLFyllRs(Recordset& recordset);

    // Seeking.
    /// Errors are noted, not raised; test `noMatch` afterwards.
    void SQLSök(Recordset& recordset, std::string_view comparison, Keys keys, PassedOver& passedOver);
    /// Positions and tells whether nothing matched; in server mode the recordset is re-opened on the keys.
    bool SQLSökIngenTräff(std::unique_ptr<Recordset>& recordset, std::string_view comparison, Keys keys);
    static std::optional<std::pair<std::string, std::string>> SQLDelaSelect(std::string_view statement);
    std::string SQLVillkor(std::string_view table, std::string_view comparison, std::string_view orderColumns,
                           Keys keys);

    // Literals and statements.
    static std::string SQLText(std::string_view value);
    static std::string SQLTalSng(float value);
    static std::string SQLTalDbl(double value);
    std::string SQLDatum(Date value) const;
    std::string SQLLiteral(const Value& value, FieldType type) const;
    /// Runs an action statement; errors are noted, not raised. Returns whether it succeeded.
    bool SQLKör(std::string_view statement, PassedOver& passedOver);

    const Locale& locale() const { return locale_; }

  private:
    Locale locale_;
    std::string connectString_;
    std::string lastStatement_;
};

}  // namespace kolmera
