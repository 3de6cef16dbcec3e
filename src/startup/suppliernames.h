#pragma once

#include <map>
#include <string>

#include "startup/startstate.h"

namespace kolmera {

/// The search names of a company's suppliers by their numbers in upper case. None of a company on a server, or of one
/// that cannot be opened at once: nobody is told, and nothing waited for.
std::map<std::string, std::string> supplierNames(const StartState& state, const std::string& company);

}  // namespace kolmera
