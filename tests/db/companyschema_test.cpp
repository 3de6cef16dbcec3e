#include "db/companyschema.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "db/productcolumns.h"
#include "platform/error.h"
#include "platform/tsv.h"

namespace kolmera::test {
namespace {

/// Writes a type the way the descriptions do.
std::string typeText(const FieldDef& field) {
    constexpr const char* kNames[] = {"",       "BOOLEAN",  "BYTE", "INTEGER", "LONG", "CURRENCY", "SINGLE",
                                      "DOUBLE", "DATETIME", "",     "TEXT",    "",     "MEMO"};
    std::string text = field.counter ? "COUNTER" : kNames[static_cast<int>(field.type)];
    if (field.size > 0) text.append("(").append(std::to_string(field.size)).append(")");
    if (field.defaultNull) text += " NULL";
    return text;
}

std::string row(const std::vector<std::string>& cells) {
    std::string text;
    for (const std::string& cell : cells) text += cell + "|";
    return text + "\n";
}

std::string rowsOf(const char* file) {
    std::string text;
    for (const auto& cells : Tsv::read(std::filesystem::path(KOLMERA_SOURCE_DIR) / "data/schema" / file).rows) {
        text += row(cells);
    }
    return text;
}

TEST(CompanySchema, WrittenBackIsTheDescription) {
    std::string tables;
    std::string indexes;
    for (const TableDef& table : companySchema()) {
        for (std::size_t i = 0; i < table.fields.size(); ++i) {
            tables += row({table.name, std::to_string(i), table.fields[i].name, typeText(table.fields[i])});
        }
        for (const IndexDef& index : table.indexes) {
            indexes += row({table.name, index.name, index.fields, index.unique ? "1" : "0"});
        }
    }
    EXPECT_EQ(tables, rowsOf("schema.tsv"));
    EXPECT_EQ(indexes, rowsOf("indexes.tsv"));
}

TEST(CompanySchema, ColumnsThatAreFoundByPlaceStandThere) {
    const std::vector<TableDef> schema = companySchema();
    const auto check = [&](std::string_view name, std::span<const ColumnPlace> columns) {
        const auto table = std::ranges::find(schema, name, &TableDef::name);
        ASSERT_NE(table, schema.end()) << name;
        for (const ColumnPlace& column : columns) EXPECT_EQ(table->ordinal(column.name), column.ordinal) << column.name;
    };
    check("Produkt", kProdukt);
    check("Prodgrupp", kProdgrupp);
}

TEST(CompanySchema, MalformedDescriptionsAreRefused) {
    const std::string head = "table\tordinal\tcolumn\ttype\n";
    const std::string good = head + "A\t0\tID\tCOUNTER\n";
    const std::string indexHead = "table\tindex\tfields\tunique\n";
    const struct {
        const char* fault;
        std::string tables, indexes;
    } cases[] = {
        {"place left out", head + "A\t0\tID\tCOUNTER\nA\t2\tB\tLONG\n", indexHead},
        {"table torn apart", good + "B\t0\tID\tCOUNTER\nA\t1\tC\tLONG\n", indexHead},
        {"size no number", head + "A\t0\tB\tTEXT(x)\n", indexHead},
        {"size with a letter behind", head + "A\t0\tB\tTEXT(2x)\n", indexHead},
        {"column missing in the file", "table\tcolumn\ttype\nA\tID\tCOUNTER\n", indexHead},
        {"index on an unknown column", good, indexHead + "A\tNummer\t+ID;+Nummer\t1\n"},
    };
    for (const auto& c : cases) EXPECT_THROW(parseSchema(c.tables, c.indexes), PlatformError) << c.fault;
}

}  // namespace
}  // namespace kolmera::test
