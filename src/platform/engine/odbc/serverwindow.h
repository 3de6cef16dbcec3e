#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/engine/database.h"
#include "platform/engine/odbc/serversession.h"
#include "platform/engine/odbc/servertable.h"
#include "platform/engine/odbc/windowtable.h"

namespace kolmera {

/// A window of records on a server. Reads by equality are gathered and asked together, before the records are done
/// once more; writes wait, and go out as statements of many rows. Whatever else is asked of the server or done to it
/// finds them written. WindowBroken is thrown where the window has to be done again, or without a window.
class ServerWindow {
  public:
    explicit ServerWindow(ServerSession& session) : session_(session) {}

    [[nodiscard]] bool open() const { return open_; }
    void begin();
    /// Writes what waits and commits, asks for what was wanted, or rolls back.
    WindowEnd end(bool complete, bool again);

    // For a table, in an open window. What they cannot answer or hold back is asked of the server, or done to it, at
    // once: what waits has been written then.
    std::optional<ServerTable::Rows> rows(ServerTable& table, const ServerStatement& where, std::string_view order,
                                          int limit);
    std::optional<ServerTable::Rows> row(ServerTable& table, std::int64_t id);
    std::optional<std::vector<Value>> whole(ServerTable& table, std::int64_t id);
    void learnRow(ServerTable& table, std::int64_t id, std::span<const int> columns, const std::vector<Value>& values) {
        if (open_) of(table).learnRow(id, columns, values);
    }
    std::int64_t add(ServerTable& table, const ColumnSet& columns, const std::vector<Value>& values);
    /// False when the row has to be written at once.
    bool change(ServerTable& table, std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values,
                const ServerSession::Hearing& hearing);
    void changedAtOnce(ServerTable& table, std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values);
    void removed(ServerTable& table, std::int64_t id) {
        if (open_) of(table).remove(id);
    }
    void written(ServerTable& table) {
        if (open_) of(table).written();
    }
    /// Writes what waits, if rows of the table are among it.
    void settle(ServerTable& table);
    /// The same, before something is written without waiting.
    void writeAtOnce();
    /// The ID that a row is known by now.
    std::int64_t knownId(ServerTable& table, std::int64_t id);
    /// The ID that the server knows a row by.
    std::int64_t realId(ServerTable& table, std::int64_t id);

  private:
    /// What is told to the listener when it is written.
    struct Heard {
        WindowTable* table = nullptr;  ///< of an added row
        std::int64_t id = 0, place = 0;
        ServerSession::Hearing change = {};
    };

    WindowTable& of(ServerTable& table);
    void settle();
    void askAgain();
    void tell();
    [[noreturn]] static void breakOff() { throw WindowBroken(); }
    [[nodiscard]] bool wants() const;

    ServerSession& session_;
    bool open_ = false;
    bool wrote_ = false;  ///< the server holds something of it
    std::deque<WindowTable> tables_;
    std::vector<Heard> heard_;
    std::int64_t lastAdded_ = 0;
};

}  // namespace kolmera
