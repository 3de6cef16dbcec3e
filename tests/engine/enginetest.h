#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/database.h"
#include "platform/error.h"
#include "support/engineanswers.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

/// A company file with one table that has a field of every type:
///   Artikel: ID, Nummer (unique), Namn (indexed), Lev (indexed with Namn), and a field named after each other type.
class EngineTest : public testing::Test {
  protected:
    EngineTest() { createFileDatabase(file, {&artikel, 1}); }

    static inline const TableDef artikel{"Artikel",
                                         {{.name = "ID", .type = FieldType::Long, .counter = true},
                                          {.name = "Nummer", .type = FieldType::Text, .size = 20},
                                          {.name = "Namn", .type = FieldType::Text, .size = 10},
                                          {.name = "Lev", .type = FieldType::Text, .size = 8},
                                          {.name = "1Pris", .type = FieldType::Double},
                                          {.name = "Andel", .type = FieldType::Double, .defaultNull = true},
                                          {.name = "Pålägg", .type = FieldType::Single},
                                          {.name = "Belopp", .type = FieldType::Currency},
                                          {.name = "Antal", .type = FieldType::Long},
                                          {.name = "Dagar", .type = FieldType::Integer},
                                          {.name = "Månader", .type = FieldType::Byte},
                                          {.name = "Webb", .type = FieldType::Boolean},
                                          {.name = "Datum", .type = FieldType::Date},
                                          {.name = "Text", .type = FieldType::Memo}},
                                         {{"PrimaryKey", "+ID", true},
                                          {"Nummer", "+Nummer", true},
                                          {"Namn", "+Namn", false},
                                          {"LevNamn", "+Lev;+Namn", false}}};

    TemporaryFolder folder;
    std::filesystem::path file = folder / "FTG1.mdb";

    [[nodiscard]] std::unique_ptr<Database> open(const OpenOptions& options = OpenOptions()) const {
        return openFileDatabase(file, options);
    }

    static std::unique_ptr<Recordset> openTable(Database& database, std::string_view index = "Nummer") {
        auto recordset = database.open("Artikel", RecordsetType::Table);
        if (!index.empty()) recordset->setIndex(index);
        return recordset;
    }

    /// Adds a record outside any transaction.
    static void add(Database& database, const std::string& number, const Value& name = Null{},
                    const Value& supplier = Null{}) {
        const auto recordset = openTable(database, "");
        recordset->addNew();
        recordset->set("Nummer", number);
        recordset->set("Namn", name);
        recordset->set("Lev", supplier);
        recordset->update();
    }

    /// Seeks in the recordset's index, and tells whether something matched.
    static bool seek(Recordset& recordset, const std::vector<Value>& keys, std::string_view comparison = "=") {
        recordset.seek(comparison, keys);
        return !recordset.noMatch();
    }

    /// What another session sees.
    [[nodiscard]] std::string selectElsewhere(std::string_view statement) const { return select(*open(), statement); }
};

}  // namespace kolmera::test
