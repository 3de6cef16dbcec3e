#include "startup/datafolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "db/companyschema.h"
#include "definitions/jobfile.h"
#include "platform/engine/database.h"
#include "platform/error.h"
#include "platform/paths.h"
#include "startup/inifile.h"
#include "startup/passwordfile.h"

namespace kolmera {

namespace {

// The records of DORVIK.INI that are read, with a key for whoever looks into the file. Blank values mean: suite font,
// sign-in by the form.
struct IniLine {
    const char* key;
    std::string_view value;
};
constexpr IniLine kIniLines[] = {
    {"", ""}, {"Företag", kFirstCompany}, {"", ""}, {"", ""}, {"", ""}, {"", ""}, {"", ""}, {"", ""}, {"Tahoma", ""},
    {"", ""}, {"Inloggning", ""}};

struct TradeJob {
    const char* name;
    const char* kind;
};
constexpr TradeJob kTradeJobs[] = {{"(EIO)", "E"}, {"(RSK)", "R"}, {"(FINFO)", "F"}};

constexpr const char* kEmptyFiles[] = {"DORVIK.FTG", "PRISMASK.TXT", "PRISMPOS.TXT", "PRISLEV.TXT"};

/// Makes a file of length 0, unless there is one whatever the case of its letters.
void ensureFile(const std::filesystem::path& folder, const std::string& name) {
    const std::filesystem::path file = findWithoutCase(folder, name);
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        throw PlatformError(errors::kFileNotFound, std::generic_category().message(errno))
            .ofSystem(errno)
            .about(file.string());
    }
    ::close(descriptor);
}

void ensureSettings(const std::filesystem::path& folder) {
    const std::filesystem::path file = findWithoutCase(folder, "DORVIK.INI");
    std::error_code unreadable;
    if (std::filesystem::exists(file, unreadable)) return;
    int number = 0;
    for (const IniLine& line : kIniLines) writeIniValue(file, ++number, line.key, std::string(line.value));
}

void ensureTradeJobs(const std::filesystem::path& folder) {
    JobFile jobs(folder);
    for (const TradeJob& trade : kTradeJobs) {
        if (jobs.find(trade.name)) continue;
        Job job;
        job.name = trade.name;
        job.kind = trade.kind;
        job.company = kFirstCompany;
        jobs.save(job);
    }
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
    ensureTradeJobs(folder);
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
