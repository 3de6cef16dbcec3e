#pragma once

#include <string>

#include "platform/engine/database.h"
#include "support/engineanswers.h"

namespace kolmera::test {

/// Statements as the programs write them, on the products of `addProducts`, and what they give on every engine.
inline constexpr struct {
    const char *fault, *statement, *expected;
} kStatements[] = {
    {"text between double quotes taken for a column", "SELECT ID FROM Produkt WHERE Nummer = \"A1\"", "3"},
    {"a text that names a column", "SELECT ID FROM Produkt WHERE Nummer = \"Benämning\"", ""},
    {"an apostrophe between double quotes", "SELECT ID FROM Produkt WHERE Benämning = \"it's\"", "3"},
    {"a double quote between apostrophes", "SELECT ID FROM Produkt WHERE Benämning = 'x\"y'", ""},
    {"a doubled apostrophe", "SELECT ID FROM Produkt WHERE Benämning = 'it''s'", "3"},
    {"a statement in a text", "SELECT ID FROM Produkt WHERE Nummer = ''' OR 1=1; DELETE FROM Produkt --'", ""},
    {"a backslash before the closing quote", "SELECT ID FROM Produkt WHERE Nummer <> 'A1\\' ORDER BY ID", "1; 2; 3; 4"},
    {"Swedish capitals in names", "select nummer from PRODUKT where FÖRÄNDRINGSDATUM IS NULL order by NUMMER",
     "'a1'; 'A2'; 'B1'; 'Å1'"},
    {"a name that begins with a digit", "SELECT 1Utpris FROM Produkt WHERE 1Utpris = 0 AND ID = 1", "0"},
    {"a name in brackets", "SELECT [1utpris] FROM [produkt] WHERE [ID] = 1", "0"},
    {"a date between #", "SELECT ID FROM Produkt WHERE Fridatum = #2026-03-01#", "3"},
    {"a date in the locale's spelling", "SELECT ID FROM Produkt WHERE Fridatum < #1 apr 2026#", "3"},
    {"a truth value", "SELECT Webshop FROM Produkt WHERE Webshop = TRUE", "true"},
    {"1 for a truth value", "SELECT ID FROM Produkt WHERE Webshop = 1 AND NOT Webshop = 0", "3"},
    {"a negative number", "SELECT ID FROM Produkt WHERE Inpris = -1.5 AND Leveranstid = -7", "3"},
    {"a fraction compared with whole numbers", "SELECT ID FROM Produkt WHERE Leveranstid < 0.5 ORDER BY ID",
     "1; 2; 3; 4"},
    {"a number beyond the column's type", "SELECT ID FROM Produkt WHERE Leveranstid < 100000 ORDER BY ID DESC",
     "4; 3; 2; 1"},
    {"a number taken from a column", "SELECT ID FROM Produkt WHERE ID - 1 = 2", "3"},
    {"Null last in the order", "SELECT ID, Fridatum FROM Produkt ORDER BY Fridatum, Nummer",
     "2 Null; 1 Null; 4 Null; 3 2026-03-01"},
    {"Null first downwards", "SELECT ID, Fridatum FROM Produkt ORDER BY Fridatum DESC, Nummer",
     "3 2026-03-01; 2 Null; 1 Null; 4 Null"},
    {"a list", "SELECT ID FROM Produkt WHERE Nummer IN ('A1', 'å1') ORDER BY ID", "3; 4"},
    {"two tables",
     "SELECT P.Nummer, L.Webshop FROM Produkt P, Produkt L WHERE P.ID = L.ID AND P.ID < 4 ORDER BY P.Nummer",
     "'a1' true; 'A2' false; 'B1' false"},
    {"counting", "SELECT count(*) FROM Produkt WHERE Nummer > 'a1'", "3"},
    {"a column that is there twice", "SELECT Nummer, Nummer FROM Produkt WHERE ID = 1", "'B1' 'B1'"},
    {"a leading blank", "  SELECT ID FROM Produkt WHERE ID = 2", "2"},
    {"a text that a parameter brought", "SELECT Benämning FROM Produkt WHERE ID = 2", "'\"'#;--?\\'"},
};

/// Statements that are refused by a number, and change nothing.
inline constexpr struct {
    const char *fault, *statement;
    int number;
} kWrongStatements[] = {
    {"an unknown table", "DELETE FROM Okänd", errors::kUnknownTable},
    {"an unknown column", "DELETE FROM Produkt WHERE Okänd = 1", errors::kUnknownField},
    {"no date between #", "DELETE FROM Produkt WHERE Fridatum = #31 februari#", errors::kWrongType},
    {"two statements at once", "DELETE FROM Produkt; DELETE FROM Produkt", errors::kInternal},
    {"a transaction behind the engine's back", "BEGIN", errors::kInternal},
    {"a statement that only reads", "SELECT ID FROM Produkt", errors::kInternal},
    {"a parameter without value", "DELETE FROM Produkt WHERE ID = ?", errors::kInternal},
    {"a duplicate key", "UPDATE Produkt SET Nummer = 'X'", errors::kDuplicateKey},
    {"no statement at all", "", errors::kInternal},
};

/// B1, A2, a1 and Å1 with the IDs 1 to 4.
inline void addProducts(Database& database) {
    const auto records = database.open("Produkt", RecordsetType::Dynaset);
    for (const char* number : {"B1", "A2", "a1", "Å1"}) {
        records->addNew();
        records->set("Nummer", std::string(number));
        records->set("Leverantör", std::string("L").append(number));
        records->update();
    }
}

inline void expectStatements(Database& database) {
    const std::vector<Value> values = {std::string("\"'#;--?\\"), std::int64_t{2}};
    EXPECT_EQ(database.execute("UPDATE Produkt SET Benämning = ? WHERE ID = ?", values), 1);
    (void)database.execute(
        "UPDATE Produkt SET Fridatum = #2026-03-01#, Webshop = TRUE, Inpris = -1.5, Leveranstid = - 7, "
        "Benämning = \"it's\" WHERE Nummer = 'A1'");
    for (const auto& c : kStatements) EXPECT_EQ(select(database, c.statement), c.expected) << c.fault;
    for (const auto& c : kWrongStatements) {
        EXPECT_EQ(errorOf([&database, statement = c.statement] { (void)database.execute(statement); }), c.number)
            << c.fault;
    }
    EXPECT_EQ(select(database, "SELECT count(*) FROM Produkt"), "4") << "a statement that failed did something";
}

}  // namespace kolmera::test
