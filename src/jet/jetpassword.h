#pragma once

#include <string>

namespace kolmera::jet {

/// Whether the first page of a file says that it has a database password. The password keeps programs out that ask for
/// it; it encrypts nothing.
bool hasPassword(std::string page);

}  // namespace kolmera::jet
