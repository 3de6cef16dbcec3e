#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// A connect string with what its driver ought to be told and the user has not said, neither there nor in the data
/// source: PostgreSQL's driver not to surround every statement by two of its own, and both to encrypt.
struct DriverSettings {
    explicit DriverSettings(std::string_view connectString);

    std::string connectString;
    /// The same for a server that does not encrypt, where the driver cannot find that out by itself; else empty.
    std::string unencrypted;
};

}  // namespace kolmera
