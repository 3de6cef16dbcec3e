#include "engine/enginetest.h"

namespace kolmera::test {
namespace {

class TableRecordset : public EngineTest {
  protected:
    std::unique_ptr<Database> database = open();

    /// Articles "Lev/Namn/Nummer" with repeated and missing keys, added out of order.
    void addArticles() {
        const struct {
            const char* number;
            Value name, supplier;
        } articles[] = {{"4", std::string("mutter"), std::string("B")},
                        {"1", std::string("Skruv"), std::string("A")},
                        {"6", Null{}, Null{}},
                        {"3", std::string("skruv"), std::string("a")},
                        {"2", std::string("bult"), std::string("A")},
                        {"5", Null{}, std::string("B")},
                        {"7", std::string("ögla"), Null{}}};
        for (const auto& article : articles) add(*database, article.number, article.name, article.supplier);
    }

    /// The numbers of all records in the order of an index, forward or backward.
    static std::string walk(Recordset& articles, bool forward = true) {
        std::string numbers;
        if (forward) articles.moveFirst();
        if (!forward) articles.moveLast();
        while (!articles.eof() && !articles.bof()) {
            numbers += textOf(articles.value("Nummer"));
            if (forward) articles.moveNext();
            if (!forward) articles.movePrevious();
        }
        return numbers;
    }
};

TEST_F(TableRecordset, EveryIndexIsWalkedInItsOrderBothWays) {
    addArticles();
    const struct {
        const char *fault, *index, *order;
    } cases[] = {
        {"no index: not by ID", "", "4163257"},
        {"PrimaryKey not by ID", "PrimaryKey", "4163257"},
        {"a unique index", "Nummer", "1234567"},
        {"equal keys skipped, or Null not first", "Namn", "6524137"},
        {"two columns, Nulls in both", "LevNamn", "6721354"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const auto articles = openTable(*database, c.index);
        EXPECT_EQ(walk(*articles), c.order);
        const std::string backward = walk(*articles, false);
        EXPECT_EQ(std::string(backward.rbegin(), backward.rend()), c.order);
    }
}

TEST_F(TableRecordset, ASeekFindsTheFirstRecordWhoseKeyCompares) {
    addArticles();
    const Value a = std::string("A");
    const Value b = std::string("b");
    const Value skruv = std::string("SKRUV");
    const struct {
        const char *fault, *index, *comparison;
        std::vector<Value> keys;
        const char* expected;  ///< number of the record, "" for none
    } cases[] = {
        {"letter case counts", "Namn", "=", {skruv}, "1"},
        {"not the first of equal keys", "LevNamn", "=", {a}, "2"},
        {"second column ignored", "LevNamn", "=", {a, skruv}, "1"},
        {"Null not found", "LevNamn", "=", {Null{}}, "6"},
        {"Null in the second column not found", "LevNamn", "=", {b, Null{}}, "5"},
        {"a key that is not there", "Nummer", "=", {std::string("8")}, ""},
        {"a key longer than the field refused", "Nummer", "=", {std::string(99, '1')}, ""},
        {"a number not compared as text", "Nummer", "=", {std::int64_t{3}}, "3"},
        {"a text not compared as number", "PrimaryKey", "=", {std::string("3")}, "6"},
        {"> finds the key itself", "LevNamn", ">", {a, skruv}, "5"},
        {"> stays within the leading column", "LevNamn", ">", {a}, "5"},
        {">= misses the key itself", "LevNamn", ">=", {a, skruv}, "1"},
        {">= compares each column alone", "LevNamn", ">=", {a, std::string("z")}, "5"},
        {">= finds something behind the last", "Nummer", ">=", {std::string("8")}, ""},
        {"< not from the beginning", "Nummer", "<", {std::string("5")}, "1"},
        {"< finds the key itself", "Nummer", "<", {std::string("1")}, ""},
        {"<= misses the key itself", "Nummer", "<=", {std::string("1")}, "1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const auto articles = openTable(*database, c.index);
        const bool found = seek(*articles, c.keys, c.comparison);
        EXPECT_EQ(found ? textOf(articles->value("Nummer")) : std::string_view(), c.expected);
        EXPECT_EQ(errorOf([&] { (void)articles->value("Nummer"); }), found ? 0 : errors::kNoCurrentRecord);
    }
}

TEST_F(TableRecordset, MovesGoOnFromASeekAndFromARemovedRecord) {
    addArticles();
    const auto articles = openTable(*database, "Namn");
    ASSERT_TRUE(seek(*articles, {std::string("skruv")}));
    articles->moveNext();
    EXPECT_EQ(textOf(articles->value("Nummer")), "3");
    articles->remove();
    EXPECT_EQ(errorOf([&] { (void)articles->value("Nummer"); }), errors::kNoCurrentRecord);
    articles->movePrevious();
    EXPECT_EQ(textOf(articles->value("Nummer")), "1");
    articles->moveNext();
    EXPECT_EQ(textOf(articles->value("Nummer")), "7");
    articles->moveNext();
    EXPECT_TRUE(articles->eof());
    EXPECT_EQ(errorOf([&] { articles->moveNext(); }), errors::kNoCurrentRecord);
    articles->movePrevious();
    EXPECT_EQ(textOf(articles->value("Nummer")), "7");
    EXPECT_EQ(articles->recordCount(), 6);
}

TEST_F(TableRecordset, EmptyingATableReachesEveryRecord) {
    addArticles();
    const auto articles = openTable(*database, "LevNamn");
    int removed = 0;
    for (; !articles->eof(); articles->moveNext(), ++removed) articles->remove();
    EXPECT_EQ(removed, 7);
    EXPECT_EQ(articles->recordCount(), 0);
    const auto again = openTable(*database);
    EXPECT_TRUE(again->bof() && again->eof());
    EXPECT_EQ(errorOf([&] { again->moveFirst(); }), errors::kNoCurrentRecord);
}

TEST_F(TableRecordset, ANewRecordLeavesTheCurrentOneUntilMovedTo) {
    addArticles();
    const auto articles = openTable(*database);
    ASSERT_TRUE(seek(*articles, {std::string("3")}));
    articles->addNew();
    articles->set("Nummer", std::string("35"));
    articles->set("1Pris", 9.5);
    EXPECT_EQ(textOf(articles->value("Nummer")), "35");
    articles->update();
    EXPECT_EQ(textOf(articles->value("Nummer")), "3");
    articles->moveToModified();
    EXPECT_EQ(textOf(articles->value("Nummer")), "35");
    EXPECT_EQ(show(articles->value("ID")), "8");
    EXPECT_EQ(show(articles->value("1Pris")), "9.5");
    articles->moveNext();
    EXPECT_EQ(textOf(articles->value("Nummer")), "4");
}

TEST_F(TableRecordset, AFailedUpdateLeavesTheRecordAndEndsTheEdit) {
    addArticles();
    const auto articles = openTable(*database);
    ASSERT_TRUE(seek(*articles, {std::string("3")}));
    articles->edit();
    articles->set("1Pris", 5.0);
    articles->set("Nummer", std::string("4"));
    EXPECT_EQ(errorOf([&] { articles->update(); }), errors::kDuplicateKey);
    EXPECT_EQ(show(articles->value("Nummer")) + show(articles->value("1Pris")), "'3'0");
    EXPECT_EQ(errorOf([&] { articles->set("1Pris", 6.0); }), errors::kInternal);
    articles->addNew();
    articles->set("Nummer", std::string("1"));
    EXPECT_EQ(errorOf([&] { articles->update(); }), errors::kDuplicateKey);
    EXPECT_EQ(articles->recordCount(), 7);
}

TEST_F(TableRecordset, CancelAndMovesDropAnEdit) {
    addArticles();
    const auto articles = openTable(*database);
    const auto half = [&] {
        articles->moveFirst();
        articles->edit();
        articles->set("1Pris", 5.0);
    };
    half();
    articles->cancelUpdate();
    EXPECT_EQ(show(articles->value("1Pris")), "0");
    half();
    articles->moveNext();
    EXPECT_EQ(errorOf([&] { articles->update(); }), errors::kInternal);
    half();
    (void)seek(*articles, {std::string("2")});
    EXPECT_EQ(errorOf([&] { articles->update(); }), errors::kInternal);
    EXPECT_EQ(select(*database, "SELECT DISTINCT [1Pris] FROM Artikel"), "0");
}

TEST_F(TableRecordset, UnknownNamesAndForbiddenWritesHaveTheirNumbers) {
    addArticles();
    const auto articles = openTable(*database);
    EXPECT_EQ(errorOf([&] { (void)database->open("Okänd", RecordsetType::Table); }), errors::kUnknownTable);
    EXPECT_EQ(errorOf([&] { (void)database->table("Okänd"); }), errors::kUnknownTable);
    EXPECT_EQ(errorOf([&] { articles->setIndex("Okänt"); }), errors::kUnknownField);
    EXPECT_EQ(errorOf([&] { (void)articles->ordinal("Okänt"); }), errors::kUnknownField);
    EXPECT_EQ(articles->ordinal("PÅLÄGG"), 6) << "letter case of Swedish letters counts";
    const auto readOnly = database->open("ARTIKEL", RecordsetType::Table, options::kReadOnly);
    EXPECT_EQ(errorOf([&] { readOnly->addNew(); }), errors::kInternal);
    EXPECT_EQ(errorOf([&] { readOnly->edit(); }), errors::kInternal);
    EXPECT_EQ(errorOf([&] { readOnly->remove(); }), errors::kInternal);
    EXPECT_EQ(articles->recordCount(), 7);
}

TEST_F(TableRecordset, ARecordIsSeenAsItIsNow) {
    addArticles();
    const auto one = openTable(*database);
    const auto other = openTable(*database);
    ASSERT_TRUE(seek(*one, {std::string("3")}) && seek(*other, {std::string("3")}));
    EXPECT_EQ(show(one->value("1Pris")), "0");
    other->edit();
    other->set("1Pris", 8.0);
    other->update();
    EXPECT_EQ(show(one->value("1Pris")), "8") << "an update by another recordset";
    EXPECT_EQ(database->execute("UPDATE Artikel SET [1Pris] = 9 WHERE Nummer = '3'"), 1);
    EXPECT_EQ(show(one->value("1Pris")), "9") << "an update by a statement";
    EXPECT_EQ(open()->execute("UPDATE Artikel SET [1Pris] = 10"), 7);
    one->edit();
    one->set("1Pris", 9.0);
    one->update();
    EXPECT_EQ(select(*database, "SELECT [1Pris] FROM Artikel WHERE Nummer = '3'"), "9")
        << "the value that another session had overwritten was taken for unchanged";
    EXPECT_EQ(open()->execute("UPDATE Artikel SET [1Pris] = 11"), 7);
    database->begin();
    one->edit();
    one->set("1Pris", 9.0);
    one->update();
    database->commit();
    EXPECT_EQ(select(*database, "SELECT [1Pris] FROM Artikel WHERE Nummer = '3'"), "9")
        << "the same, when the change came before the transaction";
    one->edit();
    EXPECT_EQ(database->execute("UPDATE Artikel SET [1Pris] = 13"), 7);
    one->set("1Pris", 9.0);
    one->update();
    EXPECT_EQ(show(one->value("1Pris")), "9") << "the same, when it came while the record was edited";
    one->addNew();
    one->set("Nummer", std::string("8"));
    one->update();
    EXPECT_EQ(database->execute("UPDATE Artikel SET [1Pris] = 12 WHERE Nummer = '8'"), 1);
    one->moveToModified();
    EXPECT_EQ(show(one->value("1Pris")), "12") << "a new record that a statement has changed";
}

TEST_F(TableRecordset, ARecordThatIsGoneCannotBeEdited) {
    addArticles();
    const auto one = openTable(*database);
    const auto other = openTable(*database);
    ASSERT_TRUE(seek(*one, {std::string("3")}) && seek(*other, {std::string("3")}));
    one->edit();
    one->set("1Pris", 5.0);
    EXPECT_EQ(open()->execute("DELETE FROM Artikel WHERE Nummer = '3'"), 1);
    EXPECT_EQ(errorOf([&] { one->update(); }), errors::kNoCurrentRecord) << "saved into nothing";
    ASSERT_TRUE(seek(*one, {std::string("4")}) && seek(*other, {std::string("4")}));
    other->remove();
    EXPECT_EQ(errorOf([&] { (void)one->value("1Pris"); }), errors::kNoCurrentRecord);
    EXPECT_EQ(errorOf([&] { one->edit(); }), errors::kNoCurrentRecord);
}

}  // namespace
}  // namespace kolmera::test
