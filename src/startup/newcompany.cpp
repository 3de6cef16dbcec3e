#include "startup/newcompany.h"

#include <system_error>

#include "db/companyschema.h"
#include "platform/engine/database.h"
#include "platform/error.h"
#include "platform/paths.h"
#include "startup/passwordfile.h"

namespace kolmera {

namespace {

void writeFirstRows(const std::filesystem::path& file, std::span<const NewCompanyRow> rows,
                    const std::string& password) {
    OpenOptions openOptions;
    openOptions.password = password;
    const std::unique_ptr<Database> database = openFileDatabase(file, openOptions);
    for (const NewCompanyRow& row : rows) {
        const auto records = database->open(row.table, RecordsetType::Table);
        records->addNew();
        for (const auto& [column, value] : row.values) records->set(column, value);
        records->update();
    }
}

}  // namespace

void createCompany(const std::filesystem::path& folder, std::string_view fileName, std::string_view companyName,
                   const std::string& password, FirstRows firstRows) {
    const std::filesystem::path file = findWithoutCase(folder, std::string(fileName));
    createFileDatabase(file, companySchema(), password);
    try {
        writeFirstRows(file,
                       firstRows == FirstRows::Filled ? filledCompanyRows(companyName) : newCompanyRows(companyName),
                       password);
        if (!password.empty()) PasswordFile(folder).save(fileName, password);
    } catch (const PlatformError&) {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
        throw;
    }
}

}  // namespace kolmera
