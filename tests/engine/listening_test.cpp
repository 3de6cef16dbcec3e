#include <random>

#include "engine/enginetest.h"
#include "support/mirror.h"

namespace kolmera::test {
namespace {

class Listening : public EngineTest {
  protected:
    unsigned random(unsigned below) { return static_cast<unsigned>(random_() % below); }
    std::string word() { return std::string(1 + random(2), static_cast<char>('a' + random(6))); }

    void setSome(Recordset& articles) {
        if (random(3) == 0) articles.set("Nummer", word());
        if (random(2) == 0) articles.set("Namn", random(4) == 0 ? Value(Null{}) : Value(word()));
        if (random(2) == 0) articles.set("1Pris", static_cast<double>(random(4)) / 3);
        if (random(3) == 0) articles.set("Pålägg", static_cast<double>(random(4)) / 3);
        if (random(3) == 0) articles.set("Belopp", static_cast<double>(random(9)) / 7);
        if (random(3) == 0) articles.set("Webb", random(2) == 0);
        if (random(3) == 0) articles.set("Datum", Date{static_cast<std::int32_t>(45000 + random(5))});
        if (random(4) == 0) articles.set("Dagar", static_cast<std::int64_t>(random(3)));
        articles.update();
    }

    void editOrAdd(Recordset& articles) {
        const bool found = seek(articles, {word()});
        if (found && random(5) == 0) return articles.remove();
        for (unsigned edits = random(3); found && edits > 0; --edits) {
            articles.edit();
            setSome(articles);
        }
        if (found) return;
        articles.addNew();
        setSome(articles);
    }

    void statement(Database& database) {
        static constexpr const char* kStatements[] = {
            "DELETE FROM Artikel WHERE Namn = 'a'", "UPDATE Artikel SET 1Pris = 1Pris + 1 WHERE Lev IS NULL",
            "UPDATE Artikel SET Nummer = 'aa'",  // fails in the middle, as soon as there are two
            "UPDATE Artikel SET ID = ID + 1000 WHERE Namn = 'b'",
            "INSERT INTO Artikel (Nummer, Antal) VALUES ('c', 3)"};
        (void)database.execute(random(12) == 0 ? "DELETE FROM Artikel" : kStatements[random(std::size(kStatements))]);
    }

    void transaction(Database& database, bool& joined) {
        if (!database.inTransaction()) {
            joined = false;
            if (random(4) != 0) return database.begin();
            database.settle();
            return database.begin();
        }
        if (random(3) == 0) return database.rollback();
        if (random(2) == 0) return database.commit();
        database.commitJoined();
    }

    std::mt19937 random_{815};
};

TEST_F(Listening, WhatIsHeardIsTheDifferenceOfTheTables) {
    const auto database = open();
    const auto one = openTable(*database);
    const auto other = openTable(*database);
    for (int i = 0; i < 20; ++i) (void)errorOf([&] { editOrAdd(*one); });
    Mirror mirror(rowsOf(*database, "Artikel"));
    database->listen(&mirror);
    int failed = 0;
    bool joined = false;
    for (int step = 0; step < 2000 && !HasFailure(); ++step) {
        SCOPED_TRACE(step);
        const unsigned kind = random(40);
        failed += errorOf([&] {
                      if (kind == 0) return statement(*database);
                      if (kind < 5) return transaction(*database, joined);
                      editOrAdd(kind % 2 == 0 ? *one : *other);
                  }) != 0;
        if (random(8) == 0) {
            const Rows inTable = rowsOf(*database, "Artikel");  // writes what is held back
            ASSERT_EQ(difference(mirror.rows, inTable), "");
        }
    }
    EXPECT_GT(mirror.heard, 500);
    EXPECT_GT(failed, 20);
    if (database->inTransaction()) database->commit();
    database->settle();
    EXPECT_EQ(difference(mirror.rows, rowsOf(*open(), "Artikel")), "");
    const int heard = mirror.heard;
    database->listen(nullptr);
    (void)database->execute("DELETE FROM Artikel");
    EXPECT_EQ(mirror.heard, heard);
}

TEST_F(Listening, ATriggerOfSomebodyElseIsHeard) {
    {
        const auto database = open();
        add(*database, "1", "x");
    }
    ASSERT_EQ(std::system(("sqlite3 '" + file.string() +
                           "' 'CREATE TRIGGER t AFTER UPDATE OF Namn ON Artikel BEGIN UPDATE Artikel SET Antal = Antal "
                           "+ 1 WHERE ID = new.ID; END'")
                              .c_str()),
              0);
    const auto database = open();
    Mirror mirror(rowsOf(*database, "Artikel"));
    database->listen(&mirror);
    const auto articles = openTable(*database);
    database->begin();
    ASSERT_TRUE(seek(*articles, {"1"}));
    articles->edit();
    articles->set("Namn", std::string("y"));
    articles->update();
    database->commit();
    EXPECT_EQ(difference(mirror.rows, rowsOf(*database, "Artikel")), "");
    EXPECT_EQ(mirror.heard, 2);
}

TEST_F(Listening, CopiedRowsAreHeard) {
    const auto database = open();
    add(*database, "1");
    Mirror mirror(rowsOf(*database, "Artikel"));
    database->listen(&mirror);
    database->begin();
    const std::vector<std::vector<Value>> rows = {{std::int64_t{7}, std::string("7")},
                                                  {std::int64_t{8}, std::string("1")}};
    EXPECT_EQ(errorOf([&] { database->insertRows("Artikel", std::vector<int>{0, 1}, rows); }), errors::kDuplicateKey);
    database->commit();
    EXPECT_EQ(difference(mirror.rows, rowsOf(*database, "Artikel")), "") << "the row before the refused one stays";
    EXPECT_EQ(mirror.rows.size(), 2U);
}

}  // namespace
}  // namespace kolmera::test
