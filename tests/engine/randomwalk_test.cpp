#include <map>
#include <random>

#include "engine/enginetest.h"
#include "platform/lettercase.h"

namespace kolmera::test {
namespace {

struct SwedishLess {
    bool operator()(const std::string& a, const std::string& b) const { return compareSwedish(a, b) < 0; }
};

struct Article {
    std::string number;
    std::string name;
    double price = 0;
    bool operator==(const Article&) const = default;
};

/// Thousands of random steps through two recordsets on one table, each compared with a plain map.
class RandomWalk : public EngineTest {
  protected:
    using Model = std::map<std::string, Article, SwedishLess>;

    unsigned random(unsigned below) { return static_cast<unsigned>(random_() % below); }

    std::string randomNumber() {
        static constexpr std::array kLetters = {"a", "A", "b", "å", "Å", "ä", "ö", "Ö", "z", "1", "9"};
        std::string number;
        for (unsigned i = 0; i <= random(3); ++i) number += kLetters[random(kLetters.size())];
        return number;
    }

    Recordset& either() { return random(2) == 0 ? *one : *other; }

    static Article read(Recordset& articles) {
        return {std::string(textOf(articles.value("Nummer"))), std::string(textOf(articles.value("Namn"))),
                std::get<double>(articles.value("1Pris"))};
    }

    void write(Recordset& articles, const Article& article) {
        articles.set("Nummer", article.number);
        articles.set("Namn", article.name);
        articles.set("1Pris", article.price);
        articles.update();
    }

    void addStep() {
        Recordset& articles = either();
        const Article article{randomNumber(), randomNumber(), static_cast<double>(random(5))};
        const bool isNew = !model.contains(article.number);
        articles.addNew();
        EXPECT_EQ(errorOf([&] { write(articles, article); }), isNew ? 0 : errors::kDuplicateKey);
        if (!isNew) return;
        model[article.number] = article;
        articles.moveToModified();
        EXPECT_EQ(read(articles), article);
    }

    void seekStep() {
        Recordset& articles = either();
        const std::string number = randomNumber();
        const auto found = model.find(number);
        ASSERT_EQ(seek(articles, {number}), found != model.end());
        if (found == model.end()) return;
        EXPECT_EQ(read(articles), found->second);
    }

    /// Two edits of one record, as a product is saved and then its prices are coupled. The first may change the number.
    void editStep() {
        Recordset& articles = either();
        const auto found = model.find(randomNumber());
        if (found == model.end() || !seek(articles, {found->first})) return;
        Article changed = found->second;
        if (random(4) == 0) changed.number = randomNumber();
        if (random(2) == 0) changed.name = randomNumber();
        changed.price = random(5);
        const bool allowed = changed.number == found->second.number || !model.contains(changed.number) ||
                             compareSwedish(changed.number, found->first) == 0;
        articles.edit();
        EXPECT_EQ(errorOf([&] { write(articles, changed); }), allowed ? 0 : errors::kDuplicateKey);
        if (!allowed) {
            EXPECT_EQ(read(articles), found->second);
            return;
        }
        model.erase(found);
        model[changed.number] = changed;
        if (random(2) == 0) checkThrough(either(), changed);
        articles.edit();
        articles.set("1Pris", changed.price + 1);
        articles.update();
        model[changed.number].price = changed.price + 1;
        if (random(3) == 0) checkThrough(either(), model[changed.number]);
    }

    static void checkThrough(Recordset& articles, const Article& expected) {
        const bool moved = !seek(articles, {expected.number});
        ASSERT_FALSE(moved);
        EXPECT_EQ(read(articles), expected);
    }

    void removeStep() {
        Recordset& articles = either();
        const auto found = model.find(randomNumber());
        if (found == model.end() || !seek(articles, {found->first})) return;
        articles.remove();
        const auto next = model.erase(found);
        articles.moveNext();
        ASSERT_EQ(articles.eof(), next == model.end());
        if (next == model.end()) return;
        EXPECT_EQ(read(articles), next->second);
    }

    void statementStep() {
        (void)database->execute("UPDATE Artikel SET 1Pris = 1Pris + 2 WHERE Namn = 'a'");
        for (auto& [number, article] : model) {
            if (compareSwedish(article.name, "a") == 0) article.price += 2;
        }
    }

    void transactionStep() {
        if (!database->inTransaction()) {
            database->begin();
            before = model;
        } else if (random(3) == 0 && !joined) {
            database->rollback();
            model = before;
        } else if (random(2) == 0) {
            database->commit();
            joined = false;
        } else {
            database->commitJoined();
            joined = true;
        }
        if (random(8) != 0) return;
        database->settle();
        if (!database->inTransaction()) joined = false;
    }

    void compareAll() {
        const auto articles = openTable(*database);
        for (const auto& [number, article] : model) {
            ASSERT_FALSE(articles->eof());
            ASSERT_EQ(read(*articles), article);
            articles->moveNext();
        }
        ASSERT_TRUE(articles->eof());
    }

    std::mt19937 random_{4711};
    std::unique_ptr<Database> database = open();
    std::unique_ptr<Recordset> one = openTable(*database);
    std::unique_ptr<Recordset> other = openTable(*database);
    Model model;
    Model before;         ///< at the begin of the transaction
    bool joined = false;  ///< the transaction can no longer be rolled back alone
};

TEST_F(RandomWalk, TheFileAgreesWithAMapAfterEveryStep) {
    for (int step = 0; step < 12000 && !HasFailure(); ++step) {
        SCOPED_TRACE(step);
        const unsigned kind = random(100);
        if (kind < 35) {
            addStep();
        } else if (kind < 50) {
            seekStep();
        } else if (kind < 75) {
            editStep();
        } else if (kind < 90) {
            removeStep();
        } else if (kind < 98) {
            transactionStep();
        } else if (kind < 99) {
            statementStep();
        } else {
            compareAll();
        }
    }
    if (database->inTransaction()) database->commit();
    database->settle();
    EXPECT_GT(model.size(), 50U) << "the walk stayed in a corner";
    EXPECT_EQ(selectElsewhere("SELECT count(*) FROM Artikel"), std::to_string(model.size()));
}

}  // namespace
}  // namespace kolmera::test
