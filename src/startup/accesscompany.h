#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "startup/accessimport.h"
#include "startup/company.h"

namespace kolmera {

/// Why an import cannot begin.
enum class AccessObstacle {
    None,
    Name,      ///< the company's file is not called as company files are
    SameFile,  ///< it is the Access-format file itself, or another one
    Exists,    ///< it is there, and may not be replaced
};

/// Whether a file of the data folder is called as companies are: FTG2.mdb.
bool isCompanyFileName(const std::string& name);

/// The first FTGn.mdb that the data folder has not.
std::string proposedCompanyFile(const StartState& state);

/// The import of a file into a company of the data folder. `wait` is asked while somebody holds the company that is to
/// be replaced; false gives up.
AccessImport accessImportOf(StartState& state, CompanyRegister& companies, const std::filesystem::path& file,
                            const std::string& company, std::function<bool()> wait);

AccessObstacle obstacleTo(const AccessImport& import);

}  // namespace kolmera
