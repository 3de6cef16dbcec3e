#include <fmt/format.h>

#include "support/servertest.h"

namespace kolmera::test {
namespace {

constexpr auto kNumbers = "SELECT ID, Nummer, Inpris FROM Produkt ORDER BY ID";

/// The work of many records, done over and over until the server has told all that it looks up.
class Windows : public ServerTest {
  protected:
    /// Runs `lastly` before the window's end.
    WindowEnd inWindow(const std::function<void()>& work, const std::function<void()>& lastly = {}) {
        constexpr int kMostTimes = 5;
        database->beginWindow();
        for (times = 1;; ++times) {
            bool complete = false;
            try {
                work();
                complete = true;
            } catch (const WindowBroken&) {
                complete = false;
            }
            if (times == 2 && lastly) lastly();
            const WindowEnd end = database->endWindow(complete, times < kMostTimes);
            if (end != WindowEnd::Again) return end;
        }
    }
    /// A product of this number gets this price, and is made when it is not there. Whether it was.
    bool put(const std::string& number, double price) {
        const Value key[] = {number};
        const auto records = database->openWith("SELECT * FROM Produkt WHERE Nummer = ? ORDER BY Nummer", key);
        const bool there = records->recordCount() > 0;
        if (there) {
            records->edit();
        } else {
            records->addNew();
            records->set("Nummer", number);
        }
        records->set("Inpris", price);
        records->update();
        return there;
    }

    int times = 0;
};

TEST_F(Windows, EveryRecordSeesWhatTheOnesBeforeItHaveWritten) {
    add(*database, "A");
    bool found[5] = {};
    EXPECT_EQ(inWindow([&] {
                  found[0] = put("a", 1);
                  found[1] = put("å", 2);
                  found[2] = put("Å", 3);  // equal to the server
                  found[3] = put("o", 4);
                  found[4] = put("ö", 5);  // another letter
              }),
              WindowEnd::Kept);
    EXPECT_EQ(std::vector<bool>(std::begin(found), std::end(found)),
              (std::vector<bool>{true, false, true, false, false}));
    EXPECT_EQ(selectElsewhere(kNumbers), "1 'A' 1; 2 'å' 3; 3 'o' 4; 4 'ö' 5");
    EXPECT_EQ(times, 2);

    // A number that nobody has asked for; one that is changed; rows that go.
    EXPECT_EQ(inWindow([&] {
                  const auto records = dynaset(*database, "Produkt");
                  records->addNew();
                  records->set("Nummer", std::string("NEW"));
                  records->update();
                  EXPECT_TRUE(put("new", 6) || times <= 2);
                  (void)database->execute("DELETE FROM Produkt WHERE Nummer = 'o'");
                  put("O", 7);
                  const auto renamed = seek(*database, "ö");
                  if (renamed->recordCount() == 0) return;
                  renamed->edit();
                  renamed->set("Nummer", std::string("P"));
                  renamed->update();
                  EXPECT_TRUE(put("p", 8));
                  EXPECT_EQ(select(*database, "SELECT count(*) FROM Produkt"), "5");
              }),
              WindowEnd::Kept);
    EXPECT_EQ(selectElsewhere("SELECT Nummer, Inpris FROM Produkt ORDER BY Nummer"),
              "'A' 1; 'NEW' 6; 'O' 7; 'P' 8; 'å' 3");
}

TEST_F(Windows, EveryValueArrivesAsIfWrittenAlone) {
    const std::vector<std::pair<const char*, std::vector<Value>>> columns = {
        {"Benämning", {std::string("\"'\\ {,}[]\t åäö€ \U0001F600"), std::string(), Null{}, std::string("NULL")}},
        {"Inpris", {0.1, 1e15 / 3, -12345678.9012, 0.0}},
        {"Webshop", {true, false, true, Null{}}},
        {"Prisändrdat", {*Date::fromIso("2026-11-23"), Null{}, *Date::fromIso("1999-12-31"), Null{}}}};
    const auto write = [&](int row, const std::string& number) {
        const Value key[] = {number};
        const auto records = database->openWith("SELECT * FROM Produkt WHERE Nummer = ? ORDER BY Nummer", key);
        if (records->recordCount() > 0) {
            records->edit();
        } else {
            records->addNew();
            records->set("Nummer", number);
        }
        for (const auto& [column, values] : columns) records->set(column, values[static_cast<std::size_t>(row)]);
        records->update();
    };
    for (int row = 0; row < 4; ++row) {
        write(row, fmt::format("one{}", row));
        add(*database, fmt::format("old{}", row));
    }
    EXPECT_EQ(inWindow([&] {
                  for (int row = 0; row < 4; ++row) {
                      write(row, fmt::format("new{}", row));
                      write(row, fmt::format("old{}", row));
                  }
              }),
              WindowEnd::Kept);
    const auto rows = [&](const std::string& kind) {
        return selectElsewhere(
            "SELECT Benämning, Inpris, Webshop, Prisändrdat, Försäljfaktor FROM Produkt WHERE Nummer > '" + kind +
            "' AND Nummer < '" + kind + "9' ORDER BY Nummer");
    };
    EXPECT_EQ(rows("new"), rows("one"));
    EXPECT_EQ(rows("old"), rows("one"));
}

TEST_F(Windows, OthersMayWriteInTheMiddle) {
    add(*database, "A", std::string("L"));
    add(*database, "B");
    const auto other = open();
    EXPECT_EQ(
        inWindow([&] { put("A", 1), put("B", 2); },
                 [&] { (void)other->execute("UPDATE Produkt SET Leverantör = 'M', Inpris = 9 WHERE Nummer = 'A'"); }),
        WindowEnd::Kept);
    EXPECT_EQ(selectElsewhere("SELECT Leverantör, Inpris FROM Produkt WHERE Nummer = 'A'"), "'M' 1")
        << "what is not changed is not written";
    // Rows that get other columns than their neighbours keep what the server has in those.
    const auto set = [&](const char* number, const char* column, const Value& value) {
        const auto records = seek(*database, number);
        if (records->recordCount() == 0) return;
        records->edit();
        records->set(column, value);
        records->update();
    };
    const char* const all =
        "SELECT Nummer, Benämning, Inpris, Webbpris, Längd, Prisändrdat FROM Produkt ORDER BY Nummer";
    (void)other->execute("UPDATE Produkt SET Webbpris = 98765432101.2345, Längd = 0.1, Prisändrdat = #11/23/2026#");
    EXPECT_EQ(
        inWindow(
            [&] {
                set("A", "Benämning", std::string("name"));
                set("B", "Webbpris", 2.5);
                set("B", "Längd", 0.25);
                set("B", "Prisändrdat", Null{});
            },
            [&] { (void)other->execute("UPDATE Produkt SET Inpris = 7, Benämning = 'theirs' WHERE Nummer = 'B'"); }),
        WindowEnd::Kept);
    EXPECT_EQ(selectElsewhere(all),
              "'A' 'name' 1 98765432101.2345 0.10000000149011612 2026-11-23; 'B' 'theirs' 7 2.5 0.25 Null");
    const struct {
        const char* fault;
        const char* statement;
    } cases[] = {{"a row that has gone", "DELETE FROM Produkt WHERE Nummer = 'B'"},
                 {"a row that was made meanwhile", "INSERT INTO Produkt (Nummer) VALUES ('C')"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(inWindow([&] { put("A", 3), put("B", 4), put("C", 5); }, [&] { (void)other->execute(c.statement); }),
                  WindowEnd::Alone);
        EXPECT_FALSE(database->inTransaction());
        EXPECT_EQ(selectElsewhere("SELECT Inpris FROM Produkt WHERE Nummer = 'A'"), "1") << "written by halves";
    }
}

TEST_F(Windows, ARecordCostsNextToNothing) {
    constexpr int kRecords = 100;
    for (int i = 0; i < kRecords; i += 2) add(*database, fmt::format("N{}", i));
    double price = 0;
    const auto all = [&] {
        for (int i = 0; i < kRecords; ++i) put(fmt::format("N{}", i), price);
    };
    EXPECT_EQ(inWindow(all), WindowEnd::Kept);  // columns are learned
    ++price;
    EXPECT_LE(tripsOf([&] { EXPECT_EQ(inWindow(all), WindowEnd::Kept); }), 8U);
    EXPECT_EQ(selectElsewhere("SELECT count(*), min(Inpris), max(ID) FROM Produkt"), "100 1 100");
}

}  // namespace
}  // namespace kolmera::test
