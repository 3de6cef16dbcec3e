#include "startup/companylist.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

TEST(CompanyList, FindsTheDatabaseThatIsMeant) {
    const std::vector<std::string> rows = {"\tFTG1.MDB", "ftg1.mdb\tFTG2.MDB", "Andra\tFTG3.MDB", "SQL;Tre\tAndra"};
    EXPECT_EQ(databasesOf(rows), (std::vector<std::string>{"FTG1.MDB", "FTG2.MDB", "FTG3.MDB", "SQL;Tre"}));
    const struct {
        const char* fault;
        const char* name;
        std::optional<std::string> database;
    } cases[] = {
        {"a company's name before another's database", "ftg1.MDB", "FTG1.MDB"},
        {"a server's description", "ANDRA", "FTG3.MDB"},
        {"a server in lower case", "sql;tre", "SQL;Tre"},
        {"no name is a company without one", "", std::nullopt},
        {"the beginning of a name", "FTG", std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(databaseNamed(rows, c.name), c.database);
    }
}

}  // namespace
}  // namespace kolmera
