#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kolmera {

/// A user of the suite, as far as this program reads one.
struct User {
    std::string sign;
    std::string name;
    std::string password;      ///< unscrambled
    bool denied = false;       ///< may not use this program
    bool takesNoPart = false;  ///< is passed over in sign-in
};

/// The users of DVUser.dvl in the data folder, in file order; a missing file is created empty. It is never written to.
/// Throws PlatformError.
std::vector<User> readUsers(const std::filesystem::path& dataFolder);

}  // namespace kolmera
