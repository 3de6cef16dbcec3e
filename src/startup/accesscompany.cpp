#include "startup/accesscompany.h"

#include <fmt/format.h>

#include <system_error>
#include <utility>

#include "db/companyschema.h"
#include "platform/jet/jetreader.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace fs = std::filesystem;

bool isCompanyFileName(const std::string& name) {
    const std::string upper = upperCase(name);
    return upper.starts_with("FTG") && upper.ends_with(".MDB") && name.find('/') == std::string::npos;
}

std::string proposedCompanyFile(const StartState& state) {
    for (int number = 1;; ++number) {
        const std::string name = fmt::format("FTG{}.mdb", number);
        std::error_code unreadable;
        if (!fs::exists(fs::symlink_status(state.drives.resolve(name, state.dataFolder()), unreadable))) return name;
    }
}

AccessImport accessImportOf(StartState& state, CompanyRegister& companies, const fs::path& file,
                            const std::string& company, std::function<bool()> wait) {
    AccessImport import{.reader = state.programFolder() / jet::kReaderProgram,
                        .file = file,
                        .company = state.drives.resolve(company, state.dataFolder()),
                        .companyName = fs::path(company).stem().string(),
                        .replace = false,
                        .options = {}};
    import.options.locale = state.locale;
    import.options.password = companies.LösenFör(company);
    import.options.wait = std::move(wait);
    import.options.knownTables = companySchema;
    return import;
}

AccessObstacle obstacleTo(const AccessImport& import) {
    std::error_code missing;
    if (!isCompanyFileName(import.company.filename().string())) return AccessObstacle::Name;
    if (fs::equivalent(import.company, import.file, missing) || jet::isAccessFile(import.company)) {
        return AccessObstacle::SameFile;
    }
    const bool there = fs::exists(fs::symlink_status(import.company, missing));
    return there && !import.replace ? AccessObstacle::Exists : AccessObstacle::None;
}

}  // namespace kolmera
