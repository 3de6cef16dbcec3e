#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "platform/engine/changelistener.h"
#include "platform/engine/database.h"

namespace kolmera::test {

using Row = std::map<int, Value>;  // columns that are not empty, without ID
using Rows = std::map<std::int64_t, Row>;

/// Carries what it hears out on a copy of the table: the old values have to be there.
class Mirror final : public ChangeListener {
  public:
    explicit Mirror(Rows before) : rows(std::move(before)), standing(rows) {}

    void added(const ChangedRow& row) override {
        EXPECT_FALSE(rows.contains(row.id)) << row.id;
        for (const ChangedCell& cell : row.cells) rows[row.id][cell.column] = *cell.after;
        rows.try_emplace(row.id);
        ++heard;
    }
    void changed(const ChangedRow& row) override {
        ASSERT_TRUE(rows.contains(row.id)) << row.id;
        Row& mine = rows[row.id];
        EXPECT_FALSE(row.cells.empty());
        for (const ChangedCell& cell : row.cells) {
            EXPECT_NE(*cell.before, *cell.after);
            EXPECT_EQ(*cell.before, mine.contains(cell.column) ? mine[cell.column] : Value(Null{})) << cell.column;
            if (isNull(*cell.after)) {
                mine.erase(cell.column);
            } else {
                mine[cell.column] = *cell.after;
            }
        }
        checkKnown(row, mine);
        ++heard;
    }
    void removed(const ChangedRow& row) override {
        Row told;
        for (const ChangedCell& cell : row.cells) told[cell.column] = *cell.before;
        EXPECT_EQ(told, rows[row.id]);
        rows.erase(row.id);
        ++heard;
    }
    void kept() override { announced = true; }
    void stands() override {
        EXPECT_TRUE(announced);
        announced = false;
        standing = rows;
    }
    void undone() override { rows = standing; }
    void statementBegins() override { beforeStatement = rows; }
    void statementFailed() override { rows = beforeStatement; }

    Rows rows;
    int heard = 0;

  private:
    static void checkKnown(const ChangedRow& row, const Row& mine) {
        for (int column = 1; column < static_cast<int>(row.known.size()); ++column) {
            const Value* known = row.known[static_cast<std::size_t>(column)];
            if (known == nullptr) continue;
            EXPECT_EQ(*known, mine.contains(column) ? mine.at(column) : Value(Null{})) << column;
        }
    }

    bool announced = false;
    Rows standing, beforeStatement;
};

/// Where two states of a table differ, a line a column; empty where they are equal.
inline std::string difference(const Rows& one, const Rows& other) {
    std::string text;
    for (const Rows* rows : {&one, &other}) {
        for (const auto& [id, row] : *rows) {
            const Rows& others = rows == &one ? other : one;
            const auto same = others.find(id);
            for (const auto& [column, value] : row) {
                if (same != others.end() && same->second.contains(column) && same->second.at(column) == value) continue;
                text += (rows == &one ? "one: " : "other: ") + std::to_string(id) + " " + std::to_string(column) + " " +
                        testing::PrintToString(value) + "\n";
            }
        }
    }
    return text;
}

inline Rows rowsOf(Database& database, const std::string& table) {
    Rows rows;
    const auto records = database.open("SELECT * FROM " + table, RecordsetType::Snapshot);
    for (; !records->eof(); records->moveNext()) {
        Row& row = rows[std::get<std::int64_t>(records->value(0))];
        for (int column = 1; column < static_cast<int>(records->fields().size()); ++column) {
            if (!isNull(records->value(column))) row[column] = records->value(column);
        }
    }
    return rows;
}

}  // namespace kolmera::test
