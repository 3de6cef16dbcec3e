#include "history/undo.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <random>
#include <set>
#include <span>

#include "history/recordedundo.h"
#include "support/worlds.h"
#include "tradeformats/tradeworld.h"
#include "undo/tablestates.h"

namespace kolmera::test {
namespace {

using Random = std::mt19937;
using RowName = std::pair<std::string, std::int64_t>;

int below(Random& random, int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

bool always(std::int64_t /*done*/, std::int64_t /*of*/) { return true; }

NetRows::Source sourceOf(const std::vector<RowChange>& changes) {
    return [&](const std::function<bool(const RowChange&)>& take) { std::ranges::all_of(changes, take); };
}

std::vector<KeptRow> keptBy(const RunUndo& undo) {
    std::vector<KeptRow> kept;
    undo.forEachKept([&](const KeptRow& row) {
        kept.push_back(row);
        return true;
    });
    return kept;
}

std::string shown(const KeptRow& row) {
    return fmt::format("{} {} why {} by {}, {} cells", row.table, row.id, static_cast<int>(row.why), row.by,
                       row.cells.size());
}

LastIds lastIdsOf(const CompanyState& state) {
    LastIds ids;
    for (const auto& [table, rows] : state) ids[table] = rows.empty() ? 0 : rows.rbegin()->first;
    return ids;
}

std::vector<KeptRow> undo(Database& database, const CompanyState& before, const CompanyState& after) {
    const std::vector<RowChange> changes = changesBetween(before, after);
    RunUndo undo(database, sourceOf(changes), lastIdsOf(before));
    EXPECT_TRUE(undo.plan(always));
    const std::vector<KeptRow> planned = keptBy(undo);
    const UndoCounts wanted = undo.counts();
    EXPECT_TRUE(undo.carryOut(always));
    const std::vector<KeptRow> kept = keptBy(undo);
    EXPECT_EQ(kept.size(), planned.size()) << "the plan has told something else";
    const UndoCounts done = undo.counts();
    EXPECT_EQ(fmt::format("{} {} {} {}", done.changedBack, done.removed, done.broughtBack, done.asBefore),
              fmt::format("{} {} {} {}", wanted.changedBack, wanted.removed, wanted.broughtBack, wanted.asBefore));
    return kept;
}

/// A company of some products, and a job whose file has prices for some of them and for new ones.
class RandomWorld : public TradeWorld {
  public:
    RandomWorld(Random& random, int format, int products)
        : TradeWorld(format == 1   ? "(EIO)"
                     : format == 2 ? "(FINFO)"
                                   : "Test") {
        for (int i = 0; i < products; ++i) addProduct(random, i);
        std::string lines;
        for (int i = 0; i < products; ++i) lines += lineOf(random, format, numberOf(below(random, products * 3 / 2)));
        job.fromGroup = "0";
        job.toGroup = "9";
        if (format == 0) {
            job.mask = "Testmask";
            job.supplier = "1010";
            mask({.supplierPrices = true,
                  .relations = {
                      {1, "Nummer", 'S'}, {2, "Benämning"}, {3, "Inpris"}, {4, "1Utpris"}, {5, "Alternativ 1"}}});
        }
        priceFile(lines, format == 2 ? CodePage::Oem850 : CodePage::Windows1252);
    }

  private:
    static std::string numberOf(int i) { return std::to_string(1000000 + i * 7); }

    void addProduct(Random& random, int i) {
        const std::string number = numberOf(i);
        add("Produkt", {{"Nummer", number},
                        {"Benämning", "Gammal " + number},
                        {"Leverantör", below(random, 2) == 0 ? "1010" : "1020"},
                        {"Inpris", below(random, 1000) / 4.0},
                        {"1Utpris", below(random, 1000) / 8.0},
                        {"1Pålägg", below(random, 3) * 12.5},
                        {"Lagervärdeproc", below(random, 2) == 0 ? Value(1.5) : Value()},
                        {"Prislista", below(random, 2) == 0},
                        {"Bredd", 0.1}});
        if (below(random, 2) == 0) {
            add("Levprislista", {{"Produktnr", number}, {"Leverantör", "1010"}, {"Inpris", 1.25}});
        }
        if (below(random, 3) == 0) {
            add("Prodaltprodnr",
                {{"Produktnr", number}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "ALT" + number}});
        }
        if (below(random, 8) == 0) {  // of a product that is not there, but may be in the file
            add("Levprislista", {{"Produktnr", numberOf(i + 20)}, {"Leverantör", "1030"}, {"Inpris", 2.5}});
        }
        if (below(random, 4) == 0) {
            add("Proddokument", {{"Produktnr", number}, {"Nummer", std::int64_t{1}}, {"Dokument", number + ".pdf"}});
        }
    }

    static std::string lineOf(Random& random, int format, const std::string& number) {
        const std::string price = fmt::format("{:08}", below(random, 100000));
        if (format == 1) return line({{1, "1"}, {2, number}, {9, "Ny"}, {34, "20260105"}}) + line({{1, "2AB" + price}});
        if (format == 2) {
            return line({{1, "AB"},
                         {11, "ART" + number},
                         {29, number},
                         {116, "Ny"},
                         {246, price},
                         {254, "ST"},
                         {264, "20260105"},
                         {329, price}});
        }
        return fmt::format("{}\tNy {}\t{}\t{}\tA{}\r\n", number, number, below(random, 100), below(random, 100),
                           number);
    }
};

/// What other sessions do after the run.
void editAtRandom(Random& random, Database& database, const CompanyState& after) {
    for (const char* name : {"Produkt", "Levprislista", "Prodaltprodnr"}) {
        const TableState& rows = after.at(name);
        for (int i = 0; i < 6 && !rows.empty(); ++i) {
            const auto row = std::next(rows.begin(), below(random, static_cast<int>(rows.size())));
            const auto records =
                database.open(fmt::format("SELECT * FROM {} WHERE ID = {}", name, row->first), RecordsetType::Dynaset);
            if (records->eof()) continue;
            const bool product = std::string_view(name) == "Produkt";
            if (below(random, 4) == 0) {
                records->remove();
                continue;
            }
            records->edit();
            if (std::string_view(name) == "Prodaltprodnr") {
                records->set("Alternativnr", fmt::format("ANNAT{}", i));
            } else {
                records->set(product && below(random, 2) == 0 ? "Vikt" : "Inpris", 777.0 + i);
            }
            records->update();
        }
    }
    // Others come to name products, among them new ones.
    for (const auto& [id, row] : after.at("Produkt")) {
        if (below(random, 8) != 0) continue;
        const auto records = database.open("Proddokument", RecordsetType::Dynaset);
        records->addNew();
        records->set("Produktnr", row[1]);
        records->set("Nummer", std::int64_t{9});
        records->update();
    }
}

/// The rule of taking back, once more: slow, in memory, table by table.
struct Model {
    CompanyState expected;
    std::set<RowName> kept;
    std::set<RowName> old;  ///< rows that were there before the run, under the same number

    Model(const CompanyState& before, const CompanyState& after, const CompanyState& now) {
        for (const auto& [table, rows] : before) {
            for (const auto& [id, row] : rows) {
                const auto same = after.at(table).find(id);
                if (same != after.at(table).end() && same->second[1] == row[1]) old.emplace(table, id);
            }
        }
        for (const char* first : {"Levprislista", "Prodaltprodnr", "Proddokument"}) take(first, before, after, now);
        for (const auto& [table, rows] : before) {
            if (!expected.contains(table)) take(table, before, after, now);
        }
    }

    void take(const std::string& table, const CompanyState& before, const CompanyState& after,
              const CompanyState& now) {
        TableState& rows = expected[table];
        std::set<std::int64_t> ids;
        for (const CompanyState* state : {&before, &after, &now}) {
            for (const auto& [id, row] : state->at(table)) ids.insert(id);
        }
        for (const std::int64_t id : ids) {
            const auto at = [&](const CompanyState& state) {
                const auto row = state.at(table).find(id);
                return row == state.at(table).end() ? nullptr : &row->second;
            };
            const auto* was = at(before);
            const auto* left = at(after);
            const auto* is = at(now);
            if (was == nullptr && left == nullptr) {
                rows[id] = *is;
            } else if (was != nullptr && left != nullptr && (*was)[1] != (*left)[1]) {
                const bool stays = is != nullptr && (*is != *left || (table == "Produkt" && isNamed((*is)[1])));
                rows[id] = stays ? *is : *was;
                if (stays) kept.emplace(table, id);
            } else if (was != nullptr && left != nullptr) {
                if (is != nullptr) takeBack(rows[id], *was, *left, *is, {table, id});
                if (is == nullptr && *was != *left) kept.emplace(table, id);
            } else if (left != nullptr) {
                const bool stays = is != nullptr && (*is != *left || (table == "Produkt" && isNamed((*is)[1])));
                if (stays) rows[id] = *is;
                if (stays) kept.emplace(table, id);
            } else {
                rows[id] = is != nullptr ? *is : *was;
                if (is != nullptr && *is != *was) kept.emplace(table, id);
            }
        }
    }

    void takeBack(std::vector<Value>& row, const std::vector<Value>& was, const std::vector<Value>& left,
                  const std::vector<Value>& is, const RowName& name) {
        row = is;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (is[i] == left[i]) row[i] = was[i];
            if (row[i] != was[i] && was[i] != left[i]) kept.insert(name);
        }
    }

    bool isNamed(const Value& number) {
        return std::ranges::any_of(expected, [&](const auto& table) {
            const bool names =
                table.first == "Levprislista" || table.first == "Prodaltprodnr" || table.first == "Proddokument";
            return names && std::ranges::any_of(table.second, [&](const auto& row) {
                       return row.second[1] == number && !old.contains({table.first, row.first});
                   });
        });
    }
};

/// What others have written is there still.
void expectNothingLost(const CompanyState& after, const CompanyState& now, const CompanyState& undone) {
    for (const RowChange& change : changesBetween(after, now)) {
        const TableState& rows = undone.at(change.table);
        if (change.kind == ChangeKind::Removed || !rows.contains(change.id)) {
            EXPECT_EQ(change.kind, ChangeKind::Removed) << change.table << " " << change.id;
            continue;
        }
        for (const CellChange& cell : change.cells) {
            EXPECT_EQ(rows.at(change.id)[static_cast<std::size_t>(cell.column)], cell.after)
                << change.table << " " << change.id;
        }
    }
}

/// What the run wrote and is not as before it has been told.
void expectAllListed(const CompanyState& before, const CompanyState& after, const CompanyState& now,
                     const CompanyState& undone, const std::set<RowName>& kept) {
    std::map<RowName, std::set<int>> byRun;
    for (const RowChange& change : changesBetween(before, after)) {
        for (const CellChange& cell : change.cells) byRun[{change.table, change.id}].insert(cell.column);
    }
    for (const RowChange& change : changesBetween(before, undone)) {
        const RowName name{change.table, change.id};
        const auto byIt = [&](const CellChange& cell) { return byRun[name].contains(cell.column); };
        EXPECT_TRUE(std::ranges::none_of(change.cells, byIt) || kept.contains(name))
            << name.first << " " << name.second;
    }
    EXPECT_FALSE(now == undone);
}

TEST(Undo, RandomRunsLeaveNothingBehind) {
    for (unsigned seed = 0; seed < worlds(9, 4); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const int format = static_cast<int>(seed % 3);
        RandomWorld world(random, format, 20);
        world.port.confirmation.emptyTables = seed % 4 == 3;
        const CompanyState before = stateOf(world.session());
        world.run();
        Database& database = world.session();
        const CompanyState after = stateOf(database);
        EXPECT_GT(changesBetween(before, after).size(), 10U);
        for (const KeptRow& row : undo(database, before, after)) ADD_FAILURE() << shown(row);
        EXPECT_EQ(differenceOf(before, stateOf(database)), "");
        for (const KeptRow& row : undo(database, after, before)) ADD_FAILURE() << shown(row);
        EXPECT_EQ(differenceOf(after, stateOf(database)), "") << "the undoing was not taken back";
    }
}

TEST(Undo, TheRecordOfARunIsEnough) {
    for (unsigned seed = 200; seed < 200 + worlds(6, 2); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        RandomWorld world(random, static_cast<int>(seed % 3), 20);
        world.port.confirmation.emptyTables = seed % 2 == 1;
        const RunFolder folder(world.data());
        world.keeping = RecordKeeping{.folder = folder.path(), .user = {}};
        const CompanyState before = stateOf(world.session());
        world.run();
        Database& database = world.session();
        const CompanyState after = stateOf(database);
        std::string run = world.keeping->id;
        for (const CompanyState* expected : {&before, &after}) {  // the run, then its undoing
            RecordedUndo undo(database, folder, run, {});
            EXPECT_TRUE(undo.plan(always) && undo.carryOut(always));
            for (const KeptRow& row : keptBy(undo.undo())) ADD_FAILURE() << shown(row);
            EXPECT_EQ(differenceOf(*expected, stateOf(database)), "");
            ASSERT_FALSE(undo.recordFailure()) << undo.recordFailure()->description();
            run = undo.id();
        }
    }
}

TEST(Undo, WhatOthersHaveChangedStaysAndIsListed) {
    for (unsigned seed = 100; seed < 100 + worlds(9, 4); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        RandomWorld world(random, static_cast<int>(seed % 3), 20);
        world.port.confirmation.emptyTables = seed % 4 == 3;
        const CompanyState before = stateOf(world.session());
        world.run();
        Database& database = world.session();
        const CompanyState after = stateOf(database);
        editAtRandom(random, *world.open(), after);
        const CompanyState now = stateOf(database);
        std::set<RowName> kept;
        for (const KeptRow& row : undo(database, before, after)) kept.emplace(row.table, row.id);
        if (world.port.confirmation.emptyTables) {  // more depends on each other than the model knows
            expectNothingLost(after, now, stateOf(database));
            expectAllListed(before, after, now, stateOf(database), kept);
            continue;
        }
        const Model model(before, after, now);
        EXPECT_EQ(differenceOf(model.expected, stateOf(database)), "");
        EXPECT_EQ(kept, model.kept);
    }
}

TEST(Undo, IsFinishedByTheNextOne) {
    constexpr int kBatches[] = {1, 0, 3};
    for (const int batches : std::span(kBatches).first(worlds(std::size(kBatches), 1))) {
        SCOPED_TRACE(batches);
        Random random(7);
        RandomWorld world(random, 2, 100);
        const CompanyState before = stateOf(world.session());
        world.run();
        Database& database = world.session();
        const CompanyState after = stateOf(database);
        const auto run = changesBetween(before, after);
        {
            RunUndo cancelled(database, sourceOf(run));
            ASSERT_TRUE(cancelled.plan(always));
            int asked = 0;
            EXPECT_FALSE(cancelled.carryOut([&](std::int64_t, std::int64_t) { return ++asked <= batches; }));
            EXPECT_EQ(stateOf(database) == after, batches == 0);
        }
        EXPECT_TRUE(undo(*world.open(), before, after).empty()) << "what was undone already was taken for a change";
        EXPECT_EQ(differenceOf(before, stateOf(database)), "");
    }
}

TEST(Undo, WhatHasComeToBeNamedSinceThePlanStays) {
    World world;
    const auto database = world.open();
    const CompanyState before = stateOf(*database);
    for (const char* number : {"A", "B"}) {
        database->execute(fmt::format("INSERT INTO Produkt (Nummer) VALUES ('{}')", number));
    }
    const auto run = changesBetween(before, stateOf(*database));
    RunUndo undo(*database, sourceOf(run), lastIdsOf(before));
    ASSERT_TRUE(undo.plan(always));
    world.open()->execute("INSERT INTO Levprislista (Produktnr, Leverantör) VALUES ('B', '1010')");
    EXPECT_TRUE(undo.carryOut(always));
    ASSERT_EQ(keptBy(undo).size(), 1U);
    EXPECT_EQ(keptBy(undo)[0].why, Stays::Named);
    EXPECT_EQ(undo.counts().removed, 1);
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "B\n");
}

TEST(Undo, ColumnsThatTheCompanyHasNotAreRefused) {
    World world;
    world.add("Produkt", {{"Nummer", "A"}});
    RowChange change{.kind = ChangeKind::Changed, .table = "Produkt", .id = 1, .label = {}, .cells = {}};
    change.cells.push_back({10'000, Value(1.0), Value(2.0)});
    EXPECT_THROW(RunUndo(world.session(), sourceOf({change})), PlatformError);
}

TEST(UndoOfAFile, AProductThatAnotherProgramsTableNamesStays) {
    World world;
    const auto database = world.open();
    database->execute("CREATE TABLE Orderrad (Produktnr TEXT(20), Antal DOUBLE)");
    const CompanyState before = stateOf(*database);
    for (const char* number : {"A", "B"}) {
        database->execute(fmt::format("INSERT INTO Produkt (Nummer) VALUES ('{}')", number));
    }
    const CompanyState after = stateOf(*database);
    database->execute("INSERT INTO Orderrad VALUES ('B', 1)");
    const std::vector<KeptRow> kept = undo(*database, before, after);
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(kept[0].by, "Orderrad");
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "B\n");
}

TEST(UndoOfAFile, IsFinishedAfterAKill) {
    Random random(8);
    RandomWorld world(random, 2, 100);
    const CompanyState before = stateOf(world.session());
    world.run();
    const CompanyState after = stateOf(world.session());
    const auto run = changesBetween(before, after);
    const pid_t child = fork();
    if (child == 0) {
        const auto database = world.open();
        RunUndo undo(*database, sourceOf(run));
        undo.plan(always);
        int asked = 0;
        undo.carryOut([&](std::int64_t, std::int64_t) {
            if (++asked == 4) raise(SIGKILL);
            usleep(260'000);  // longer than the engine joins commits
            return true;
        });
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    const auto database = world.open();
    EXPECT_NE(differenceOf(after, stateOf(*database)), "") << "nothing had been undone";
    EXPECT_TRUE(undo(*database, before, after).empty());
    EXPECT_EQ(differenceOf(before, stateOf(*database)), "");
}

/// Products A, B and C with the IDs of their order, named by rows 1, 2 and 4 of Levprislista, and what is done to them.
struct NumbersCase {
    const char* fault;
    std::vector<std::string> run, others;  ///< statements of the run, and of others after it
    std::string expected;                  ///< numbers in the order of the IDs
    std::vector<Stays> kept = {};
};

TEST(Undo, NumbersAreUniqueOnTheWayBack) {
    const NumbersCase cases[] = {
        {"two rows that exchange their numbers stand in each other's way",
         {"UPDATE Produkt SET Nummer = 'X' WHERE ID = 1", "UPDATE Produkt SET Nummer = 'A' WHERE ID = 2",
          "UPDATE Produkt SET Nummer = 'B' WHERE ID = 1"},
         {},
         "A B C "},
        {"a new row has the number that a renamed one gets back",
         {"UPDATE Produkt SET Nummer = 'X' WHERE ID = 1", "INSERT INTO Produkt (Nummer) VALUES ('A')"},
         {},
         "A B C "},
        {"a removed row comes before the one that took its number is renamed",
         {"DELETE FROM Produkt WHERE ID = 1", "UPDATE Produkt SET Nummer = 'A' WHERE ID = 2"},
         {},
         "A B C "},
        {"another's row has taken the number of a removed one",
         {"DELETE FROM Produkt WHERE ID = 1"},
         {"INSERT INTO Produkt (Nummer) VALUES ('a')"},
         "B C a ",
         {Stays::KeyTaken}},
        {"another's row has taken the number of a renamed one",
         {"UPDATE Produkt SET Nummer = 'X', Inpris = 5 WHERE ID = 1"},
         {"INSERT INTO Produkt (Nummer) VALUES ('A')"},
         "X B C A ",
         {Stays::KeyTaken}},
        {"a row that stays has the number of another one",
         {"UPDATE Produkt SET Nummer = 'X' WHERE ID = 1", "INSERT INTO Produkt (Nummer) VALUES ('A')"},
         {"UPDATE Produkt SET Inpris = 7 WHERE Nummer = 'A'"},
         "X B C A ",
         {Stays::KeyTaken, Stays::Changed}},
        {"a new row is named by another's row",
         {"INSERT INTO Produkt (Nummer) VALUES ('D')"},
         {"INSERT INTO Levprislista (Produktnr, Leverantör) VALUES ('d', '9')"},
         "A B C D ",
         {Stays::Named}},
        {"a group is named by a product that gets its old group back",
         {"INSERT INTO Prodgrupp (Nummer) VALUES ('G')", "UPDATE Produkt SET Grupp = 'G' WHERE ID = 2"},
         {},
         "A B C "},
        {"a group is named by a product that stays",
         {"INSERT INTO Prodgrupp (Nummer) VALUES ('G')", "INSERT INTO Produkt (Nummer, Grupp) VALUES ('D', 'G')"},
         {"UPDATE Produkt SET Inpris = 7 WHERE Nummer = 'D'"},
         "A B C D ",
         {Stays::Named, Stays::Changed}},
        {"a changed row is gone",
         {"UPDATE Produkt SET Inpris = 7 WHERE ID = 1"},
         {"DELETE FROM Produkt WHERE ID = 1"},
         "B C ",
         {Stays::Removed}},
        {"a new row with a removed one's ID is named by another's row",
         {"DELETE FROM Produkt WHERE ID = 1", "INSERT INTO Produkt (ID, Nummer) VALUES (1, 'D')"},
         {"INSERT INTO Levprislista (Produktnr, Leverantör) VALUES ('D', '9')"},
         "D B C ",
         {Stays::Named}},
        {"a number that others name is taken from a renamed row",
         {"UPDATE Produkt SET Nummer = 'X', Inpris = 5 WHERE ID = 1"},
         {"INSERT INTO Levprislista (Produktnr, Leverantör) VALUES ('X', '9')"},
         "X B C ",
         {Stays::Named}},
        {"rows of an emptied table stay for a name that others get back",
         {"DELETE FROM Produkt", "INSERT INTO Produkt (ID, Nummer) VALUES (1, 'b')",
          "INSERT INTO Produkt (ID, Nummer) VALUES (2, 'C')", "INSERT INTO Produkt (ID, Nummer) VALUES (4, 'A')"},
         {"INSERT INTO Levprislista (Produktnr, Leverantör) VALUES ('A', '9')",
          "INSERT INTO Levprislista (Produktnr, Leverantör) VALUES ('B', '9')"},
         "A B C "},
        {"a name in an ID that an emptied table gave again is taken for an old one",
         {"INSERT INTO Produkt (Nummer) VALUES ('D')", "DELETE FROM Levprislista WHERE ID > 1"},
         {"INSERT INTO Levprislista (ID, Produktnr, Leverantör) VALUES (3, 'D', '9')"},
         "A B C D ",
         {Stays::Named}},
        {"a new supplier goes though a row keeps its number, because another's row has the old one",
         {"INSERT INTO Leverantör (Nummer) VALUES ('S')", "UPDATE Levprislista SET Leverantör = 'S' WHERE ID = 4"},
         {"INSERT INTO Levprislista (Produktnr, Leverantör) VALUES ('C', '1')"},
         "A B C ",
         {Stays::Named, Stays::KeyTaken}},
        {"a new group goes though others have put a product into it",
         {"INSERT INTO Prodgrupp (Nummer) VALUES ('G')", "UPDATE Produkt SET Grupp = 'H' WHERE ID = 2"},
         {"UPDATE Produkt SET Grupp = 'G' WHERE ID = 2"},
         "A B C ",
         {Stays::Named, Stays::Changed}}};
    for (const NumbersCase& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        for (const char* number : {"A", "B", "C"}) world.add("Produkt", {{"Nummer", number}, {"Inpris", 1.0}});
        for (const char* number : {"A", "B", "-", "C"}) {
            world.add("Levprislista", {{"Produktnr", number}, {"Leverantör", "1"}});
        }
        Database& database = world.session();
        database.execute("DELETE FROM Levprislista WHERE Produktnr = '-'");
        const CompanyState before = stateOf(database);
        for (const std::string& statement : c.run) database.execute(statement);
        const CompanyState after = stateOf(database);
        for (const std::string& statement : c.others) database.execute(statement);
        std::vector<Stays> kept;
        for (const KeptRow& row : undo(database, before, after)) kept.push_back(row.why);
        std::string numbers;
        const CompanyState now = stateOf(database);
        for (const auto& [id, row] : now.at("Produkt")) numbers += std::string(textOf(row[1])) + " ";
        EXPECT_EQ(numbers, c.expected);
        EXPECT_EQ(kept, c.kept);
        if (c.kept.empty() && c.others.empty()) {
            EXPECT_EQ(differenceOf(before, stateOf(database)), "");
        }
    }
}

TEST(Undo, ARowUnderAnIdThatWasAnothersStaysWhole) {
    World world;
    world.add("Produkt", {{"Nummer", "A"}, {"Inpris", 1.0}});
    Database& database = world.session();
    const CompanyState before = stateOf(database);
    database.execute("DELETE FROM Produkt");
    database.execute("INSERT INTO Produkt (ID, Nummer, Inpris) VALUES (1, 'D', 2)");
    const CompanyState after = stateOf(database);
    database.execute("INSERT INTO Produkt (Nummer, Inpris) VALUES ('A', 3)");
    const std::vector<KeptRow> kept = undo(database, before, after);
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(kept[0].why, Stays::KeyTaken);
    EXPECT_EQ(world.rows("Produkt", "Nummer, Inpris"), "D 2\nA 3\n") << "the new product has the old one's price";
}

TEST(Undo, WhatTheDatabaseRefusesStaysAndTheRestGoesBack) {
    World world;
    for (const char* number : {"A", "B", "C"}) world.add("Produkt", {{"Nummer", number}});
    const CompanyState before = stateOf(world.session());
    world.open()->execute("DELETE FROM Produkt");
    const auto run = changesBetween(before, stateOf(world.session()));
    world.refuse("Produkt", "Nummer", "'B'");
    Database& database = world.session();
    RunUndo undo(database, sourceOf(run));
    EXPECT_TRUE(undo.plan(always));
    EXPECT_TRUE(undo.carryOut(always));
    EXPECT_EQ(undo.counts().broughtBack, 2);
    const std::vector<KeptRow> kept = keptBy(undo);
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(kept[0].why, Stays::Refused);
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "A\nC\n");
}

/// The values before, left and now stand for the columns that somebody changed, and for no other.
TEST(Undo, ListsTheThreeValues) {
    World world;
    world.add("Produkt", {{"Nummer", "A"}, {"Inpris", 1.0}, {"1Utpris", 10.0}});
    Database& database = world.session();
    const CompanyState before = stateOf(database);
    database.execute("UPDATE Produkt SET Inpris = 2, 1Utpris = 20");
    const CompanyState after = stateOf(database);
    database.execute("UPDATE Produkt SET Inpris = 3, Vikt = 4");
    const std::vector<KeptRow> kept = undo(database, before, after);
    ASSERT_EQ(kept.size(), 1U);
    ASSERT_EQ(kept[0].cells.size(), 1U);
    const KeptCell& cell = kept[0].cells[0];
    EXPECT_EQ(cell.before, Value(1.0));
    EXPECT_EQ(cell.left, Value(2.0));
    EXPECT_EQ(cell.now, Value(3.0));
    EXPECT_EQ(world.rows("Produkt", "Inpris, 1Utpris, Vikt"), "3 10 4\n");
}

}  // namespace
}  // namespace kolmera::test
