#pragma once

#include <string>

namespace kolmera {

/// Who runs the program.
struct SystemUser {
    std::string login;
    std::string fullName;  ///< trimmed; empty when the system does not know it

    /// From the system's user database (the name is the comment field up to its first comma); both are empty when the
    /// user is not in it.
    static SystemUser current();
};

}  // namespace kolmera
