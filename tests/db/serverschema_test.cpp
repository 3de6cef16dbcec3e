#include "db/serverschema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/companyschema.h"

namespace kolmera::test {
namespace {

using ::testing::HasSubstr;

/// A column of every type, an index of every kind.
const std::vector<TableDef>& everyType() {
    static const std::vector<TableDef> tables = parseSchema(
        "table\tordinal\tcolumn\ttype\n"
        "Föremål\t0\tID\tCOUNTER\nFöremål\t1\t1Ja\tBOOLEAN\nFöremål\t2\tLiten\tBYTE\nFöremål\t3\tHel\tINTEGER\n"
        "Föremål\t4\tLång\tLONG\nFöremål\t5\tPengar\tCURRENCY\nFöremål\t6\tEnkel\tSINGLE\nFöremål\t7\tDubbel\tDOUBLE\n"
        "Föremål\t8\tTom\tDOUBLE "
        "NULL\nFöremål\t9\tDag\tDATETIME\nFöremål\t10\tNamn\tTEXT(20)\nFöremål\t11\tText\tMEMO\n",
        "table\tindex\tfields\tunique\n"
        "Föremål\tPrimaryKey\t+ID\t1\nFöremål\tNamn\t+Namn;-Dag\t1\nFöremål\tDag\t+Dag\t0\n");
    return tables;
}

std::string fromTable(const std::string& script) { return script.substr(script.find("\nCREATE TABLE") + 1); }

// The other servers run their scripts in the tests of server companies; this one cannot run here.
TEST(ServerSchema, ForSqlServer) {
    const std::string script = serverSchema(ServerKind::SqlServer, everyType());
    EXPECT_EQ(fromTable(script),
              "CREATE TABLE [Föremål] (\n"
              "    [ID] int IDENTITY(1,1) NOT NULL CONSTRAINT [Föremål.PrimaryKey] PRIMARY KEY,\n"
              "    [1Ja] bit NULL DEFAULT 0,\n"
              "    [Liten] tinyint NULL DEFAULT 0,\n"
              "    [Hel] smallint NULL DEFAULT 0,\n"
              "    [Lång] int NULL DEFAULT 0,\n"
              "    [Pengar] numeric(19,4) NULL DEFAULT 0,\n"
              "    [Enkel] real NULL DEFAULT 0,\n"
              "    [Dubbel] float(53) NULL DEFAULT 0,\n"
              "    [Tom] float(53) NULL,\n"
              "    [Dag] date NULL,\n"
              "    [Namn] nvarchar(20) COLLATE Finnish_Swedish_100_CI_AS NULL,\n"
              "    [Text] nvarchar(max) COLLATE Finnish_Swedish_100_CI_AS NULL);\n"
              "CREATE UNIQUE INDEX [Namn] ON [Föremål] ([Namn], [Dag] DESC) WHERE [Namn] IS NOT NULL AND [Dag] IS NOT "
              "NULL;\n"
              "CREATE INDEX [Dag] ON [Föremål] ([Dag]);\n");
}

TEST(ServerSchema, DiffersWhereServersDo) {
    const struct {
        const char* fault;
        ServerKind kind;
        const char* text;
    } cases[] = {
        {"a byte takes 300", ServerKind::PostgreSql, "\"Liten\" smallint CHECK (\"Liten\" BETWEEN 0 AND 255) NULL"},
        {"indexes of two tables share a name", ServerKind::PostgreSql,
         "INDEX \"Föremål.Dag\" ON \"Föremål\" (\"Dag\");"},
        {"a Boolean cannot be told from a byte", ServerKind::MariaDb, "`1Ja` tinyint(1) NULL DEFAULT 0,"},
        {"a byte below 0", ServerKind::MariaDb, "`Liten` tinyint unsigned NULL"},
    };
    for (const auto& c : cases) EXPECT_THAT(serverSchema(c.kind, everyType()), HasSubstr(c.text)) << c.fault;
}

TEST(ServerSchema, FirstRowsCarryTheirTextsWhole) {
    const char* name = "Åke's \\ \"Rör\"";
    EXPECT_THAT(serverFirstRows(ServerKind::SqlServer, name),
                HasSubstr("INSERT INTO [Syinställningar] ([Företagsnamn]) VALUES (N'Åke''s \\ \"Rör\"');\n"));
    EXPECT_THAT(serverFirstRows(ServerKind::PostgreSql, name), HasSubstr("VALUES ('Åke''s \\ \"Rör\"');\n"));
    EXPECT_THAT(serverFirstRows(ServerKind::MariaDb, name), HasSubstr("VALUES ('Åke''s \\\\ \"Rör\"');\n"));
}

TEST(ServerSchema, KnowsServersByName) {
    EXPECT_EQ(serverKind("PostgreSQL"), ServerKind::PostgreSql);
    EXPECT_EQ(serverKind("oracle"), std::nullopt);
}

}  // namespace
}  // namespace kolmera::test
