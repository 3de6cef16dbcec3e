#include "platform/engine/odbc/serversession.h"

#include <chrono>
#include <thread>
#include <utility>

namespace kolmera {

namespace {

constexpr auto kLockPatience = std::chrono::seconds(10);
constexpr auto kLockPause = std::chrono::milliseconds(10);

/// Waits for a lock: as long as the program says, or for a time of its own.
class LockPatience {
  public:
    explicit LockPatience(const std::function<bool()>& wait) : wait_(wait) {}

    bool goOn() {
        const auto now = std::chrono::steady_clock::now();
        if (turns_++ == 0) began_ = now;
        if (wait_ ? !wait_() : now - began_ >= kLockPatience) return false;
        std::this_thread::sleep_for(kLockPause);
        return true;
    }

  private:
    const std::function<bool()>& wait_;
    int turns_ = 0;
    std::chrono::steady_clock::time_point began_;
};

bool noConnection(Failure failure) { return failure == Failure::Gone || failure == Failure::Silent; }

bool waitsFor(Failure failure) { return failure == Failure::Locked || failure == Failure::Deadlock; }

}  // namespace

ServerSession::ServerSession(const std::string& connectString, const ServerOptions& options)
    : options_(options), connection_(ConnectString(connectString), options.waitForAnswer, options.roundTrips) {}

void ServerSession::requireConnection() const {
    if (lost_) throw *lost_;
}

void ServerSession::requireTransaction() const {
    if (!open_) throw PlatformError(errors::kInternal, "no transaction is open");
}

/// Where NUL would end the text without an error, it is refused as a value of the wrong kind.
void ServerSession::requireStorable(const Value& value) const {
    if (dialect().storesNul || textOf(value).find('\0') == std::string_view::npos) return;
    throw PlatformError(errors::kWrongType, "the database server cannot hold a text with the character NUL");
}

// Statements.

StatementResult ServerSession::runStatement(const ServerStatement& statement, std::span<const FieldType> types,
                                            bool once) {
    for (const Value& value : statement.parameters) requireStorable(value);
    return run([&](StatementResult& result) {
        return once ? connection_.runOnce(statement.text, statement.parameters, result)
                    : connection_.run(statement.text, statement.parameters, types, result);
    });
}

StatementResult ServerSession::read(const ServerStatement& statement, std::span<const FieldType> types) {
    return runStatement(statement, types);
}

StatementResult ServerSession::write(const ServerStatement& statement, std::span<const FieldType> types) {
    StatementResult result = runStatement(statement, types);
    keep({statement});
    return result;
}

bool ServerSession::writeRow(const ServerStatement& statement, const ServerStatement& itsRow) {
    // Some servers count a row that has those values already as not touched.
    const bool found = runStatement(statement, {}).touched > 0 || !runStatement(itsRow, {}).rows.empty();
    keep({.statement = statement, .row = found ? itsRow : ServerStatement()});
    return found;
}

std::int64_t ServerSession::insert(const ServerStatement& statement,
                                   const std::function<ServerStatement(std::int64_t id)>& again) {
    constexpr FieldType kId = FieldType::Long;
    const StatementResult result = runStatement(statement, std::span(&kId, 1));
    const auto* id = result.rows.empty() ? nullptr : std::get_if<std::int64_t>(&result.rows.front().front());
    if (id == nullptr) throw PlatformError(errors::kInternal, "the database server gave the new record no ID");
    if (open_) keep({.statement = again(*id)});
    return *id;
}

StatementResult ServerSession::writeOnce(const ServerStatement& statement) {
    StatementResult result = runStatement(statement, {}, true);
    keep({.statement = statement, .once = true});
    return result;
}

void ServerSession::keep(Kept kept) {
    if (open_) kept_.push_back(std::move(kept));
}

/// Runs until it succeeds or an error is no lock to be waited for.
StatementResult ServerSession::run(const Attempt& attempt) {
    requireConnection();
    LockPatience patience(options_.wait);
    for (;;) {
        StatementResult result;
        const Error error = tryOnce(attempt, result);
        if (!error) return result;
        const Failure failure = failureOf(*error);
        if (connectionLost(*error, failure)) lose(*error);
        if (waitsFor(failure) && patience.goOn()) continue;
        // Who gives a lock up may still commit what was written before.
        const bool endsRun = waitsFor(failure) || repeating_ || liesWithServer(failure);
        const bool recordsOnly = repeating_ && !waitsFor(failure) && !liesWithServer(failure);
        const int number = recordsOnly ? errors::kCannotBeRepeated : errorNumber(failure);
        if (repeating_) end();
        throw PlatformError(number, error->description, endsRun).quoted();
    }
}

ServerSession::Error ServerSession::tryOnce(const Attempt& attempt, StatementResult& result) {
    Error error = startOnServer();
    repeating_ = error.has_value();
    if (!error) error = attempt(result);
    if (!error || !open_ || (!repeating_ && survives(dialect(), failureOf(*error)))) return error;
    rolledBack_ = true;
    startEpoch();
    if (noConnection(failureOf(*error))) return error;
    Error worse = connection_.endTransaction(false);
    if (!worse) return error;
    if (failureOf(*worse) != Failure::Silent) worse->state = "08S01";
    return worse;
}

/// Sees to it that the server is in the transaction that the program is in, with everything written in it so far.
ServerSession::Error ServerSession::startOnServer() {
    if (Error error = connection_.setAutomaticCommit(!open_)) return error;
    onServer_ = open_;
    return open_ && rolledBack_ ? repeatKept() : std::nullopt;
}

ServerSession::Error ServerSession::repeatKept() {
    for (const Kept& kept : kept_) {
        StatementResult result;
        const auto& [text, parameters] = kept.statement;
        Error error =
            kept.once ? connection_.runOnce(text, parameters, result) : connection_.run(text, parameters, {}, result);
        if (error) return error;
        if (!kept.row.text.empty() && result.touched == 0) {
            error = findAgain(kept.row);
            if (error) return error;
        }
    }
    rolledBack_ = false;
    return std::nullopt;
}

/// The row of a repeated statement that touched none: it may have those values already, or be gone.
ServerSession::Error ServerSession::findAgain(const ServerStatement& row) {
    StatementResult result;
    if (Error error = connection_.run(row.text, row.parameters, {}, result)) return error;
    if (!result.rows.empty()) return std::nullopt;
    return ServerError{"HY000", 0, "another session has deleted a record that this transaction has changed"};
}

// Transactions.

void ServerSession::begin() {
    requireConnection();
    if (open_) throw PlatformError(errors::kInternal, "a transaction is open already");
    open_ = true;
    rolledBack_ = false;
    kept_.clear();
    startEpoch();
}

void ServerSession::commit() {
    requireConnection();
    requireTransaction();
    try {
        // Also after reading only, which may hold locks.
        const bool nothing = kept_.empty() && (rolledBack_ || !onServer_);
        if (!nothing) run([this](StatementResult&) { return connection_.endTransaction(true); });
    } catch (const PlatformError& error) {
        end();
        throw error.endingRun();
    }
    end();
}

void ServerSession::rollback() {
    requireConnection();
    requireTransaction();
    const Error error = rolledBack_ || !onServer_ ? std::nullopt : connection_.endTransaction(false);
    end();
    if (error) lose(*error);
}

void ServerSession::end() {
    if (open_) startEpoch();
    open_ = false;
    onServer_ = false;
    rolledBack_ = false;
    kept_.clear();
}

// The end of a connection.

/// Drivers do not always say that the connection is gone: what looks like any other error is asked for again.
bool ServerSession::connectionLost(const ServerError& error, Failure failure) {
    if (noConnection(failure)) return true;
    if (failure != Failure::Other || error.state != "HY000" || repeating_) return false;
    StatementResult result;
    const Error probe = connection_.runOnce("SELECT 1", {}, result);
    return probe.has_value() && failureOf(*probe) != Failure::Locked;
}

void ServerSession::lose(const ServerError& error) {
    const bool silent = failureOf(error) == Failure::Silent;
    lost_ = silent ? PlatformError(errors::kServerSilent, error.description, true)
                   : PlatformError(errors::kServerGone, error.description, true).quoted();
    end();
    throw *lost_;
}

// The catalogue.

StatementResult ServerSession::tables() {
    return run([this](StatementResult& result) { return connection_.tables(result); });
}

/// A table that another session has locked is waited for first: what a driver says of its own statements on the
/// catalogue does not tell a lock from any other error.
StatementResult ServerSession::columns(std::string_view table) {
    runStatement({"SELECT 1 FROM " + quotedName(dialect(), table) + " WHERE 1 = 0"}, {}, true);
    return run([&](StatementResult& result) { return connection_.columns(table, result); });
}

StatementResult ServerSession::indexes(std::string_view table) {
    return run([&](StatementResult& result) { return connection_.indexes(table, result); });
}

}  // namespace kolmera
