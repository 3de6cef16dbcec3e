#include "startup/newcompany.h"

#include <gtest/gtest.h>

#include "platform/engine/database.h"
#include "platform/error.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

TEST(NewCompany, HasOneRowOfSettings) {
    const TemporaryFolder folder;
    createCompany(folder.path(), "FTG1.mdb", "Åhus Rör AB");
    const auto database = openFileDatabase(folder / "FTG1.mdb", OpenOptions());
    const auto settings = database->open("Syinställningar", RecordsetType::Table);
    EXPECT_EQ(settings->recordCount(), 1);
    EXPECT_EQ(textOf(settings->value("Företagsnamn")), "Åhus Rör AB");
    const auto settings2 = database->open("Syinställningar2", RecordsetType::Table);
    EXPECT_EQ(settings2->recordCount(), 1);
    EXPECT_EQ(settings2->value("PDecUtpris"), Value(std::int64_t{2}));
}

TEST(NewCompany, AFailureLeavesNothingBehind) {
    const TemporaryFolder folder;
    EXPECT_THROW(createCompany(folder.path(), "FTG1.mdb", std::string(51, 'x')), PlatformError);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    EXPECT_THROW(createCompany(folder.path(), "FTG1.mdb", "One", "a password of many characters"), PlatformError);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    createCompany(folder.path(), "FTG1.mdb", "One");
    EXPECT_THROW(createCompany(folder.path(), "ftg1.MDB", "Two"), PlatformError) << "an existing company replaced";
    EXPECT_TRUE(std::filesystem::exists(folder / "FTG1.mdb"));
}

}  // namespace
}  // namespace kolmera::test
