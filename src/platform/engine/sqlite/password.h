#pragma once

#include <string_view>

namespace kolmera {

class SqliteConnection;

/// The table that holds the hash; a file without password has none.
inline constexpr std::string_view kPasswordTable = "kolmera_password";
inline constexpr std::string_view kPasswordTableStatement = "CREATE TABLE kolmera_password (hash TEXT)";

/// Puts the salted hash of a password into that table. The password is for telling companies apart from the wrong
/// program; it encrypts nothing.
void storePassword(SqliteConnection& connection, std::string_view password);
/// The same with a hash that is there already.
void storeHash(SqliteConnection& connection, std::string_view hash);

/// Throws kWrongPassword when the file holds a hash that is not this password's. A file without one takes any.
void checkPassword(SqliteConnection& connection, std::string_view password);

}  // namespace kolmera
