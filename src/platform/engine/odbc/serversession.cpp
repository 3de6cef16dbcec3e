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

class ServerSession::Own {
  public:
    explicit Own(ServerSession& session) : session_(session), own_(session.listener_ != nullptr && !session.open_) {
        if (own_) session_.begin();
    }
    Own(const Own&) = delete;
    Own& operator=(const Own&) = delete;
    ~Own() {
        if (!own_ || !session_.open_) return;
        try {
            session_.rollback();
        } catch (const PlatformError&) {
            // The statement's own error is on its way; a lost connection is told of by the next one.
        }
    }
    void done() {
        if (own_) session_.commit();
    }

  private:
    ServerSession& session_;
    bool own_;
};

StatementResult ServerSession::runHeard(const ServerStatement& statement, std::span<const FieldType> types, bool once,
                                        const Hearing& hearing) {
    if (!hearing) return runStatement(statement, types, once);
    for (const Value& value : statement.parameters) requireStorable(value);
    bool again = rolledBack_;
    return run([&](StatementResult& result) {
        Error error = hearing->before(connection_, *listener_, std::exchange(again, true));
        if (!error)
            error = once ? connection_.runOnce(statement.text, statement.parameters, result)
                         : connection_.run(statement.text, statement.parameters, types, result);
        if (!error) error = hearing->after(connection_, result);
        if (error) hearing->failed(*listener_);
        return error;
    });
}

void ServerSession::tell(const Hearing& hearing) {
    if (hearing && listener_ != nullptr) hearing->tell(*listener_);
}

void ServerSession::tellUndone() {
    if (listener_ != nullptr && !committing_) listener_->undone();
}

StatementResult ServerSession::write(const ServerStatement& statement, std::span<const FieldType> types,
                                     const Hearing& hearing) {
    Own own(*this);
    StatementResult result = runHeard(statement, types, false, hearing);
    tell(hearing);
    keep({.statement = statement, .hearing = hearing, .types = {types.begin(), types.end()}});
    own.done();
    return result;
}

bool ServerSession::writeRow(const ServerStatement& statement, const ServerStatement& itsRow, const Hearing& hearing) {
    Own own(*this);
    // Some servers count a row that has those values already as not touched.
    const bool found = runHeard(statement, {}, false, hearing).touched > 0 || !runStatement(itsRow, {}).rows.empty();
    if (found) tell(hearing);
    keep({.statement = statement, .row = found ? itsRow : ServerStatement(), .hearing = found ? hearing : Hearing()});
    own.done();
    return found;
}

std::int64_t ServerSession::insert(const ServerStatement& statement,
                                   const std::function<ServerStatement(std::int64_t id)>& again,
                                   const Hearing& hearing) {
    constexpr FieldType kId = FieldType::Long;
    Own own(*this);
    const StatementResult result = runHeard(statement, std::span(&kId, 1), false, hearing);
    const auto* id = result.rows.empty() ? nullptr : std::get_if<std::int64_t>(&result.rows.front().front());
    if (id == nullptr) throw PlatformError(errors::kInternal, "the database server gave the new record no ID");
    tell(hearing);
    if (open_) keep({.statement = again(*id), .hearing = hearing});
    own.done();
    return *id;
}

StatementResult ServerSession::writeOnce(const ServerStatement& statement, const Hearing& hearing) {
    Own own(*this);
    StatementResult result = runHeard(statement, {}, true, hearing);
    tell(hearing);
    keep({.statement = statement, .once = true, .hearing = hearing});
    own.done();
    return result;
}

void ServerSession::keep(Kept kept) {
    if (open_ && !breaksOff_) kept_.push_back(std::move(kept));
}

/// Runs until it succeeds or an error is no lock to be waited for.
StatementResult ServerSession::run(const Attempt& attempt) {
    requireConnection();
    if (breaksOff_) return runOrBreakOff(attempt);
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
        if (repeating_) {
            end();
            tellUndone();
        }
        throw PlatformError(number, error->description, endsRun).quoted();
    }
}

StatementResult ServerSession::runOrBreakOff(const Attempt& attempt) {
    StatementResult result;
    Error error = startOnServer();
    if (!error) error = attempt(result);
    if (!error) return result;
    if (connectionLost(*error, failureOf(*error))) lose(*error);
    throw WindowBroken();
}

ServerSession::Error ServerSession::tryOnce(const Attempt& attempt, StatementResult& result) {
    Error error = startOnServer();
    repeating_ = error.has_value();
    if (!error) error = attempt(result);
    if (!error || !open_ || (!repeating_ && survives(dialect(), failureOf(*error)))) return error;
    rolledBack_ = true;
    startEpoch();
    tellUndone();
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
        if (Error error = runKept(kept)) return error;
        tell(kept.hearing);
    }
    rolledBack_ = false;
    return std::nullopt;
}

ServerSession::Error ServerSession::runKept(const Kept& kept) {
    const bool heard = kept.hearing && listener_ != nullptr;
    if (heard) {
        if (Error error = kept.hearing->before(connection_, *listener_, true)) return error;
    }
    StatementResult result;
    const auto& [text, parameters] = kept.statement;
    Error error = kept.once ? connection_.runOnce(text, parameters, result)
                            : connection_.run(text, parameters, kept.types, result);
    if (!error && !kept.row.text.empty() && result.touched == 0) error = findAgain(kept.row);
    if (!error && heard) error = kept.hearing->after(connection_, result);
    return error;
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
    // Also after reading only, which may hold locks.
    const bool nothing = kept_.empty() && (rolledBack_ || !onServer_);
    try {
        if (!nothing) run([this](StatementResult&) { return commitOnServer(); });
    } catch (const PlatformError& error) {
        committing_ = false;
        end();
        if (!lost_) tellUndone();
        throw error.endingRun();
    }
    end();
    if (listener_ != nullptr && !nothing) listener_->stands();
}

/// Behind the repetition of what was rolled back, which is heard too.
ServerSession::Error ServerSession::commitOnServer() {
    if (listener_ != nullptr) listener_->kept();
    committing_ = true;
    Error error = connection_.endTransaction(true);
    committing_ = error && noConnection(failureOf(*error));
    return error;
}

void ServerSession::rollback() {
    requireConnection();
    requireTransaction();
    const Error error = rolledBack_ || !onServer_ ? std::nullopt : connection_.endTransaction(false);
    end();
    tellUndone();
    if (error) lose(*error);
}

bool ServerSession::commitUnlessRefused() {
    requireConnection();
    requireTransaction();
    const bool nothing = !onServer_;
    const Error error = nothing ? std::nullopt : commitOnServer();
    if (error && connectionLost(*error, failureOf(*error))) lose(*error);
    committing_ = false;
    if (error) return false;
    end();
    if (listener_ != nullptr && !nothing) listener_->stands();
    return true;
}

void ServerSession::forgetHeard() {
    startEpoch();
    tellUndone();
}

void ServerSession::hear(const Hearing& hearing, const StatementResult& answer) {
    run([&](StatementResult&) { return hearing->after(connection_, answer); });
    tell(hearing);
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
    tellUndone();
    throw *lost_;
}

// The catalogue.

StatementResult ServerSession::tables() {
    return run([this](StatementResult& result) { return connection_.tables(result); });
}

/// Over a slow line a table takes a while, and work begins by learning many: who gives up is heard in between.
void ServerSession::askWhetherToGoOn() {
    constexpr std::chrono::seconds kNoticeable(1);
    const auto now = std::chrono::steady_clock::now();
    if (!options_.waitForAnswer || now - asked_ < kNoticeable) return;
    asked_ = now;
    if (options_.waitForAnswer({})) return;
    lose({.state = std::string(kSilentState), .native = 0, .description = "cancelled while tables were looked up"});
}

/// A table that another session has locked is waited for first: what a driver says of its own statements on the
/// catalogue does not tell a lock from any other error.
StatementResult ServerSession::columns(std::string_view table) {
    requireConnection();
    askWhetherToGoOn();
    runStatement({"SELECT 1 FROM " + quotedName(dialect(), table) + " WHERE 1 = 0"}, {}, true);
    return run([&](StatementResult& result) { return connection_.columns(table, result); });
}

StatementResult ServerSession::indexes(std::string_view table) {
    return run([&](StatementResult& result) { return connection_.indexes(table, result); });
}

}  // namespace kolmera
