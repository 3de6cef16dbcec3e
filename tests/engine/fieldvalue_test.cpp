#include <limits>

#include "engine/enginetest.h"

namespace kolmera::test {
namespace {

class FieldValue : public EngineTest {
  protected:
    FieldValue() {
        add(*database, "A");
        record->moveFirst();
    }

    /// Writes a value and reads it back from the file; "refused NUMBER" when the field does not take it.
    std::string stored(const char* field, const Value& value) {
        record->edit();
        const int refused = errorOf([&] { record->set(field, value); });
        record->update();
        if (refused != 0) return "refused " + std::to_string(refused);
        return select(*database, std::string("SELECT [") + field + "] FROM Artikel");
    }

    std::unique_ptr<Database> database = open();
    std::unique_ptr<Recordset> record = openTable(*database, "");
};

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST_F(FieldValue, EveryTypeTakesWhatItCanHold) {
    const std::string sixty = std::string(20, 'x');
    const struct {
        const char *fault, *field;
        Value value;
        const char* expected;
    } cases[] = {
        {"size counted in bytes", "Nummer", std::string("åäöåäöåäöåäöåäöåäöåä"), "'åäöåäöåäöåäöåäöåäöåä'"},
        {"a text too long is cut", "Nummer", sixty + "x", "refused 3163"},
        {"a text of digits becomes a number", "Namn", std::string("007"), "'007'"},
        {"a number not written in the locale", "Namn", 2.5, "'2,5'"},
        {"the decimal comma not known", "1Pris", std::string("12,50"), "12.5"},
        {"only the beginning read", "1Pris", std::string("12abc"), "refused 3421"},
        {"an empty text taken for 0", "1Pris", std::string(), "refused 3421"},
        {"infinity stored", "1Pris", kInfinity, "refused 3421"},
        {"not-a-number stored as Null", "1Pris", std::numeric_limits<double>::quiet_NaN(), "refused 3421"},
        {"halves rounded up", "Antal", 2.5, "2"},
        {"halves rounded down", "Antal", 3.5, "4"},
        {"the largest Long refused", "Antal", std::int64_t{2147483647}, "2147483647"},
        {"Long wraps around", "Antal", std::int64_t{2147483648}, "refused 3421"},
        {"rounding leads out of the range", "Dagar", 32767.5, "refused 3421"},
        {"the smallest Integer refused", "Dagar", std::int64_t{-32768}, "-32768"},
        {"Byte with a sign", "Månader", std::int64_t{-1}, "refused 3421"},
        {"the largest Byte refused", "Månader", std::string("255"), "255"},
        {"Single keeps 64 bits", "Pålägg", 0.1, "0.10000000149011612"},
        {"Single beyond its range", "Pålägg", 1e39, "refused 3421"},
        {"Currency keeps all decimals", "Belopp", 1.00004, "1"},
        {"Currency rounds halves up", "Belopp", 0.00025, "2e-04"},
        {"Currency beyond its range", "Belopp", 1e15, "refused 3421"},
        {"true is no number", "Antal", true, "1"},
        {"a number is no Boolean", "Webb", std::int64_t{-1}, "true"},
        {"a Boolean text taken", "Webb", std::string("Ja"), "refused 3421"},
        {"an ISO date not known", "Datum", std::string("2026-02-28"), "2026-02-28"},
        {"a day that does not exist", "Datum", std::string("2026-02-30"), "refused 3421"},
        {"an empty date taken for Null", "Datum", std::string(), "refused 3421"},
        {"a fraction taken for a date", "Datum", 45000.5, "refused 3421"},
        {"the day number not taken", "Datum", std::int64_t{45000}, "2023-03-15"},
        {"Null refused", "1Pris", Null{}, "Null"},
        {"the counter overwritten", "ID", std::int64_t{77}, "refused 3421"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(stored(c.field, c.value), c.expected);
    }
    EXPECT_EQ(stored("Text", std::string(300, 'y')).size(), 302U) << "a memo has a limit";
}

TEST_F(FieldValue, ARefusedValueLeavesTheOldOne) {
    record->edit();
    record->set("1Pris", 7.0);
    EXPECT_EQ(errorOf([&] { record->set("1Pris", std::string("dyrt")); }), errors::kWrongType);
    EXPECT_EQ(show(record->value("1Pris")), "7");
    record->update();
    EXPECT_EQ(select(*database, "SELECT [1Pris] FROM Artikel"), "7");
}

TEST_F(FieldValue, ANewRecordHasTheDefaultsOfItsTypes) {
    const auto defaults = [&] {
        std::string text;
        for (std::size_t i = 2; i < record->fields().size(); ++i)
            text += show(record->value(static_cast<int>(i))) + " ";
        return text;
    };
    constexpr const char* kExpected = "Null Null 0 Null 0 0 0 0 0 false Null Null ";
    record->addNew();
    EXPECT_EQ(defaults(), kExpected) << "before saving";
    record->update();
    record->moveToModified();
    EXPECT_EQ(defaults(), kExpected) << "from memory";
    record->moveFirst();
    record->moveLast();
    EXPECT_EQ(defaults(), kExpected) << "from the file";
}

TEST_F(FieldValue, FieldsOfAFileKeepTypeSizeAndDefault) {
    const TableDef& table = database->table("artikel");
    ASSERT_EQ(table.fields.size(), artikel.fields.size());
    for (std::size_t i = 0; i < table.fields.size(); ++i) {
        SCOPED_TRACE(artikel.fields[i].name);
        EXPECT_EQ(table.fields[i].name, artikel.fields[i].name);
        EXPECT_EQ(table.fields[i].type, artikel.fields[i].type);
        EXPECT_EQ(table.fields[i].size, artikel.fields[i].size);
        EXPECT_EQ(table.fields[i].counter, artikel.fields[i].counter);
        EXPECT_EQ(table.fields[i].defaultNull, artikel.fields[i].defaultNull);
    }
    ASSERT_EQ(table.indexes.size(), artikel.indexes.size());
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        EXPECT_EQ(table.indexes[i].name, artikel.indexes[i].name);
        EXPECT_EQ(table.indexes[i].fields, artikel.indexes[i].fields);
        EXPECT_EQ(table.indexes[i].unique, artikel.indexes[i].unique);
    }
}

}  // namespace
}  // namespace kolmera::test
