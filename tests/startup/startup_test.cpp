#include "startup/startup.h"

#include "lang/keys/shared.h"
#include "startworld.h"

namespace kolmera::test {
namespace {

TEST(LäsKlientIni, FindsTheDataFolder) {
    StartWorld world;
    std::filesystem::create_directory(world.program / "below");
    std::filesystem::create_directory(world.data / "prog");
    const std::string drive = "[Enheter]\nX = " + world.data.string() + "|network|\\\\srv\\data\n";
    const std::string alone = world.program.string() + "/";
    const struct {
        const char* fault;
        std::vector<std::string> records;
        std::string dataFolder;
        bool alone;
    } cases[] = {
        {"folder of this system", {"", world.data.string()}, world.data.string() + "/", false},
        {"folder on a mapped drive", {"", " X:\\PROG"}, "X:\\PROG\\", false},
        {"share path not mapped to its drive", {"", "\\\\srv\\data\\prog"}, "X:\\prog\\", false},
        {"share path without a drive", {"", "\\\\annan\\data"}, alone, true},
        {"folder below the program's", {"", "below"}, alone + "below/", false},
        {"blank record 2 taken for a folder", {"", ""}, alone, true},
        {"record 2 missing", {""}, alone, true},
        {"value of another record", {world.data.string(), "", world.data.string()}, alone, true},
        {"folder that is not there", {"", "X:\\borta"}, alone, true},
        {"unknown drive", {"", "Q:\\prog"}, alone, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        world.write(world.program / "dvklient.INI", iniFile(c.records));
        StartState state = world.state(drive);
        LäsKlientIni(state, world.program.string());
        EXPECT_EQ(state.ProgramMapp, alone);
        EXPECT_EQ(state.DataMapp, c.dataFolder);
        EXPECT_EQ(state.EjKlientIni, c.alone);
    }
    world.write(world.program / "dvklient.INI", iniFile({"", world.program.string() + "/dvklient.INI"}));
    StartState state = world.state();
    LäsKlientIni(state, world.program.string());
    EXPECT_TRUE(state.EjKlientIni) << "a file taken for a folder";
}

TEST(LäsDorvikIni, ReadsItsThreeRecords) {
    StartWorld world;
    const auto records = [](const std::string& company, const std::string& font, const std::string& mode) {
        return iniFile({"", company, "", "", "", "", "", "", font, "", mode});
    };
    const struct {
        const char* fault;
        std::string file, company;
        bool font;
        std::int16_t mode;
    } cases[] = {
        {"missing records do not read as blank", "", "", true, 0},
        {"company not in upper case", records("ftgå.mdb", "", "6610"), "FTGÅ.MDB", true, 6610},
        {"0 is true", records("", "0", "6611"), "", false, 6611},
        {"False is true", records("", "False", ""), "", false, 0},
        {"1 is false", records("", "1", "0"), "", true, 0},
        {"True is false", records("", "true", "0"), "", true, 0},
        {"unreadable font option changes it", records("", "kanske", "0"), "", false, 0},
        {"text behind the number not passed over", records("", "0", "6610 lokal"), "", false, 6610},
        {"mode beyond 16 bits wraps round", records("", "0", "72147"), "", false, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        world.write(world.data / "DORVIK.INI", c.file);
        StartState state = world.state();
        state.DataMapp = world.data.string() + "/";
        LäsDorvikIni(state);
        EXPECT_EQ(state.StandardFöretag, c.company);
        EXPECT_EQ(state.TypsnittTahoma, c.font);
        EXPECT_EQ(state.InloggningsLäge, c.mode);
    }
}

TEST(StartUp, GoesThroughItsSteps) {
    StartWorld world;
    world.write(world.program / "DVKlient.ini", iniFile({"", world.data.string()}));
    world.root.write("texts.tsv", "key\tSE\tEN\nRES_5000\tSvar\tAnswer\n");
    buildLanguageDatabase(world.root / "texts.tsv", world.program / "DVLang.sys");
    StartState state = world.state("[Start]\nLang = EN\n");
    state.locale = Locale(Locale::Kind::English);
    LanguageTexts texts;
    bool signedIn = false;
    startUp(state, texts, world.program.string(), [&](StartState& asked) {
        signedIn = true;
        EXPECT_TRUE(asked.TypsnittTahoma) << "signed in before the settings are read";
        asked.Signatur = "ABC";
    });
    EXPECT_TRUE(signedIn);
    EXPECT_EQ(state.Signatur, "ABC");
    EXPECT_EQ(state.Språkkod, "EN");
    EXPECT_EQ(texts.ResText(text::shared::kMessage), "Answer");
    EXPECT_EQ(state.helpFile, state.ProgramMapp + "Dorvik.chm");
    EXPECT_EQ(state.Decimaltecken, '.');
    EXPECT_TRUE(std::filesystem::exists(world.data / "DORVIK.INI")) << "missing settings file not created";
}

TEST(StartUp, AloneNobodySignsInAndNothingIsCreated) {
    StartWorld world;
    StartState state = world.state();
    LanguageTexts texts;
    startUp(state, texts, world.program.string(), [](StartState&) { ADD_FAILURE() << "asked to sign in"; });
    EXPECT_TRUE(state.EjKlientIni);
    EXPECT_EQ(state.DataMapp, state.ProgramMapp);
    EXPECT_EQ(state.Språkkod, "SE");
    EXPECT_EQ(texts.ResText(text::shared::kMessage), "");
    EXPECT_TRUE(std::filesystem::is_empty(world.program));
}

TEST(StartUp, TextsOfTheServerFolderServeWhenTheProgramHasNone) {
    StartWorld world;
    world.root.write("texts.tsv", "key\tSE\tEN\nRES_5000\tSvar\tAnswer\n");
    buildLanguageDatabase(world.root / "texts.tsv", world.data / "DVLang.sys");
    const std::string drive = "[Enheter]\nX = " + world.root.path().string() + "|network|\\\\srv\\d\n";
    for (const std::string& server : {world.data.string(), std::string("\\\\srv\\d\\DATA")}) {
        SCOPED_TRACE(server);
        StartState state = world.state(drive + "[Sökvägar]\nServer = " + server + "\n");
        LanguageTexts texts;
        startUp(state, texts, world.program.string());
        EXPECT_EQ(texts.ResText(text::shared::kMessage), "Svar");
    }
}

}  // namespace
}  // namespace kolmera::test
