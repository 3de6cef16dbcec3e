#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "history/keptrows.h"
#include "history/netrows.h"
#include "history/presentrows.h"
#include "history/returningnumbers.h"
#include "history/undo.h"
#include "platform/engine/database.h"

namespace kolmera {

/// What is to be done with a row of the run, as its mark in NetRows.
enum UndoStep : int {
    kUnseen = 0,
    kRemove,      ///< an added row goes
    kRestore,     ///< the cells get their old values; the others are not among them any more
    kRestoreKey,  ///< the same, and one of them is unique in the table
    kInsert,      ///< a removed row comes back
    kSettled,     ///< nothing
    kExchange,    ///< as kRestoreKey, but another row still has the number that this one gets back
    kExchanged,   ///< the same, written, but not committed yet
};

/// Works out what taking back does with every row, from the rows as they are now. Only reads.
class UndoPlan {
  public:
    UndoPlan(Database& database, NetRows& net, const LastIds& lastIds, KeptRows& kept, UndoCounts& counts)
        : database_(database), net_(net), lastIds_(lastIds), kept_(kept), counts_(counts), returning_(net) {}

    /// False when it was cancelled.
    bool run(const RunUndo::GoOn& goOn);

    /// While the rows are taken back: keeps those of these, which are to go or lose their numbers, that others have
    /// come to name since the plan. The counts are of what is done then, and stay.
    void keepNamedSince(const TableDef& table, std::vector<NetRow>& rows);

    /// A row that the run added or removed: whether all columns are as the run left it (`after`) or had found it.
    enum class Side { Before, After };
    static std::vector<KeptCell> differences(const TableDef& table, const NetRow& row, Side side,
                                             const std::vector<Value>& now);
    static KeptRow keptRow(const TableDef& table, const NetRow& row, Stays why);
    /// The columns that are unique in the table.
    using Key = std::vector<int>;
    [[nodiscard]] const std::vector<Key>& keysOf(const TableDef& table);

  private:
    /// Columns of another table by which its rows name rows of one that the run added to.
    struct Naming {
        const TableDef* table;
        int column;
        int byColumn;
    };

    bool look(int place);
    void lookAt(const TableDef& table, NetRow& row, const std::vector<Value>* now, std::span<const int> columns);
    void lookAtRebuilt(const TableDef& table, NetRow& row, const std::vector<Value>& now);
    void lookAtCells(const TableDef& table, NetRow& row, const std::vector<Value>& now, std::span<const int> columns);
    void keep(NetRow& row, const KeptRow& kept);
    [[nodiscard]] const std::vector<Naming>& namingOf(const TableDef& table);
    [[nodiscard]] std::vector<Naming> findNaming(const TableDef& table);
    bool keepNamed(int place);
    bool keepNamed(const TableDef& table, const Naming& naming, std::vector<NetRow>& rows);
    [[nodiscard]] Value nameLost(const TableDef& table, const Naming& naming, const NetRow& row);
    void keepNamed(const TableDef& table, const Naming& naming, NetRow& row, std::int64_t by);
    [[nodiscard]] bool hasComeToName(const Naming& naming, std::int64_t id, const Value& value);
    [[nodiscard]] bool isNew(const TableDef& table, std::int64_t id);
    bool keepWithoutKey(int place);
    bool keepWithoutKey(const TableDef& table, const Key& key, UndoStep step, std::vector<NetRow>& rows);
    enum class Holder { Leaves, MovesOn, Stays };
    [[nodiscard]] Holder holderOf(const Key& key, const NetRow& row, const std::vector<Value>& back, std::int64_t id,
                                  const std::vector<Value>& holds);
    void keepWithoutKey(const TableDef& table, const Key& key, NetRow row, std::int64_t holder);
    void withoutCells(const TableDef& table, const Key& columns, NetRow& row);
    [[nodiscard]] bool writesKey(const TableDef& table, const NetRow& row);

    Database& database_;
    NetRows& net_;
    const LastIds& lastIds_;
    KeptRows& kept_;
    UndoCounts& counts_;
    const RunUndo::GoOn* goOn_ = nullptr;
    std::int64_t looked_ = 0;
    bool planning_ = true;
    std::map<std::string, std::vector<Naming>, std::less<>> namings_;  ///< by the table that is named
    std::map<std::string, std::vector<Key>, std::less<>> keys_;        ///< by table
    ReturningNumbers returning_;
    std::set<std::tuple<int, std::int64_t, int>>
        namesThatStay_;  ///< columns by which rows name others, written by the run, that do not go back
};

}  // namespace kolmera
