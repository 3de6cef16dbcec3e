#include "definitions/datafolder.h"

#include <fcntl.h>

#include <system_error>

#include "definitions/jobfile.h"
#include "platform/descriptor.h"
#include "platform/error.h"
#include "platform/paths.h"
#include "startup/inifile.h"
#include "startup/newcompany.h"

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

}  // namespace kolmera
