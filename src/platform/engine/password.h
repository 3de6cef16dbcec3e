#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kolmera {

class SqliteConnection;

/// Puts the salted hash of a password into a file. The password is for telling companies apart from the wrong program;
/// it encrypts nothing.
void storePassword(SqliteConnection& connection, std::string_view password);

/// Throws kWrongPassword when the file holds a hash that is not this password's. A file without one takes any.
void checkPassword(SqliteConnection& connection, std::string_view password);

}  // namespace kolmera
