#include "startup/suppliernames.h"

#include "db/sqllayer.h"
#include "platform/engine/database.h"
#include "platform/lettercase.h"
#include "startup/passwordfile.h"

namespace kolmera {

std::map<std::string, std::string> supplierNames(const StartState& state, const std::string& company) {
    std::map<std::string, std::string> names;
    if (SqlLayer::ÄrSQLDatabas(upperCase(company))) return names;
    try {
        OpenOptions options;
        options.locale = state.locale;
        options.password = PasswordFile(state.dataFolder()).find(company);
        options.readOnly = true;
        options.wait = [] { return false; };
        const auto database = openFileDatabase(state.drives.resolve(company, state.dataFolder()), options);
        const auto suppliers = database->open("SELECT Nummer, Söknamn FROM Leverantör", RecordsetType::Snapshot);
        for (; !suppliers->eof(); suppliers->moveNext())
            names[upperCase(textOf(suppliers->value(0)))] = textOf(suppliers->value(1));
    } catch (const PlatformError&) {
        names.clear();  // found by what the list shows, then
    }
    return names;
}

}  // namespace kolmera
