#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "history/recordreader.h"
#include "history/runfolder.h"
#include "platform/sha256.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

using Row = std::map<int, Value>;  // columns that are not empty
using Rows = std::map<std::pair<std::string, std::int64_t>, Row>;

constexpr const char* kTables[] = {"Produkt", "Levprislista", "Prodaltprodnr", "Proddokument", "Prodgrupp"};

Rows rowsOf(const World& world) {
    Rows rows;
    const auto database = world.open();
    for (const char* table : kTables) {
        const auto records =
            database->open("SELECT * FROM " + std::string(table), RecordsetType::Snapshot, options::kReadOnly);
        for (; !records->eof(); records->moveNext()) {
            Row& row = rows[{table, std::get<std::int64_t>(records->value(0))}];
            for (int column = 1; column < static_cast<int>(records->fields().size()); ++column) {
                if (!isNull(records->value(column))) row[column] = records->value(column);
            }
        }
    }
    return rows;
}

/// Carries a record out; what it says of before has to be there.
void carryOut(const RecordReader& record, Rows& rows) {
    record.forEachChange([&](const RowChange& change) {
        const auto key = std::pair(change.table, change.id);
        EXPECT_EQ(rows.contains(key), change.kind != ChangeKind::Added) << change.table << change.id;
        Row& row = rows[key];
        for (const CellChange& cell : change.cells) {
            EXPECT_EQ(row.contains(cell.column) ? row[cell.column] : Value(Null{}), cell.before);
            row.erase(cell.column);
            if (!isNull(cell.after)) row[cell.column] = cell.after;
        }
        if (change.kind == ChangeKind::Removed) {
            EXPECT_TRUE(row.empty()) << "columns left out";
            rows.erase(key);
        }
        return true;
    });
}

/// A world with a mask over numbers, names, prices, alternatives and the supplier's prices.
class RecordedWorld : public World {
  public:
    RecordedWorld() {
        add("Leverantör", {{"Nummer", "1010"}, {"Söknamn", "Grossisten"}});
        job.supplier = "1010";
        mask({.structure = 'T',
              .supplierPrices = true,
              .relations = {{1, "Nummer", 'S'}, {2, "Benämning"}, {3, "Inpris"}, {4, "Alternativ 1"}}});
        keeping = keptInDataFolder(state);
        keeping->folder = data() / "Körningar";
    }
    [[nodiscard]] RecordReader reader() const { return RecordReader(keeping->folder / (keeping->id + ".kmr")); }
};

TEST(RecordedRun, TheRecordIsTheDifferenceThatTheRunMade) {
    RecordedWorld world;
    std::string lines;
    for (int i = 0; i < 60; ++i)
        lines += std::to_string(i) + "\tNamn\t" + std::to_string(i) + ",50\tA" + std::to_string(i) + "\r\n";
    for (const bool empty : {false, false, true}) {
        SCOPED_TRACE(empty);
        world.port.confirmation.emptyTables = empty;
        world.priceFile(lines);
        Rows rows = rowsOf(world);
        const RunSummary summary = world.run();
        ASSERT_TRUE(summary.completed);
        ASSERT_FALSE(world.keeping->failure) << world.keeping->failure->description();
        carryOut(world.reader(), rows);
        EXPECT_EQ(rows, rowsOf(world));
        lines = "7\tAnnat namn\t8,25\tA7\r\n7\tTredje\t9,25\tB\r\n" + lines.substr(0, lines.size() / 2);
    }
}

TEST(RecordedRun, TellsWhatTheRunWasAndPassedOver) {
    RecordedWorld world;
    const std::string file = "A\tPenna\t1O,50\tX\r\nB\tBok\t2,00\tY\r\n\tIngen\t3\tZ\r\n";
    world.priceFile(file);
    for (int i = 0; i < 40; ++i) world.priceFile(file);
    world.keeping->copiesPriceFile = true;
    (void)world.run();
    const RecordReader reader = world.reader();
    std::string copied;
    reader.forEachCopied([&](std::string_view bytes) { copied += bytes; });
    EXPECT_EQ(copied, file);
    const RunHeader& header = reader.header();
    EXPECT_EQ(header.job, "Test");
    EXPECT_EQ(header.outcome, "completed");
    EXPECT_FALSE(header.ended.empty());
    EXPECT_NE(header.definition.find("\"relations\":[{"), std::string::npos);
    EXPECT_NE(header.counts.find("\"records\":3"), std::string::npos) << header.counts;
    Sha256 sha;
    sha.add(file);
    EXPECT_EQ(header.priceFile.sha256, sha.hexadecimal());
    EXPECT_EQ(header.priceFile.size, static_cast<std::int64_t>(file.size()));
    ASSERT_TRUE(reader.place(2));
    EXPECT_EQ(file.substr(static_cast<std::size_t>(reader.place(2)->offset),
                          static_cast<std::size_t>(reader.place(2)->length)),
              "B\tBok\t2,00\tY\r\n");
    std::string remarks;
    reader.forEachRemark([&](const RecordRemark& remark) {
        remarks += remark.kind + " " + std::to_string(remark.record) + " " + std::to_string(remark.offset) + " " +
                   remark.product + " " + remark.text + "\n";
        return true;
    });
    EXPECT_EQ(remarks.substr(0, remarks.find('\n')), "not_numbers 1 0 A 1O,50");
    bool labelled = true;
    reader.forEachChange(
        [&](const RowChange& change) { return labelled = !change.label.empty() || change.record == 3; });
    EXPECT_TRUE(labelled);
}

/// Updates are held back until the row is left, on a server until many records have been read.
TEST(RecordedRun, ARefusedUpdateIsToldWithItsOwnRecord) {
    RecordedWorld world;
    std::string lines;
    for (int i = 1; i <= 60; ++i) {
        const std::string number = std::to_string(i);
        world.add("Produkt", {{"Nummer", number}, {"Inpris", 1.0}});
        const bool refused = i == 7 || i == 31 || i == 60;
        lines += fmt::format("{}\t{}\t{},50\tA\r\n", number, refused ? "Nej" : "Namn", number);
    }
    world.refuse("Produkt", "Benämning", "'Nej'");
    world.priceFile(lines);
    EXPECT_TRUE(world.run().completed);
    std::string failed;
    world.reader().forEachRemark([&](const RecordRemark& remark) {
        if (remark.kind == "failed_statements") failed += fmt::format("{}:{} ", remark.record, remark.product);
        return true;
    });
    EXPECT_EQ(failed, "7:7 31:31 60:60 ");
    EXPECT_EQ(world.rows("Produkt", "Nummer, Inpris").find("31 31.5"), std::string::npos);
    EXPECT_NE(world.rows("Produkt", "Nummer, Inpris").find("32 32.5"), std::string::npos);
}

TEST(RecordedRun, ARecordThatCannotBeMadeIsToldAndTheRunGoesOn) {
    RecordedWorld world;
    world.priceFile("A\tPenna\t1,50\tX\r\n");
    std::ofstream(world.keeping->folder) << "in the way";
    const RunSummary summary = world.run();
    EXPECT_TRUE(summary.completed);
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "A\n");
    EXPECT_TRUE(world.keeping->failure);
    EXPECT_TRUE(world.keeping->id.empty());
}

}  // namespace
}  // namespace kolmera::test
