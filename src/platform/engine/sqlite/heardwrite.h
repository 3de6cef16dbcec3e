#pragma once

#include <cstdint>
#include <exception>

#include "platform/engine/changelistener.h"
#include "platform/engine/sqlite/filetable.h"

struct sqlite3;

namespace kolmera {

/// One write of a session: while it lives, the rows that its statements write are told to the session's listener,
/// triggers' rows too. What is written outside a transaction gets one of its own, so that the listener hears of the
/// commit before it. Without a listener it does nothing.
class HeardWrite {
  public:
    enum class Rows { AsStored, ToldByCaller };

    HeardWrite(FileSession& session, Rows rows);
    HeardWrite(const HeardWrite&) = delete;
    HeardWrite& operator=(const HeardWrite&) = delete;
    /// Without `done` the statement has failed: what was told of it is taken back.
    ~HeardWrite();
    /// The statements have succeeded. Throws what the listener threw.
    void done();
    [[nodiscard]] bool heard() const { return listener_ != nullptr; }

  private:
    static void hear(void* self, sqlite3* handle, int operation, const char* database, const char* table,
                     long long before, long long after);
    void tell(int operation, std::string_view table, std::int64_t before, std::int64_t after);
    void tellWhole(const FileTable& table, std::int64_t id, bool added);
    void tellChanged(const FileTable& table, std::int64_t id);
    void readValues(const FileTable& table, bool after, std::vector<Value>& into) const;
    void takeBack() noexcept;

    FileSession& session_;
    ChangeListener* listener_;
    bool asStored_;
    bool ownTransaction_ = false;
    bool done_ = false;
    std::exception_ptr thrown_;
    std::vector<Value> before_, after_;
    std::vector<ChangedCell>& cells_;
    std::vector<const Value*>& known_;
};

}  // namespace kolmera
