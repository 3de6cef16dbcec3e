#pragma once

#include <chrono>
#include <optional>

#include "platform/error.h"

namespace kolmera {

class SqliteConnection;

/// The transactions that a program sees, and how they share physical ones: a transaction that ends joined leaves the
/// physical one open for the next, for up to 250 ms.
class Transactions {
  public:
    explicit Transactions(SqliteConnection& connection) : connection_(connection) {}
    Transactions(const Transactions&) = delete;
    Transactions& operator=(const Transactions&) = delete;
    /// Commits what was joined; a transaction that holds nothing joined, or is whole, and was never ended is rolled
    /// back.
    ~Transactions();

    void begin();
    /// The physical transaction that begins here lasts until `commit` or `rollback`, however many joined ones it holds.
    void beginWhole();
    void commit();
    void commitJoined();
    void rollback();
    void settle();
    /// Whether a transaction of the program is open.
    [[nodiscard]] bool open() const;
    /// A write outside a transaction has been made; it does not wait for joined ones.
    void afterPlainWrite();

    /// Keeps an error that could not be thrown where it arose; the next begin, commit or settle throws it.
    void keepError(const PlatformError& error) { error_ = error; }
    void throwKeptError();

  private:
    void requireOpen() const;
    void commitPhysically();

    SqliteConnection& connection_;
    bool open_ = false;
    bool joined_ = false;  ///< the physical transaction holds earlier transactions
    bool whole_ = false;   ///< and is there whole or not at all
    std::chrono::steady_clock::time_point began_;
    std::optional<PlatformError> error_;
};

}  // namespace kolmera
