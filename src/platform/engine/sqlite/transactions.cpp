#include "platform/engine/sqlite/transactions.h"

#include <utility>

#include "platform/engine/sqlite/sqliteconnection.h"

namespace kolmera {

namespace {

constexpr auto kLongestJoin = std::chrono::milliseconds(250);

}  // namespace

Transactions::~Transactions() {
    if (!connection_.transactionOpen()) return;
    try {
        if (joined_ && !whole_) {
            connection_.commit();
        } else {
            connection_.rollback();
        }
    } catch (const PlatformError&) {
        // Closing cannot report. What is not committed now is rolled back when the file is opened again.
    }
}

bool Transactions::open() const { return open_ && connection_.transactionOpen(); }

void Transactions::begin() {
    throwKeptError();
    if (open()) throw PlatformError(errors::kInternal, "a transaction is open already");
    if (!connection_.transactionOpen()) {
        joined_ = whole_ = false;
        connection_.begin();
        began_ = std::chrono::steady_clock::now();
    }
    open_ = true;
}

void Transactions::beginWhole() {
    settle();
    begin();
    whole_ = true;
}

void Transactions::commit() {
    throwKeptError();
    requireOpen();
    commitPhysically();
}

void Transactions::commitJoined() {
    throwKeptError();
    requireOpen();
    if (!whole_ && std::chrono::steady_clock::now() - began_ >= kLongestJoin) return commitPhysically();
    open_ = false;
    joined_ = true;
}

void Transactions::rollback() {
    requireOpen();
    if (joined_ && !whole_) {
        throw PlatformError(errors::kInternal,
                            "the transaction was joined to earlier ones and cannot be rolled back alone");
    }
    open_ = joined_ = whole_ = false;
    error_.reset();
    connection_.rollback();
}

void Transactions::settle() {
    throwKeptError();
    if (!open() && connection_.transactionOpen()) commitPhysically();
}

void Transactions::afterPlainWrite() {
    if (!open_ && connection_.transactionOpen()) commitPhysically();
}

void Transactions::throwKeptError() {
    if (error_) throw *std::exchange(error_, std::nullopt);
}

void Transactions::requireOpen() const {
    if (!open()) throw PlatformError(errors::kInternal, "no transaction is open");
}

void Transactions::commitPhysically() {
    connection_.commit();
    open_ = joined_ = whole_ = false;
}

}  // namespace kolmera
