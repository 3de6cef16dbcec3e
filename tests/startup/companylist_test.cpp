#include "startup/companylist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace kolmera {
namespace {

TEST(CompanyList, FindsTheDatabaseThatIsMeant) {
    std::vector<Company> companies;
    std::string databases, shown;
    for (const char* row :
         {"\tFTG1.MDB", "ftg1.mdb\tFTG2.MDB", "Andra\t FTG3.MDB ", "sql;Tre \tAndra", "SQL;B\tSQL;C"}) {
        companies.push_back(companyOfRow(row));
        databases += companies.back().database + " ";
        shown += rowOf(companies.back()) + "|";
    }
    EXPECT_EQ(databases, "FTG1.MDB FTG2.MDB FTG3.MDB sql;Tre SQL;B ");
    EXPECT_EQ(shown, "\tFTG1.MDB|ftg1.mdb\tFTG2.MDB|Andra\tFTG3.MDB|sql;Tre\tAndra|SQL;B\tSQL;C|");
    const struct {
        const char *fault, *name;
        std::optional<std::string> database;
    } cases[] = {
        {"a company's name before another's database", "ftg1.MDB", "FTG1.MDB"},
        {"blanks around a database count", " FTG2.mdb", "FTG2.MDB"},
        {"a name is none", "ANDRA", "FTG3.MDB"},
        {"a server in another case", "SQL;tre", "sql;Tre"},
        {"a server's description", "SQL;C", std::nullopt},
        {"no name is a company without one", "", std::nullopt},
        {"the beginning of a name", "FTG", std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(databaseNamed(companies, c.name), c.database);
    }
}

}  // namespace
}  // namespace kolmera
