#include "startup/company.h"

#include <algorithm>
#include <system_error>

#include "db/companyschema.h"
#include "db/conversions.h"
#include "lang/errortext.h"
#include "lang/keys/company.h"
#include "lang/keys/repair.h"
#include "lang/keys/server.h"
#include "lang/keys/shared.h"
#include "platform/attempt.h"
#include "platform/engine/privatedatabase.h"
#include "platform/lettercase.h"
#include "startup/companycopy.h"
#include "startup/companyfile.h"
#include "startup/passwordfile.h"
#include "startup/repairtexts.h"

namespace kolmera {

namespace {

bool isCompanyFile(const std::string& upperName) { return upperName.starts_with("FTG") && upperName.ends_with(".MDB"); }

/// The names, in upper case, of the files "FTG*.mdb" of a folder, sorted: a folder of this system has no order.
std::vector<std::string> companyFiles(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = upperCase(entry->path().filename().string());
        std::error_code unreadable;
        if (isCompanyFile(name) && !entry->is_directory(unreadable)) names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
}

}  // namespace

std::string CompanyRegister::LösenFör(std::string_view name) { return PasswordFile(state_.dataFolder()).find(name); }

OpenOptions CompanyRegister::openOptions(std::string_view name) {
    OpenOptions result;
    result.locale = state_.locale;
    result.password = LösenFör(name);
    result.wait = waitForLock;
    result.knownTables = companySchema;
    return result;
}

std::unique_ptr<Database> CompanyRegister::openFile(std::string_view name, bool readOnly) {
    OpenOptions options = openOptions(name);
    options.readOnly = readOnly;
    return openFileDatabase(state_.drives.resolve(name, state_.dataFolder()), options);
}

/// Whether the name is that of a registered server company and its database could be opened.
bool CompanyRegister::openServer(std::string_view name) {
    SqlLayer& sql = state_.sql;
    sql.ÄrSQLFöretag = SqlLayer::ÄrSQLDatabas(upperCase(name));
    if (sql.ÄrSQLFöretag) sql.ÄrSQLFöretag = sql.SQLServerSlåUpp(state_.dataFolder(), name);
    if (!sql.ÄrSQLFöretag) return false;
    MessagePort& port = boxes_.port();
    const auto untilGivenUp = [&port](std::chrono::milliseconds) { return !port.givesUp(); };
    sql.ÄrSQLFöretag =
        sql.SQLÖppnaServer([&port] { port.letEventsRun(); }, waitForLock, waitForAnswer ? waitForAnswer : untilGivenUp);
    return sql.ÄrSQLFöretag;
}

bool CompanyRegister::ÖppnaDatabas(std::string_view name) {
    if (openServer(name)) return true;
    try {
        state_.sql.FtgDB = openFile(name, false);
        return true;
    } catch (const PlatformError& noFile) {
        // What the server said tells more than that there is no file of its name.
        const bool server = SqlLayer::ÄrSQLDatabas(upperCase(name));
        const PlatformError error = server ? state_.sql.serverError().value_or(noFile) : noFile;
        const bool damaged = !server && error.number() == errors::kDamaged;
        // Who cannot be asked is told once, of the repair.
        if (!damaged || boxes_.port().answers()) warnNotOpened(name, error);
        return damaged && offerRepair(std::string(name)) && openRepaired(name);
    }
}

/// A local file with the tables of the server company that is open, as that company has them.
std::unique_ptr<Database> CompanyRegister::copyOfServer(const std::filesystem::path& copy,
                                                        std::span<const std::string_view> leftOut,
                                                        const std::function<bool()>& goOn) {
    Database& server = *state_.sql.FtgDB;
    const std::vector<std::string> present = server.tableNames();
    std::vector<PrivateTable> tables;
    PassedOverSilently passedOver;  // the user may lack the right to ask for IDs
    for (const TableDef& table : companySchema()) {
        const auto same = [&](const std::string& name) { return equalNoCase(name, table.name); };
        if (std::ranges::none_of(present, same)) continue;
        PrivateTable& made = tables.emplace_back(PrivateTable{server.table(table.name)});
        attempt(passedOver, table.name, [&] { made.lastId = lastServerId(server, table.name); });
    }
    auto database = makePrivateDatabase(copy, tables, state_.locale);
    return fetchTables(server, *database, leftOut, goOn) ? std::move(database) : nullptr;
}

bool CompanyRegister::ÖppnaKopia(std::string_view name, const std::filesystem::path& copy,
                                 std::span<const std::string_view> leftOut, const std::function<bool()>& goOn) {
    try {
        const bool server = openServer(name);
        if (!server && SqlLayer::ÄrSQLDatabas(upperCase(name)) && state_.sql.serverError())
            throw *state_.sql.serverError();
        const auto file = state_.drives.resolve(name, state_.dataFolder());
        auto copied = server ? copyOfServer(copy, leftOut, goOn) : openPrivateCopy(file, openOptions(name), copy, goOn);
        state_.sql.FtgDB = std::move(copied);
        return state_.sql.FtgDB != nullptr;
    } catch (const PlatformError& error) {
        state_.sql.FtgDB.reset();
        warnNotOpened(name, error);
        return false;
    }
}

bool CompanyRegister::openRepaired(std::string_view name) {
    try {
        state_.sql.FtgDB = openFile(name, false);
        return true;
    } catch (const PlatformError& error) {
        warnNotOpened(name, error);
        return false;
    }
}

void CompanyRegister::warnNotOpened(std::string_view name, const PlatformError& error) {
    boxes_.port().hourglass(false);
    const std::string title = texts_.ResText(text::shared::kCannotOpenCompany);
    std::string reason = std::to_string(error.number()) + "\r\n" + errorText(texts_, error);
    const bool server = SqlLayer::ÄrSQLDatabas(upperCase(name));
    if (server && error.number() == errors::kUnknownTable) reason += "\r\n" + texts_.ModulText(text::server::kNoTables);
    boxes_.MeddelandeVarning(title + " " + std::string(name) + ".\r\n\r\n" + reason, title);
}

std::vector<std::string> CompanyRegister::FyllFöretagsLista() {
    std::vector<std::string> rows;
    PassedOverSilently passedOver;
    attempt(passedOver, "DORVIK.FTG", [&] { CompanyFile(state_.dataFolder()).create(); });
    for (const std::string& file : companyFiles(state_.dataFolder())) {
        std::optional<std::string> company = registeredName(file);
        if (!company) company = newCompany(file);
        if (company) rows.push_back(*company + "\t" + file);
    }
    boxes_.port().hourglass(false);
    return rows;
}

std::optional<std::string> CompanyRegister::registeredName(const std::string& file) {
    std::optional<std::string> company;
    PassedOverSilently passedOver;
    attempt(passedOver, "DORVIK.FTG", [&] { company = CompanyFile(state_.dataFolder()).find(file); });
    return company;
}

/// The name of a company that the register does not know, which it joins; nothing when the file cannot be used.
std::optional<std::string> CompanyRegister::newCompany(const std::string& file) {
    try {
        return companyName(file);
    } catch (const PlatformError& error) {
        if (error.number() == errors::kDamaged) return repairedCompany(file);
        showFailure(file, error);
        return std::nullopt;
    }
}

/// Reads the company's name from its settings and adds it to the register. A company without settings can be opened,
/// and has an empty name.
std::string CompanyRegister::companyName(const std::string& file) {
    std::string name;
    {
        const std::unique_ptr<Database> database = openFile(file, true);
        const auto settings = database->open("Syinställningar", RecordsetType::Snapshot);
        if (!settings->eof()) name = TillText(settings->value("Företagsnamn"), state_.locale);
    }
    PassedOverSilently passedOver;
    attempt(passedOver, "DORVIK.FTG", [&] { CompanyFile(state_.dataFolder()).append(file, name); });
    return name;
}

RepairReport CompanyRegister::repair(const std::string& file) {
    return repairFileDatabase(state_.drives.resolve(file, state_.dataFolder()), openOptions(file));
}

bool CompanyRegister::isSound(const std::string& file) {
    return kolmera::isSound(state_.drives.resolve(file, state_.dataFolder()), openOptions(file));
}

bool CompanyRegister::offerRepair(const std::string& file) {
    boxes_.port().hourglass(false);
    if (!boxes_.port().answers()) {
        boxes_.MeddelandeVarning(texts_.ModulTextMed(text::repair::kDamaged, file),
                                 texts_.ResText(text::shared::kCannotOpenCompany));
        return false;
    }
    const std::string question = texts_.ResText(text::shared::kCannotOpenCompany) + " " + file + "." +
                                 texts_.ModulTextMed(text::company::kAskToRepair, file);
    if (boxes_.MeddelandeJaNej(question) != Answer::Yes) return false;
    boxes_.port().hourglass(true);
    try {
        const RepairReport report = repair(file);
        boxes_.port().hourglass(false);
        boxes_.MeddelandeInfo(repairText(texts_, report));
        return true;
    } catch (const PlatformError&) {
        boxes_.port().hourglass(false);
        boxes_.MeddelandeVarning(texts_.ModulText(text::company::kNotRepaired));
        return false;
    }
}

std::optional<std::string> CompanyRegister::repairedCompany(const std::string& file) {
    if (!offerRepair(file)) return std::nullopt;
    try {
        return companyName(file);
    } catch (const PlatformError& error) {
        showFailure(file, error);
        return std::nullopt;
    }
}

void CompanyRegister::showFailure(const std::string& file, const PlatformError& error) {
    boxes_.port().hourglass(false);
    const std::string cannotOpen = texts_.ResText(text::shared::kCannotOpenCompany);
    if (error.number() == errors::kInternal) {
        boxes_.MeddelandeVarning(cannotOpen + ". " + file + texts_.ModulText(text::company::kNotACompany));
    } else {
        boxes_.MeddelandeVarning(cannotOpen + " " + file + ".\r\n" + errorText(texts_, error));
    }
}

}  // namespace kolmera
