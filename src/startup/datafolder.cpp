#include "startup/datafolder.h"

#include <fcntl.h>

#include <system_error>

#include "db/companyschema.h"
#include "definitions/jobfile.h"
#include "platform/descriptor.h"
#include "platform/engine/database.h"
#include "platform/error.h"
#include "platform/paths.h"
#include "startup/inifile.h"
#include "startup/passwordfile.h"

namespace kolmera {

namespace {

// The records of DORVIK.INI that are read, with a key for whoever looks into the file. Blank values mean: suite font,
// sign-in by the form.
constexpr IniLine kIniLines[] = {
    {"", ""}, {"Företag", kFirstCompany}, {"", ""}, {"", ""}, {"", ""}, {"", ""}, {"", ""}, {"", ""}, {"Tahoma", ""},
    {"", ""}, {"Inloggning", ""}};

constexpr const char* kEmptyFiles[] = {"DORVIK.FTG", "PRISMASK.TXT", "PRISMPOS.TXT", "PRISLEV.TXT"};

/// Makes a file of length 0, unless there is one whatever the case of its letters.
void ensureFile(const std::filesystem::path& folder, const std::string& name) {
    const std::filesystem::path file = findWithoutCase(folder, name);
    std::error_code unreadable;
    if (std::filesystem::symlink_status(file, unreadable).type() != std::filesystem::file_type::not_found) return;
    try {
        const Descriptor made(file, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    } catch (const PlatformError& error) {
        throw error.about(file.string());
    }
}

void ensureSettings(const std::filesystem::path& folder) {
    const std::filesystem::path file = findWithoutCase(folder, "DORVIK.INI");
    std::error_code unreadable;
    if (std::filesystem::exists(file, unreadable)) return;
    writeIniValues(file, 1, kIniLines);
}

void writeFirstRows(const std::filesystem::path& file, std::string_view companyName, const std::string& password) {
    OpenOptions openOptions;
    openOptions.password = password;
    const std::unique_ptr<Database> database = openFileDatabase(file, openOptions);
    for (const NewCompanyRow& row : newCompanyRows(companyName)) {
        const auto records = database->open(row.table, RecordsetType::Table);
        records->addNew();
        for (const auto& [column, value] : row.values) records->set(column, value);
        records->update();
    }
}

}  // namespace

void createDataFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw PlatformError(errors::kFileNotFound, error.message()).ofSystem(error.value()).about(folder.string());
    ensureSettings(folder);
    for (const char* name : kEmptyFiles) ensureFile(folder, name);
    JobFile(folder).addTradeJobs(kFirstCompany);
}

void createCompany(const std::filesystem::path& folder, std::string_view fileName, std::string_view companyName,
                   const std::string& password) {
    const std::filesystem::path file = findWithoutCase(folder, std::string(fileName));
    createFileDatabase(file, companySchema(), password);
    try {
        writeFirstRows(file, companyName, password);
        if (!password.empty()) PasswordFile(folder).save(fileName, password);
    } catch (const PlatformError&) {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
        throw;
    }
}

}  // namespace kolmera
