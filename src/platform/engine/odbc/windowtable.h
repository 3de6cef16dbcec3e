#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/engine/odbc/serversession.h"
#include "platform/engine/odbc/servertable.h"
#include "platform/engine/sparserow.h"

namespace kolmera {

/// What a window of records knows of one table: rows that were asked for by equality, read together for all records of
/// the window, and what these have written since, which waits. A row that waits to be added has an ID below 0.
class WindowTable {
  public:
    explicit WindowTable(ServerTable& table);
    WindowTable(const WindowTable&) = delete;
    WindowTable& operator=(const WindowTable&) = delete;
    ~WindowTable() = default;

    [[nodiscard]] ServerTable& table() const { return table_; }
    /// Forgets everything but the kinds of questions.
    void clear();
    /// Forgets what was written.
    void forgetWritten();
    /// The same questions are to be asked anew.
    void forgetAnswers();
    /// What has no answer yet is not to be asked.
    void forgetWanted();

    enum class Known { Yes, NotYet, OnlyToTheServer };
    /// The rows that meet a condition, at most `limit` of them; those of `NotYet` are none, and are asked for later.
    Known rows(const ServerStatement& where, std::string_view order, int limit, ServerTable::Rows& found);
    [[nodiscard]] bool row(std::int64_t id, ServerTable::Rows& found) const;
    /// All columns of a row, as far as they are known.
    [[nodiscard]] std::optional<std::vector<Value>> whole(std::int64_t id) const;
    /// Takes in what the server has said of a row.
    void learnRow(std::int64_t id, std::span<const int> columns, const std::vector<Value>& values);

    [[nodiscard]] bool wants() const;
    /// Asks for all rows that were wanted, one statement for each kind of question.
    void ask(ServerSession& session);

    /// `mayAsk`: the server can be asked for more, before the work is done again.
    void add(std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values, bool mayAsk);
    void change(std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values);
    /// The row has been changed on the server.
    void changed(std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values);
    /// The row has been removed on the server.
    void remove(std::int64_t id);
    /// A statement has written to the table: nothing that is known holds any more.
    void written();
    [[nodiscard]] bool waits() const { return !added_.empty() || !changed_.empty(); }
    [[nodiscard]] bool waits(std::int64_t id) const { return id < 0 || changed_.contains(id); }
    /// Writes what waits. False when a row that was to be changed is not there.
    [[nodiscard]] bool write(ServerSession& session);
    /// Whether a change of these columns may be refused because of another row.
    [[nodiscard]] bool mayCollide(const ColumnSet& columns) const { return unique_.intersects(columns); }

    /// The ID that the server has given to a row that was added here; 0 while it waits.
    [[nodiscard]] std::int64_t givenId(std::int64_t id) const;
    /// An added row, for who hears of it.
    [[nodiscard]] ServerSession::Hearing added(std::int64_t id, std::int64_t place) const;

  private:
    struct Added {
        SparseRow values;
        std::int64_t given = 0;  ///< its ID, once the server has added it
    };
    /// Rows by the values of some columns, in some order.
    struct Question {
        std::string where, order;
        std::vector<int> columns;
        bool byKey = false;                                   ///< rows of one key come by their IDs
        std::unordered_map<std::string, std::size_t> places;  ///< of keys in `keys`
        std::vector<std::vector<Value>> keys;
        std::size_t asked = 0;                         ///< so many of the keys have an answer
        std::vector<std::size_t> same;                 ///< the first of the keys that are equal to the server
        std::vector<bool> tooMany;                     ///< by key: its rows are not known
        std::vector<std::vector<std::int64_t>> found;  ///< by first key
        std::unordered_map<std::size_t, std::vector<std::int64_t>> alsoFound;  ///< rows added since
        bool unsure = false;  ///< what was written since may change any answer
    };

    Question* question(const ServerStatement& where, std::string_view order);
    [[nodiscard]] std::vector<int> columnsOf(std::string_view where) const;
    [[nodiscard]] bool ordersById(std::string_view order, std::span<const int> columns) const;
    static std::size_t want(Question& question, const std::vector<Value>& key);
    void ask(ServerSession& session, Question& question);
    [[nodiscard]] ServerStatement askingFor(const Question& question, std::span<const int> columns) const;
    [[nodiscard]] ServerTable::Rows rowsOf(std::span<const std::int64_t> ids) const;
    /// What is known of a row: what waits, and what the server has.
    struct View {
        const SparseRow* changed = nullptr;
        const SparseRow* added = nullptr;
        const SparseRow* row = nullptr;
    };
    [[nodiscard]] View view(std::int64_t id) const;
    [[nodiscard]] const Value* value(const View& view, int column) const;
    [[nodiscard]] const Dialect& dialect() const { return table_.session().dialect(); }
    void writeChanged(ServerSession& session, const ColumnSet& columns, std::span<const std::int64_t> ids,
                      bool& allThere);
    [[nodiscard]] bool areThere(ServerSession& session, std::span<const std::int64_t> ids) const;
    void writeAdded(ServerSession& session);
    void writeAdded(ServerSession& session, std::span<const std::int64_t> ids, const ColumnSet& columns);
    [[nodiscard]] std::size_t mostAdded(const ColumnSet& columns) const;

    ServerTable& table_;
    ColumnSet unique_;  ///< of unique indexes
    std::deque<Question> questions_;
    std::unordered_map<std::string, Question*> known_;  ///< by condition and order; nullptr: cannot be asked so
    std::unordered_map<std::int64_t, SparseRow> rows_;
    std::vector<std::int64_t> added_;            ///< that wait, in their order
    std::map<std::int64_t, SparseRow> changed_;  ///< that wait
    std::map<std::int64_t, Added> given_;        ///< added in this window, waiting or not
};

}  // namespace kolmera
