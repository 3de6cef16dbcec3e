#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/odbc/odbcconnection.h"
#include "platform/engine/odbc/serverdatabase.h"
#include "platform/engine/odbc/serverhearing.h"
#include "platform/engine/odbc/servertext.h"
#include "platform/error.h"

namespace kolmera {

/// The connection as the engine sees it: transactions whose other statements survive one that fails, locks that are
/// waited for, and one clear end when the connection is lost. Errors are PlatformError.
///
/// In a transaction every statement that wrote is kept, ready to be run again. When an error takes the transaction with
/// it, the server's transaction is rolled back and the next statement first repeats the kept ones. While a lock is
/// waited for this session holds none itself.
class ServerSession {
  public:
    /// What a statement writes; shared with the statements that are kept to be run again.
    using Hearing = std::shared_ptr<ServerHearing>;

    ServerSession(const std::string& connectString, const ServerOptions& options);

    [[nodiscard]] const Dialect& dialect() const { return connection_.dialect(); }
    [[nodiscard]] const Locale& locale() const { return options_.locale; }
    [[nodiscard]] const std::vector<TableDef>& knownTables() const { return options_.tables; }

    /// A statement that reads.
    StatementResult read(const ServerStatement& statement, std::span<const FieldType> types);
    /// A statement that writes. `hearing` where somebody listens, here and below.
    StatementResult write(const ServerStatement& statement, std::span<const FieldType> types = {},
                          const Hearing& hearing = {});
    /// A statement on one row, which `itsRow` selects; false when the row is not there. A repetition that finds no row
    /// ends the run.
    bool writeRow(const ServerStatement& statement, const ServerStatement& itsRow, const Hearing& hearing = {});
    /// An INSERT that gives the new row's ID back; `again` makes the statement that inserts the row with that ID.
    std::int64_t insert(const ServerStatement& statement, const std::function<ServerStatement(std::int64_t id)>& again,
                        const Hearing& hearing = {});
    /// A statement that writes and is not to stay prepared.
    StatementResult writeOnce(const ServerStatement& statement, const Hearing& hearing = {});

    void listen(ChangeListener* listener) { listener_ = listener; }
    [[nodiscard]] ChangeListener* listener() const { return listener_; }

    void begin();
    void commit();
    void rollback();

    // For a window of records.
    /// While it is on, an error of the server is told as WindowBroken, unless the connection is lost, and nothing is
    /// kept to be run again.
    void breakOffOnErrors(bool on) { breaksOff_ = on; }
    /// False when the server refuses; its transaction then waits to be rolled back.
    bool commitUnlessRefused();
    /// What was heard since the last commit has not happened, without anything to be rolled back.
    void forgetHeard();
    /// Tells of a row that another statement has written, which has answered so.
    void hear(const Hearing& hearing, const StatementResult& answer);
    [[nodiscard]] bool inTransaction() const { return open_; }

    /// Changes with everything that may have changed rows behind the back of those who hold copies: transactions that
    /// begin or are rolled back, and statements from above.
    [[nodiscard]] std::uint64_t epoch() const { return epoch_; }
    void startEpoch() { ++epoch_; }

    /// Throws kWrongType for a text that the server or its driver would cut.
    void requireStorable(const Value& value) const;

    // The catalogue.
    StatementResult tables();
    StatementResult columns(std::string_view table);
    StatementResult indexes(std::string_view table);

  private:
    using Error = std::optional<ServerError>;
    using Attempt = std::function<Error(StatementResult&)>;

    /// A statement of the transaction that has been run.
    struct Kept {
        ServerStatement statement;
        ServerStatement row = {};  ///< selects the row that has to be there again
        bool once = false;         ///< not to stay prepared
        Hearing hearing = {};
        std::vector<FieldType> types = {};  ///< of what it answers
    };
    /// A transaction of the listener's own around a statement outside any, so that it hears of the commit before it.
    class Own;

    StatementResult run(const Attempt& attempt);
    StatementResult runOrBreakOff(const Attempt& attempt);
    StatementResult runStatement(const ServerStatement& statement, std::span<const FieldType> types, bool once = false);
    StatementResult runHeard(const ServerStatement& statement, std::span<const FieldType> types, bool once,
                             const Hearing& hearing);
    Error runKept(const Kept& kept);
    void tell(const Hearing& hearing);
    void tellUndone();
    Error tryOnce(const Attempt& attempt, StatementResult& result);
    Error repeatKept();
    Error findAgain(const ServerStatement& row);
    Error startOnServer();
    void keep(Kept kept);
    Error commitOnServer();
    void requireConnection() const;
    void requireTransaction() const;
    [[nodiscard]] bool connectionLost(const ServerError& error, Failure failure);
    [[noreturn]] void lose(const ServerError& error);
    void askWhetherToGoOn();
    void end();

    ServerOptions options_;
    OdbcConnection connection_;
    bool open_ = false;        ///< a transaction of the program
    bool onServer_ = false;    ///< a statement of it has been run
    bool rolledBack_ = false;  ///< its statements are not on the server at the moment
    bool breaksOff_ = false;   ///< a window of records is open
    bool repeating_ = false;   ///< the error at hand comes from a kept statement
    bool committing_ = false;  ///< if the connection is lost now, nobody knows what the server has kept
    ChangeListener* listener_ = nullptr;
    std::vector<Kept> kept_;
    std::chrono::steady_clock::time_point asked_ = std::chrono::steady_clock::now();
    std::uint64_t epoch_ = 0;
    std::optional<PlatformError> lost_;  ///< why there is no connection any more
};

}  // namespace kolmera
