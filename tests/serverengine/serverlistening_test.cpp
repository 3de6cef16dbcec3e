#include <random>

#include "support/mirror.h"
#include "support/servertest.h"

namespace kolmera::test {
namespace {

class ServerListening : public ServerTest {
  protected:
    unsigned random(unsigned below) { return static_cast<unsigned>(random_() % below); }
    std::string word() { return std::string(1, static_cast<char>('a' + random(8))); }

    void editOrAdd() {
        const auto products = seek(*database, word());
        const bool found = !products->eof();
        if (found && random(4) == 0) return products->remove();
        if (found) {
            products->edit();
        } else {
            products->addNew();
        }
        if (!found || random(3) == 0) products->set("Nummer", word());
        if (random(2) == 0) products->set("Benämning", random(3) == 0 ? Value(Null{}) : Value(word()));
        if (random(2) == 0) products->set("Inpris", static_cast<double>(random(4)) / 3);
        if (random(3) == 0) products->set("Webshop", random(2) == 0);
        if (random(3) == 0) products->set("Fridatum", Date{static_cast<std::int32_t>(45000 + random(3))});
        products->update();
    }

    void statement() {
        static constexpr const char* kStatements[] = {
            "DELETE FROM Produkt WHERE Benämning = 'a'", "UPDATE Produkt SET Inpris = Inpris + 1 WHERE Webshop = TRUE",
            "UPDATE Produkt SET Nummer = 'aa'",  // fails as soon as there are two
            "INSERT INTO Produkt (Nummer, Inpris) VALUES ('c', 3)", "DELETE FROM Produkt"};
        (void)database->execute(kStatements[random(random(10) == 0 ? 5 : 4)]);
    }

    void transaction() {
        if (!database->inTransaction()) return database->begin();
        if (random(3) == 0) return database->rollback();
        database->commit();
    }

    std::mt19937 random_{4711};
};

TEST_F(ServerListening, WhatIsHeardIsTheDifferenceOfTheTables) {
    for (int i = 0; i < 10; ++i) (void)errorOf([&] { editOrAdd(); });
    Mirror mirror(rowsOf(*database, "Produkt"));
    database->listen(&mirror);
    int failed = 0;
    for (int step = 0; step < 500 && !HasFailure(); ++step) {
        SCOPED_TRACE(step);
        const unsigned kind = random(20);
        failed += errorOf([&] { kind == 0 ? statement() : kind < 4 ? transaction() : editOrAdd(); }) != 0;
        if (random(8) != 0) continue;
        const Rows inTable = rowsOf(*database, "Produkt");
        ASSERT_EQ(difference(mirror.rows, inTable), "");
    }
    EXPECT_GT(mirror.heard, 100);
    EXPECT_GT(failed, 10);
    if (database->inTransaction()) database->commit();
    EXPECT_EQ(difference(mirror.rows, rowsOf(*open(), "Produkt")), "");
}

/// What others wrote between the rolling back of a batch and its repetition is what the batch has changed in the end.
TEST_F(ServerListening, ARepeatedBatchIsHeardAsItWasRepeated) {
    add(*database, "A");
    add(*database, "B");
    const auto price = [](Database& in, const std::string& text) {
        (void)in.execute("UPDATE Produkt SET Inpris = " + text + " WHERE Nummer = 'A'");
    };
    Mirror mirror(rowsOf(*database, "Produkt"));
    database->listen(&mirror);
    database->begin();
    const auto products = seek(*database, "A");
    products->edit();
    products->set("Inpris", 2.0);
    products->update();
    (void)errorOf([&] { add(*database, "B"); });  // refused; the server may roll the batch back
    const auto others = open([] { return false; });
    if (errorOf([&] { price(*others, "7"); }) == 0) {
        const Rows now = rowsOf(*others, "Produkt");
        mirror.rows = now;
    }
    add(*database, "C");
    database->commit();
    EXPECT_EQ(difference(mirror.rows, rowsOf(*others, "Produkt")), "");
    EXPECT_EQ(select(*others, "SELECT Inpris FROM Produkt WHERE Nummer = 'A'"), "2");
}

TEST_F(ServerListening, CopiedRowsAndManyRemovedOnesAreHeard) {
    Mirror mirror(rowsOf(*database, "Produkt"));
    database->listen(&mirror);
    std::vector<std::vector<Value>> rows;
    for (std::int64_t i = 0; i < 1200; ++i) rows.push_back({i + 7, std::to_string(i)});
    database->begin();
    database->insertRows("Produkt", std::vector<int>{0, 1}, rows);
    database->commit();
    EXPECT_EQ(difference(mirror.rows, rowsOf(*database, "Produkt")), "");
    (void)database->execute("DELETE FROM Produkt WHERE Nummer <> '3'");
    EXPECT_EQ(difference(mirror.rows, rowsOf(*database, "Produkt")), "");
    EXPECT_EQ(mirror.heard, 1200 + 1199);
}

}  // namespace
}  // namespace kolmera::test
