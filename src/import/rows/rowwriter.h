#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "db/sqllayer.h"
#include "import/rows/seekkeys.h"
#include "platform/attempt.h"
#include "platform/engine/recordset.h"
#include "pricing/pricetrace.h"

namespace kolmera {

/// A column found by its name or position, once for a run, and what its statements are called when they fail.
struct Column {
    int ordinal;
    std::string statement;  ///< "Produkt.Inpris"
};

/// The rows of one table as a run writes them, statement by statement: what the engine refuses is noted, under
/// "Table.Column" or, for a whole row, "Table", and leaves the column, or the row, as it was.
///
/// Order: `editOrAdd`, then `write`, then `save`; or, where a row depends on what was found, `change` with a function
/// that calls `find`, `begin`, `write` and `update`. Both go on with the row of another run that has added it
/// meanwhile.
class RowWriter {
  public:
    enum class Row { Existing, New, Unreachable };

    /// Opens the table with the index that rows are found by; the engine's errors reach the caller.
    RowWriter(SqlLayer& sql, PassedOver& passedOver, std::string_view table, std::string_view index);
    /// `rows` is the table, opened so.
    RowWriter(SqlLayer& sql, PassedOver& passedOver, std::string_view table, std::unique_ptr<Recordset> rows);

    /// Throws PlatformError(kUnknownField).
    [[nodiscard]] Column column(std::string_view name) const;
    [[nodiscard]] Column columnAt(int ordinal) const;

    /// Every row that is stored from now on is counted there; `rows` outlives the writer.
    void countIn(std::int64_t& rows) { counted_ = &rows; }
    /// Hears of every price that is written from now on; null for nobody.
    void tellTo(PriceTrace* trace) { trace_ = trace; }

    /// From now on `editOrAdd` only looks a row up, which passes for a new one, and what is written to it and saved
    /// goes nowhere: for work that is done again when the answers are known.
    void lookOnly(bool on) { looksOnly_ = on; }

    /// Edits the row that has this key, or begins a new one. When neither succeeds the row is unreachable, and nothing
    /// is to be written.
    template <typename... Key>
    Row editOrAdd(const Key&... key) {
        return editOrAdd(keys_.of(key...));
    }
    void write(const Column& column, std::string_view text) { set(column, std::string(text)); }
    void write(const Column& column, double number) {
        if (set(column, number) && trace_) trace_->written(column.statement, number);
    }
    void write(const Column& column, std::int64_t number) { set(column, number); }
    /// A date column refuses the empty text that stands for an unreadable date: the old date stays.
    void write(const Column& column, const std::optional<Date>& date);
    /// The number in the row that is being edited or added; 0 when it holds none.
    [[nodiscard]] double number(const Column& column);
    /// Whether the row was saved.
    bool save();

    /// Whether `step` succeeded. It is called again when another run has added the row meanwhile.
    template <typename Step>
    bool change(Step&& step) {
        return attempt(passedOver_, table_, [&] { searchAgainOnDuplicate(step); });
    }
    // Within `change`; the engine's errors reach it.
    /// Whether there is a row of this key.
    template <typename... Key>
    bool find(const Key&... key) {
        return find(keys_.of(key...));
    }
    void begin(bool exists);
    void update();
    /// A row of the table was stored by other means than this writer's.
    void storedElsewhere() { count(); }

    [[nodiscard]] Recordset& rows() { return *rows_; }

  private:
    Row editOrAdd(Keys keys);
    bool find(Keys keys);
    bool set(const Column& column, Value value);
    void writeIntoExisting();
    void count() {
        if (counted_) ++*counted_;
    }

    SqlLayer& sql_;
    PassedOver& passedOver_;
    std::string table_;
    std::unique_ptr<Recordset> rows_;
    SeekKeys keys_;
    Keys searched_;  ///< of the row at hand, in `keys_`
    bool looksOnly_ = false;
    bool added_ = false;                          ///< it is new, and `save` is to come
    std::vector<std::pair<int, Value>> written_;  ///< into a new row
    std::int64_t* counted_ = nullptr;
    PriceTrace* trace_ = nullptr;
};

}  // namespace kolmera
