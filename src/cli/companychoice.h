#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "cli/session.h"
#include "startup/company.h"

namespace kolmera::cli {

/// The database of the company that a command works on: the named one, else the data folder's standard company, else
/// its only one. `err` tells why there is none.
std::optional<std::string> chosenCompany(Session& session, CompanyRegister& companies, const std::string& named,
                                         std::ostream& err);

}  // namespace kolmera::cli
