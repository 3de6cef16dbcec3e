#include "platform/engine/sqlite/password.h"

#include <sodium.h>

#include <array>
#include <optional>
#include <string>

#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/sqlitestatement.h"
#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::size_t kMemory = std::size_t{8} << 20;  // bytes; keeps opening below 50 ms

void startSodium() {
    if (sodium_init() < 0) throw PlatformError(errors::kInternal, "no random numbers on this system");
}

std::string hashOf(std::string_view password) {
    startSodium();
    std::array<char, crypto_pwhash_STRBYTES> hash{};
    if (crypto_pwhash_str(hash.data(), password.data(), password.size(), crypto_pwhash_OPSLIMIT_MIN, kMemory) != 0) {
        throw PlatformError(errors::kInternal, "not enough memory for the password");
    }
    return hash.data();
}

std::optional<std::string> storedHash(SqliteConnection& connection) {
    SqliteStatement table(connection, "SELECT 1 FROM sqlite_master WHERE name = ?");
    table.bind(1, kPasswordTable);
    if (!table.step()) return {};
    SqliteStatement query(connection, "SELECT hash FROM kolmera_password");
    if (!query.step()) return {};
    return std::string(query.text(0));
}

}  // namespace

void storePassword(SqliteConnection& connection, std::string_view password) { storeHash(connection, hashOf(password)); }

void storeHash(SqliteConnection& connection, std::string_view hash) {
    SqliteStatement insert(connection, "INSERT INTO kolmera_password (hash) VALUES (?)");
    insert.bind(1, hash);
    insert.run();
}

void checkPassword(SqliteConnection& connection, std::string_view password) {
    const auto hash = storedHash(connection);
    if (!hash) return;
    startSodium();
    if (crypto_pwhash_str_verify(hash->c_str(), password.data(), password.size()) != 0) {
        throw PlatformError(errors::kWrongPassword, "wrong password");
    }
}

}  // namespace kolmera
