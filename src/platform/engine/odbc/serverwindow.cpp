#include "platform/engine/odbc/serverwindow.h"

#include <algorithm>
#include <ranges>
#include <utility>

#include "platform/error.h"

namespace kolmera {

void ServerWindow::begin() {
    session_.begin();
    session_.breakOffOnErrors(true);
    for (WindowTable& table : tables_) table.clear();
    heard_.clear();
    open_ = true;
    wrote_ = false;
}

WindowTable& ServerWindow::of(ServerTable& table) {
    for (WindowTable& known : tables_) {
        if (&known.table() == &table) return known;
    }
    return tables_.emplace_back(table);
}

bool ServerWindow::wants() const {
    return std::ranges::any_of(tables_, [](const WindowTable& table) { return table.wants(); });
}

WindowEnd ServerWindow::end(bool complete, bool again) {
    WindowEnd end = WindowEnd::Alone;
    try {
        if (wants() && again) {
            askAgain();
            return WindowEnd::Again;
        }
        if (complete && !wants()) {
            settle();
            open_ = false;
            session_.breakOffOnErrors(false);
            if (session_.commitUnlessRefused()) end = WindowEnd::Kept;
        }
    } catch (const WindowBroken&) {
        end = WindowEnd::Alone;
    }
    open_ = false;
    session_.breakOffOnErrors(false);
    if (end == WindowEnd::Alone) session_.rollback();
    return end;
}

/// What has been done so far rested on what was not known; the server has to hold nothing of it.
void ServerWindow::askAgain() {
    if (wrote_) {
        session_.rollback();
        session_.begin();
        for (WindowTable& table : tables_) table.forgetAnswers();
    } else {
        session_.forgetHeard();
    }
    wrote_ = false;
    heard_.clear();
    for (WindowTable& table : tables_) {
        table.forgetWritten();
        table.ask(session_);
    }
}

void ServerWindow::settle() {
    if (!open_) return;
    if (wants()) breakOff();
    const bool waits = std::ranges::any_of(tables_, [](const WindowTable& table) { return table.waits(); });
    if (!waits) return;
    wrote_ = true;
    bool allThere = true;
    for (WindowTable& table : tables_) {
        if (table.waits() && !table.write(session_)) allThere = false;
    }
    if (!allThere) breakOff();
    tell();
}

/// Before a read, which may be in vain: it is not to break off what has only been tried.
void ServerWindow::settle(ServerTable& table) {
    if (open_ && of(table).waits()) settle();
}

void ServerWindow::writeAtOnce() {
    if (!open_) return;
    settle();
    wrote_ = true;
}

void ServerWindow::tell() {
    ChangeListener* const listener = session_.listener();
    for (const Heard& heard : std::exchange(heard_, {})) {
        if (listener == nullptr) continue;
        if (heard.change) {
            heard.change->tell(*listener);
        } else {
            StatementResult answer;
            answer.rows = {{heard.table->givenId(heard.id)}};
            session_.hear(heard.table->added(heard.id, heard.place), answer);
        }
    }
}

std::optional<ServerTable::Rows> ServerWindow::rows(ServerTable& table, const ServerStatement& where,
                                                    std::string_view order, int limit) {
    if (!open_) return std::nullopt;
    WindowTable& known = of(table);
    const bool direct = wrote_ && !wants();  // what has been written would have to be written again
    ServerTable::Rows found;
    const WindowTable::Known answer = known.rows(where, order, limit, found);
    const bool asksNow = answer == WindowTable::Known::NotYet && direct;
    if (asksNow) known.forgetWanted();
    if (answer != WindowTable::Known::OnlyToTheServer && !asksNow) return found;
    settle(table);
    return std::nullopt;
}

std::optional<ServerTable::Rows> ServerWindow::row(ServerTable& table, std::int64_t id) {
    if (!open_) return std::nullopt;
    ServerTable::Rows found;
    if (of(table).row(id, found)) return found;
    if (of(table).waits(id)) settle();
    return std::nullopt;
}

std::optional<std::vector<Value>> ServerWindow::whole(ServerTable& table, std::int64_t id) {
    if (!open_) return std::nullopt;
    if (auto known = of(table).whole(id)) return known;
    if (of(table).waits(id)) settle();
    return std::nullopt;
}

std::int64_t ServerWindow::add(ServerTable& table, const ColumnSet& columns, const std::vector<Value>& values) {
    const std::int64_t id = --lastAdded_;
    of(table).add(id, columns, values, !wrote_ || wants());
    ChangeListener* const listener = session_.listener();
    if (listener != nullptr) heard_.push_back({.table = &of(table), .id = id, .place = listener->place()});
    return id;
}

bool ServerWindow::change(ServerTable& table, std::int64_t id, const ColumnSet& columns,
                          const std::vector<Value>& values, const ServerSession::Hearing& hearing) {
    WindowTable& known = of(table);
    const bool added = id < 0;
    if (!added && known.mayCollide(columns)) {
        writeAtOnce();
        return false;
    }
    known.change(id, columns, values);
    if (hearing && !added) heard_.push_back({.change = hearing});
    return true;
}

void ServerWindow::changedAtOnce(ServerTable& table, std::int64_t id, const ColumnSet& columns,
                                 const std::vector<Value>& values) {
    if (!open_) return;
    of(table).changed(id, columns, values);
}

std::int64_t ServerWindow::knownId(ServerTable& table, std::int64_t id) {
    const std::int64_t given = id < 0 ? of(table).givenId(id) : 0;
    return given != 0 ? given : id;
}

std::int64_t ServerWindow::realId(ServerTable& table, std::int64_t id) {
    if (id >= 0) return id;
    if (open_ && of(table).givenId(id) == 0) settle();
    return of(table).givenId(id);
}

}  // namespace kolmera
