#define SQLITE_ENABLE_PREUPDATE_HOOK  // declares it; a library without it does not link
#include "platform/engine/sqlite/heardwrite.h"

#include <sqlite3.h>

#include <algorithm>
#include <utility>

#include "platform/engine/sqlite/storedfield.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

/// A column of a row that is being written.
struct WrittenColumn {
    sqlite3_value* value;

    [[nodiscard]] int storage() const { return value != nullptr ? sqlite3_value_type(value) : SQLITE_NULL; }
    [[nodiscard]] sqlite3_int64 integer() const { return sqlite3_value_int64(value); }
    [[nodiscard]] double number() const { return sqlite3_value_double(value); }
    [[nodiscard]] std::string_view text() const {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
        return {bytes, static_cast<std::size_t>(sqlite3_value_bytes(value))};
    }
};

}  // namespace

HeardWrite::HeardWrite(FileSession& session, Rows rows)
    : session_(session),
      listener_(session.connection.listener()),
      asStored_(rows == Rows::AsStored),
      cells_(session.cells),
      known_(session.known) {
    if (listener_ == nullptr) return;
    if (!session.connection.transactionOpen()) {
        session.connection.begin();
        ownTransaction_ = true;
    }
    if (!asStored_) return;
    listener_->statementBegins();
    sqlite3_preupdate_hook(session.connection.handle(), &HeardWrite::hear, this);
}

HeardWrite::~HeardWrite() {
    if (listener_ == nullptr) return;
    if (asStored_) sqlite3_preupdate_hook(session_.connection.handle(), nullptr, nullptr);
    if (!done_) takeBack();
}

void HeardWrite::done() {
    if (listener_ == nullptr) return;
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
    if (ownTransaction_) session_.connection.commit();
    done_ = true;
}

void HeardWrite::takeBack() noexcept {
    try {
        if (asStored_) listener_->statementFailed();
        if (ownTransaction_ && session_.connection.transactionOpen()) session_.connection.rollback();
    } catch (const PlatformError& error) {
        session_.transactions.keepError(error);
    }
}

/// Called by SQLite in the middle of a statement, through which no exception can go.
void HeardWrite::hear(void* self, sqlite3* /*handle*/, int operation, const char* database, const char* table,
                      long long before, long long after) {
    auto& write = *static_cast<HeardWrite*>(self);
    if (write.thrown_ || std::string_view(database) != "main") return;
    try {
        write.tell(operation, table, before, after);
    } catch (...) {
        write.thrown_ = std::current_exception();
    }
}

void HeardWrite::tell(int operation, std::string_view name, std::int64_t before, std::int64_t after) {
    const auto found = std::ranges::find_if(
        session_.tables, [&](const FileTable* table) { return equalNoCase(table->definition().name, name); });
    if (found == session_.tables.end()) return;  // one of the engine's own
    const FileTable& table = **found;
    if (operation != SQLITE_INSERT) readValues(table, false, before_);
    if (operation != SQLITE_DELETE) readValues(table, true, after_);
    if (operation == SQLITE_UPDATE && before == after) return tellChanged(table, before);
    if (operation != SQLITE_INSERT) tellWhole(table, before, false);
    if (operation != SQLITE_DELETE) tellWhole(table, after, true);
}

void HeardWrite::readValues(const FileTable& table, bool after, std::vector<Value>& into) const {
    sqlite3* const handle = session_.connection.handle();
    into.resize(static_cast<std::size_t>(table.columns()));
    for (int column = 0; column < table.columns(); ++column) {
        sqlite3_value* value = nullptr;
        const int code =
            after ? sqlite3_preupdate_new(handle, column, &value) : sqlite3_preupdate_old(handle, column, &value);
        if (code != SQLITE_OK)
            throw PlatformError(errors::kInternal, sqlite3_errstr(code)).about(table.definition().name);
        readStored(WrittenColumn{value}, table.field(column).type, into[static_cast<std::size_t>(column)]);
    }
}

void HeardWrite::tellWhole(const FileTable& table, std::int64_t id, bool added) {
    const std::vector<Value>& values = added ? after_ : before_;
    cells_.clear();
    known_.assign(values.size(), nullptr);
    for (int column = 0; column < table.columns(); ++column) {
        const Value& value = values[static_cast<std::size_t>(column)];
        if (isNull(value) || table.field(column).counter) continue;
        cells_.push_back({.column = column, .before = added ? nullptr : &value, .after = added ? &value : nullptr});
    }
    const ChangedRow row{
        .table = table.definition(), .id = id, .cells = cells_, .known = known_, .place = listener_->place()};
    if (added) {
        listener_->added(row);
    } else {
        listener_->removed(row);
    }
}

void HeardWrite::tellChanged(const FileTable& table, std::int64_t id) {
    cells_.clear();
    known_.assign(before_.size(), nullptr);
    for (int column = 0; column < table.columns(); ++column) {
        const auto at = static_cast<std::size_t>(column);
        if (before_[at] == after_[at]) {
            known_[at] = &before_[at];
        } else {
            cells_.push_back({.column = column, .before = &before_[at], .after = &after_[at]});
        }
    }
    if (cells_.empty()) return;
    listener_->changed(
        {.table = table.definition(), .id = id, .cells = cells_, .known = known_, .place = listener_->place()});
}

}  // namespace kolmera
