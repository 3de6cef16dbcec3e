#include "startup/company.h"

#include "db/companyschema.h"
#include "startup/companyfile.h"
#include "startup/newcompany.h"
#include "startup/passwordfile.h"
#include "startworld.h"

namespace kolmera::test {
namespace {

using Rows = std::vector<std::string>;

std::string registerRecord(const std::string& file, const std::string& name, const std::string& third) {
    const auto padded = [](const std::string& text, std::size_t width) {
        std::string bytes = fromUtf8(text, CodePage::Windows1252);
        bytes.resize(width, ' ');
        return bytes;
    };
    return padded(file, 20) + padded(name, 50) + padded(third, 50);
}

/// A data folder, its register, and texts that are easy to tell apart.
class CompanyRegisterTest : public ::testing::Test {
  protected:
    CompanyRegisterTest() : state(world.state()), boxes(port, ""), companies(state, texts, boxes) {
        state.DataMapp = world.data.string() + "/";
        world.root.write("texts.tsv",
                         "key\tSE\tEN\nRES_3300\tKan inte öppna\tx\nSP_MOD_KMR_015\t är inget företag\tx\n"
                         "SP_MOD_KMR_016\t Reparera <VAR1>?\tx\nSP_MOD_KMR_018\tGick inte\tx\n"
                         "SP_MOD_KMR_117\tKvar: <VAR1>\tx\n");
        buildLanguageDatabase(world.root / "texts.tsv", world.root / "DVLang.sys");
        texts.ÖppnaSpråk(world.root.path(), {});
    }
    void company(const std::string& file, const std::string& name, const std::string& password = {}) const {
        createCompany(world.data, file, name, password);
    }
    void write(const std::string& file, const std::string& bytes) const { world.write(world.data / file, bytes); }
    std::string read(const std::string& file) const { return world.root.read("data/" + file); }
    /// Overwrites the last page, which holds the last of the tables.
    void damage(const std::string& file) const {
        const std::string bytes = read(file);
        write(file, bytes.substr(0, bytes.size() - 4096) + std::string(4096, 'x'));
    }

    StartWorld world;
    StartState state;
    ScriptedBoxes port;
    LanguageTexts texts;
    MessageBoxes boxes;
    CompanyRegister companies;
};

TEST_F(CompanyRegisterTest, NewCompaniesJoinTheRegister) {
    company("ftg2.MDB", "Åhus Rör AB");
    company("FTG3.mdb", "Its settings will be gone");
    openFileDatabase(world.data / "FTG3.mdb", OpenOptions())->execute("DELETE FROM Syinställningar");
    company("FTG33.mdb", "");
    write("FTG1.mdb", "never opened");
    write("FTG4.txt", "");
    write("AFTG5.mdb", "");
    std::filesystem::create_directory(world.data / "FTG6.mdb");
    write("DORVIK.FTG", registerRecord("FTG9.MDB", "Gone", "a") + registerRecord("ftg1.mdb", "First", "b"));

    const Rows expected = {"First\tFTG1.MDB", "Åhus Rör AB\tFTG2.MDB", "\tFTG3.MDB", "\tFTG33.MDB"};
    EXPECT_EQ(companies.FyllFöretagsLista(), expected);
    EXPECT_EQ(read("DORVIK.FTG"), registerRecord("FTG9.MDB", "Gone", "a") + registerRecord("ftg1.mdb", "First", "b") +
                                      registerRecord("FTG2.MDB", "Åhus Rör AB", "") +
                                      registerRecord("FTG3.MDB", "", "") + registerRecord("FTG33.MDB", "", ""))
        << "a company added wrongly, or the third field not blank";
    EXPECT_FALSE(std::filesystem::exists(world.data / "ftg2.MDB-wal")) << "a log says that somebody works in it";
    write("ftg2.MDB", "registered companies are not opened");
    EXPECT_EQ(companies.FyllFöretagsLista(), expected);
    EXPECT_EQ(read("DORVIK.FTG").size(), 5U * 120U) << "added once more";
}

TEST_F(CompanyRegisterTest, TheRegisterIsMadeBeforeTheFirstCompany) {
    EXPECT_EQ(companies.FyllFöretagsLista(), Rows{});
    EXPECT_TRUE(std::filesystem::exists(world.data / "DORVIK.FTG"));
}

TEST_F(CompanyRegisterTest, NamesAreComparedByTwentyCharacters) {
    write("FTG-ett-namn-på-tjugotvå.mdb", "");
    write("DORVIK.FTG", registerRecord("FTG-ett-namn-på-tjug", "Long", ""));
    EXPECT_EQ(companies.FyllFöretagsLista(), Rows{"Long\tFTG-ETT-NAMN-PÅ-TJUGOTVÅ.MDB"});
}

TEST_F(CompanyRegisterTest, FilesThatCannotBeOpenedAreLeftOut) {
    company("FTG1.mdb", "Open");
    company("FTG2.mdb", "Secret", "hemligt");
    company("FTG3.mdb", "Shut", "hemligt");
    PasswordFile(world.data).save("FTG3.mdb", "fel");
    write("FTG4.mdb", "no database at all, but some text that is long enough to be looked at");
    port.answers = {Answer::OK, Answer::OK};
    EXPECT_EQ(companies.FyllFöretagsLista(), (Rows{"Open\tFTG1.MDB", "Secret\tFTG2.MDB"}));
    ASSERT_EQ(port.shown.size(), 2U);
    EXPECT_TRUE(port.shown[0].starts_with("Kan inte öppna FTG3.MDB.\r\n")) << port.shown[0];
    EXPECT_TRUE(port.shown[1].starts_with("Kan inte öppna FTG4.MDB.\r\n")) << port.shown[1];
    EXPECT_TRUE(port.shown[1].ends_with("|Kolmera|1|0")) << port.shown[1];
    EXPECT_EQ(read("DORVIK.FTG").size(), 2U * 120U);
}

TEST_F(CompanyRegisterTest, AskedToRepairNoLeavesTheFile) {
    company("FTG1.mdb", "Damaged");
    damage("FTG1.mdb");
    const std::string before = read("FTG1.mdb");
    port.answers = {Answer::No};
    EXPECT_EQ(companies.FyllFöretagsLista(), Rows{});
    EXPECT_EQ(port.shown, Rows{"Kan inte öppna FTG1.MDB. Reparera FTG1.MDB?|Kolmera|2|2"});
    EXPECT_EQ(read("FTG1.mdb"), before);
}

TEST_F(CompanyRegisterTest, RepairedCompaniesAreListed) {
    company("FTG1.mdb", "Damaged");
    damage("FTG1.mdb");
    port.answers = {Answer::Yes, Answer::OK};
    EXPECT_EQ(companies.FyllFöretagsLista(), Rows{"Damaged\tFTG1.MDB"});
    ASSERT_EQ(port.shown.size(), 2U);
    EXPECT_TRUE(port.shown[1].starts_with("Kvar: FTG1.mdb.damaged-1\r\n")) << port.shown[1];
    EXPECT_EQ(read("DORVIK.FTG"), registerRecord("FTG1.MDB", "Damaged", ""));
}

// Registered companies are never opened for the list.
TEST_F(CompanyRegisterTest, ADamagedCompanyIsRepairedWhenItIsOpened) {
    company("FTG1.mdb", "Damaged", "hemligt");
    damage("FTG1.mdb");
    port.answers = {Answer::OK, Answer::No};
    EXPECT_FALSE(companies.ÖppnaDatabas("FTG1.mdb"));
    std::filesystem::remove(world.data / "DVDefLog.bin");
    port.answers = {Answer::OK, Answer::Yes, Answer::OK, Answer::OK};
    EXPECT_FALSE(companies.ÖppnaDatabas("FTG1.mdb")) << "opened without its password";
    EXPECT_TRUE(port.shown.back().starts_with("Kan inte öppna FTG1.mdb.\r\n\r\n3031\r\n")) << port.shown.back();
    PasswordFile(world.data).save("FTG1.mdb", "hemligt");
    EXPECT_TRUE(companies.ÖppnaDatabas("FTG1.mdb"));
}

TEST_F(CompanyRegisterTest, WhatCannotBeRepairedIsLeftOut) {
    company("FTG1.mdb", "Damaged");
    company("FTG2.mdb", "Whole");
    const auto otherSession = openFileDatabase(world.data / "FTG1.mdb", OpenOptions());
    otherSession->begin();
    otherSession->execute("UPDATE Syinställningar SET Företagsnamn = 'Working'");
    damage("FTG1.mdb");
    int asked = 0;
    companies.waitForLock = [&] { return ++asked < 3; };
    port.answers = {Answer::Yes, Answer::OK};
    EXPECT_EQ(companies.FyllFöretagsLista(), Rows{"Whole\tFTG2.MDB"});
    ASSERT_EQ(port.shown.size(), 2U);
    EXPECT_EQ(port.shown[1], "Gick inte|Kolmera|1|0");
    EXPECT_GT(asked, 1) << "not waited for the other session";
}

TEST_F(CompanyRegisterTest, OpensACompanyByAnyLetterCase) {
    company("FTG1.mdb", "One", "hemligt");
    EXPECT_TRUE(companies.ÖppnaDatabas("Ftg1.Mdb"));
    ASSERT_NE(state.sql.FtgDB, nullptr);
    EXPECT_FALSE(state.sql.ÄrSQLFöretag);
    const auto settings = state.sql.SQLÖppnaRs("Syinställningar", RecordsetType::Snapshot);
    EXPECT_EQ(textOf(settings->value("FöretagsNamn")), "One");
}

TEST_F(CompanyRegisterTest, CompaniesThatDoNotOpenAreReported) {
    company("FTG1.mdb", "One");
    ASSERT_TRUE(companies.ÖppnaDatabas("FTG1.mdb"));
    const Database* open = state.sql.FtgDB.get();
    const struct {
        const char* fault;
        std::string name, beginning;
    } cases[] = {
        {"missing file", "FTG7.mdb", "Kan inte öppna FTG7.mdb.\r\n\r\n3024\r\n"},
        {"server company that is not registered", "sql;Åhus",
         "Kan inte öppna sql;Åhus.\r\n\r\n3024\r\nno company of that name is registered"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        port.answers = {Answer::OK};
        port.shown.clear();
        EXPECT_FALSE(companies.ÖppnaDatabas(c.name));
        ASSERT_EQ(port.shown.size(), 1U);
        EXPECT_TRUE(port.shown[0].starts_with(c.beginning)) << port.shown[0];
        EXPECT_TRUE(port.shown[0].ends_with("|Kan inte öppna|1|0")) << port.shown[0];
        EXPECT_FALSE(state.sql.ÄrSQLFöretag);
        EXPECT_EQ(state.sql.FtgDB.get(), open);
    }
    EXPECT_TRUE(std::filesystem::exists(world.data / "DVSQLSvr.ini")) << "the server register was not asked";
}

TEST_F(CompanyRegisterTest, AServerThatCannotBeOpenedSaysWhy) {
    std::string server = "SQL;X";
    server.resize(400, ' ');
    write("DVSQLSvr.ini", server);
    int tries = 0;
    state.sql.openServerDatabase = [&](const std::string&, const ServerOptions&) -> std::unique_ptr<Database> {
        throw PlatformError(errors::kServerGone, "try " + std::to_string(++tries));
    };
    port.answers = {Answer::OK, Answer::OK};
    EXPECT_FALSE(companies.ÖppnaDatabas("sql;x"));
    EXPECT_FALSE(companies.ÖppnaDatabas("FTG7.mdb"));
    ASSERT_EQ(port.shown.size(), 2U);
    EXPECT_TRUE(port.shown[0].starts_with("Kan inte öppna sql;x.\r\n\r\n3151\r\ntry 4|")) << port.shown[0];
    EXPECT_TRUE(port.shown[1].starts_with("Kan inte öppna FTG7.mdb.\r\n\r\n3024\r\n")) << "the server's old error";
}

}  // namespace
}  // namespace kolmera::test
