#include <fmt/format.h>

#include "support/servertest.h"

namespace kolmera::test {
namespace {

/// What costs on a server is how often it is asked.
class RoundTrips : public ServerTest {};

TEST_F(RoundTrips, ARecordCostsOneForEachStatement) {
    for (const char* number : {"A", "B", "C"}) add(*database, number);
    std::unique_ptr<Recordset> records;
    const auto edit = [&](const Value& price) {
        records->edit();
        records->set("Inpris", price);
        records->update();
    };
    for (int i = 0; i < 3; ++i) {  // statements are prepared, and columns are learned
        records = seek(*database, "A");
        EXPECT_EQ(textOf(records->value("Nummer")), "A");
        edit(1.5 + i);
    }
    (void)database->execute("DELETE FROM Produkt WHERE Nummer = 'none'");

    EXPECT_EQ(tripsOf([&] {
                  records = seek(*database, "B");
                  EXPECT_EQ(records->recordCount(), 1);
                  EXPECT_FALSE(records->eof());
                  EXPECT_EQ(textOf(records->value("Nummer")), "B");
                  EXPECT_EQ(show(records->value("Inpris")), "0");
              }),
              1U)
        << "a seek";
    EXPECT_EQ(tripsOf([&] { edit(9.5); }), 1U) << "an update";
    EXPECT_EQ(tripsOf([&] { edit(9.5); }), 0U) << "nothing changed";
    EXPECT_EQ(tripsOf([&] { EXPECT_EQ(errorOf([&] { edit(std::string("bad")); }), errors::kWrongType); }), 0U);
}

TEST_F(RoundTrips, ANewRecordCostsOneWithEverythingReadFromIt) {
    add(*database, "A", std::string("L"));
    EXPECT_EQ(tripsOf([&] {
                  const auto records = dynaset(*database, "Produkt");
                  records->addNew();
                  records->set("Nummer", std::string("B"));
                  records->set("Leverantör", std::string("L"));
                  records->update();
                  records->moveToModified();
                  for (const FieldDef& field : records->fields()) (void)records->value(field.name);
                  EXPECT_EQ(textOf(records->value("Nummer")), "B");
              }),
              1U);
}

TEST_F(RoundTrips, FindingInATableCostsOne) {
    for (const char* number : {"A", "B"}) add(*database, number);
    const auto find = [&](const std::string& number) {
        const auto records = dynaset(*database, "Produkt");
        records->findFirst(fmt::format("Nummer = '{}'", number));
        return records->noMatch() ? std::string() : std::string(textOf(records->value("Nummer")));
    };
    (void)find("A");
    (void)find("A");
    EXPECT_EQ(tripsOf([&] { EXPECT_EQ(find("B"), "B"); }), 1U);
    EXPECT_EQ(tripsOf([&] { EXPECT_EQ(find("none"), ""); }), 1U);
    EXPECT_EQ(tripsOf([&] { (void)dynaset(*database, "Produkt"); }), 0U) << "nothing was asked";
}

TEST_F(RoundTrips, WalkingReadsInBlocks) {
    std::vector<std::vector<Value>> rows;
    for (int i = 0; i < 500; ++i) rows.push_back({std::int64_t{1000 + i}, fmt::format("N{}", i)});
    const std::vector<int> columns = {0, 1};
    database->insertRows("Produkt", columns, rows);
    const auto walk = [&] {
        std::size_t letters = 0;
        const auto records = dynaset(*database, "SELECT * FROM Produkt ORDER BY Nummer");
        for (; !records->eof(); records->moveNext()) letters += textOf(records->value("Nummer")).size();
        return letters;
    };
    EXPECT_EQ(walk(), 10 * 2 + 90 * 3 + 400 * 4U);
    EXPECT_LE(tripsOf([&] { (void)walk(); }), 12U);
    const auto raise = [&] {
        const auto records = dynaset(*database, "SELECT * FROM Produkt WHERE Nummer < 'N2' ORDER BY Nummer");
        for (; !records->eof(); records->moveNext()) {
            records->edit();
            records->set("1Utpris", std::get<double>(records->value("1Utpris")) + 1);
            records->update();
        }
    };
    (void)tripsOf(raise);
    EXPECT_LE(tripsOf(raise), 112 + 8U) << "rows are read again for every row that is written";
    EXPECT_EQ(selectElsewhere("SELECT DISTINCT 1Utpris FROM Produkt WHERE Nummer < 'N2'"), "2");
}

TEST_F(RoundTrips, ALongTableIsListedInPortions) {
    constexpr int kRows = 20000;
    std::vector<std::vector<Value>> rows;
    for (int i = 1; i <= kRows; ++i) rows.push_back({std::int64_t{2 * i}, fmt::format("N{}", i)});
    const std::vector<int> columns = {0, 1};
    database->insertRows("Produkt", columns, rows);
    for (const auto& [statement, count] : {std::pair("SELECT * FROM Produkt", kRows),
                                           std::pair("SELECT * FROM Produkt WHERE Nummer <> 'N9999'", kRows - 1),
                                           std::pair("SELECT * FROM Produkt WHERE Nummer < 'N2'", 11111)}) {
        SCOPED_TRACE(statement);
        const auto records = dynaset(*database, statement);
        records->moveLast();
        EXPECT_EQ(records->recordCount(), count);
        EXPECT_EQ(textOf(records->value("Nummer")), count == 11111 ? "N19999" : "N20000");
    }
    const auto records = dynaset(*database, "Produkt");
    EXPECT_LE(tripsOf([&] { records->moveLast(); }), 6U);
    std::int64_t id = 0;
    for (records->moveFirst(); !records->eof(); records->moveNext()) {
        ASSERT_EQ(records->value("ID"), Value(id + 2));
        id += 2;
    }
}

TEST_F(RoundTrips, CopiedRowsKeepTheirIdsAndNewOnesFollow) {
    std::vector<std::vector<Value>> rows;
    for (int i = 0; i < 1000; ++i) {
        rows.push_back({fmt::format("N{}", i), std::int64_t{5000 - i}, 0.1 + i, i % 2 == 0, Value()});
    }
    const TableDef& table = database->table("Produkt");
    std::vector<int> columns;
    for (const char* name : {"Nummer", "ID", "Inpris", "Webshop", "Fridatum"}) columns.push_back(table.ordinal(name));
    database->begin();
    EXPECT_LE(tripsOf([&] { database->insertRows("Produkt", columns, rows); }), 12U);
    database->commit();
    EXPECT_EQ(selectElsewhere("SELECT ID, Inpris, Webshop FROM Produkt WHERE Nummer = 'n7'"), "4993 7.1 false");
    EXPECT_EQ(selectElsewhere("SELECT count(*) FROM Produkt"), "1000");
    add(*database, "new");
    EXPECT_EQ(select(*database, "SELECT ID FROM Produkt WHERE Nummer = 'new'"), "5001");
}

}  // namespace
}  // namespace kolmera::test
