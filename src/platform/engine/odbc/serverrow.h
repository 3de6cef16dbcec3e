#pragma once

#include <cstdint>
#include <vector>

#include "platform/engine/columnset.h"
#include "platform/engine/odbc/servertable.h"
#include "platform/engine/value.h"

namespace kolmera {

/// The current row of a dynaset on a server, and its editing. A column that was not read with the row is read when it
/// is asked for, and the rows of its table are read with it from then on.
class ServerRow {
  public:
    ServerRow(ServerTable& table, bool readOnly);
    ServerRow(const ServerRow&) = delete;
    ServerRow& operator=(const ServerRow&) = delete;
    ~ServerRow();

    [[nodiscard]] bool present() const { return present_; }
    [[nodiscard]] std::int64_t id() const { return id_; }
    /// Makes a row current that has been read.
    void take(const ServerTable::Rows& rows, std::size_t place);
    /// Reads a row by its ID; false, and no current row, when there is none.
    bool read(std::int64_t id);

    // Reading and editing. Throws kNoCurrentRecord without a row.
    const Value& value(int ordinal);
    void addNew();
    void edit();
    void set(int ordinal, Value value);
    void update();
    void cancel() { mode_ = Mode::None; }
    void remove();
    [[nodiscard]] bool adding() const { return mode_ == Mode::Add; }

    /// ID of the row saved last, 0 when there is none.
    [[nodiscard]] std::int64_t lastSaved() const { return lastSaved_; }
    /// Makes the row saved last current, without reading it when what was saved is known.
    void takeLastSaved();

  private:
    enum class Mode { None, Edit, Add };

    [[nodiscard]] static std::size_t at(int ordinal) { return static_cast<std::size_t>(ordinal); }
    void requireWritable() const;
    void requirePresent() const;
    void refresh();
    void load(int ordinal);
    void startMode(Mode mode);
    void writeNew();
    void writeChanged();
    void noteWrite();

    ServerTable& table_;
    bool readOnly_;

    bool present_ = false;
    std::int64_t id_ = 0;
    std::vector<Value> current_;
    ColumnSet loaded_;
    std::uint64_t version_ = 0;  ///< of the table, when the row was read

    Mode mode_ = Mode::None;
    std::vector<Value> edited_;
    ColumnSet changed_;  ///< columns whose value in `edited_` counts
    std::int64_t lastSaved_ = 0;
    bool savedAtHand_ = false;        ///< `edited_` and the defaults are the row added last ...
    std::uint64_t savedVersion_ = 0;  ///< ... as long as the table has this version
};

}  // namespace kolmera
