#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "cli/climachine.h"
#include "db/serverregister.h"
#include "definitions/jobfile.h"
#include "definitions/maskfile.h"
#include "faults/runworld.h"
#include "platform/tsv.h"
#include "spreadsheet/workbookparts.h"
#include "startup/newcompany.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kColour = "\x1B[31m";          ///< commands a terminal
constexpr std::string_view kTitle = "\x1B]0;x\x07";       ///< names its window
constexpr std::string_view kBackwards = "\u202Etxt.exe";  ///< turns the direction of writing

/// Where a text commands a terminal, with what stands around it; "" when it nowhere does.
std::string command(const std::string& text) {
    for (const std::string_view each :
         {std::string_view("\x1B"), std::string_view("\x07"), std::string_view("\u202E")}) {
        const std::size_t at = text.find(each);
        if (at != std::string::npos) return text.substr(at < 60 ? 0 : at - 60, 120);
    }
    return {};
}

/// Commands of kolmera-cli on the folder of a world.
class Commands {
  public:
    explicit Commands(const World& world) : data_(world.data()) {}

    int run(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data", data_.string()});
        out.str("");
        err.str("");
        const std::atomic<bool> cancel{false};
        return cli::runCommandLine(arguments, {.out = out,
                                               .err = err,
                                               .programFolder = KOLMERA_BIN_DIR,
                                               .settingsFile = data_ / "user.ini",
                                               .locale = Locale(Locale::Kind::Swedish),
                                               .cancel = cancel});
    }
    [[nodiscard]] std::string said() const { return out.str() + err.str(); }

    std::ostringstream out, err;

  private:
    fs::path data_;
};

/// A run whose job, price file and products have texts that command a terminal.
class HostileWorld : public World {
  public:
    HostileWorld() {
        add("Leverantör", {{"Nummer", "1"}, {"Söknamn", "Lev" + std::string(kColour)}});
        mask({.relations = {{1, "Nummer", 'S'}, {2, "Benämning"}, {3, "Inpris"}, {4, "Alternativ 1"}}});
        rawPriceFile(
            fmt::format("A{0}\tNamn{0}\t{0}\tX{0}\r\n{1}\tNamn\t1{1}\tX{1}\r\n=1+1\t=1+1\t5\t@A\r\n", kColour, kTitle));
        JobFile jobs(data());
        job.name = "Jobb" + std::string(kColour);
        jobs.save(job);
        Job other = job;
        other.name = "Annat jobb";
        other.priceFile = "finns" + std::string(kTitle) + ".txt";
        other.command = "";
        jobs.save(other);
    }
};

TEST(HostileText, CommandsNoTerminal) {
    HostileWorld world;
    const auto file = [&](const char* name) { return (world.data() / name).string(); };
    std::ofstream(file("brev.txt"), std::ios::binary)
        << fmt::format("{0}\t1\r\n{0}\t2\r\nB{1}\tx\r\n", kColour, kTitle);
    std::ofstream(file("lista.csv"), std::ios::binary)
        << fmt::format("Nr{0};Pris\n1{0};1{1}\n2;2\n3;3\n", kColour, kBackwards);
    Commands commands(world);
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"jobs"},
                                               {"run", world.job.name},
                                               {"run", "Annat jobb"},
                                               {"run", "Jobb" + std::string(kTitle)},
                                               {"history"},
                                               {"show", "last"},
                                               {"explain", world.job.name, "--product", "A" + std::string(kColour)},
                                               {"preview", world.job.name},
                                               {"compare", "last"},
                                               {"limits", world.job.name},
                                               {"discounts", "import", "1", file("brev.txt")},
                                               {"discounts", "export", "1", file("brev2.txt")},
                                               {"source", "Annat jobb", "--detect", "--file", file("lista.csv")},
                                               {"undo", "last", "--dry-run"},
                                               {"repair", "FTG1.mdb"}}) {
        SCOPED_TRACE(fmt::format("{}", fmt::join(arguments, " ")));
        commands.run(arguments);
        EXPECT_NE(commands.said(), "");
        EXPECT_EQ(command(commands.said()), "");
    }
}

TEST(HostileText, IsNoFormulaInWhatSpreadsheetsOpen) {
    HostileWorld world;
    Commands commands(world);
    const auto file = [&](const char* name) { return (world.data() / name).string(); };
    std::ofstream(file("brev.txt"), std::ios::binary) << "=1+1\t10\r\n+A\t20\r\n";
    ASSERT_NE(commands.run({"run", world.job.name}), 1) << commands.said();
    world.rawPriceFile("B\tNamn\t1\tX\r\n");
    ASSERT_NE(commands.run({"run", world.job.name}), 1) << commands.said();
    world.rawPriceFile("=1+1\t=1+1\t6\t@B\r\n");
    ASSERT_NE(commands.run({"run", world.job.name}), 1) << commands.said();
    ASSERT_EQ(commands.run({"discounts", "import", "1", file("brev.txt")}), 0) << commands.said();
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"show", "last", "--save", file("ut.txt")},
                                               {"compare", "last", "--save", file("jfr.txt")},
                                               {"show", "last", "--save", file("ut.xlsx")},
                                               {"discounts", "export", "1", file("brev.xlsx")}}) {
        SCOPED_TRACE(fmt::format("{}", fmt::join(arguments, " ")));
        ASSERT_EQ(commands.run(arguments), 0) << commands.said();
        const fs::path made = arguments.back();
        const std::string content =
            made.extension() == ".xlsx" ? readZip(made).at("xl/worksheets/sheet1.xml") : readWholeFile(made);
        EXPECT_NE(content.find("1+1"), std::string::npos) << "the text is not there";
        for (const char* formula : {"<f>", "\t=", "\n=", "\t@"}) EXPECT_EQ(content.find(formula), std::string::npos);
    }
}

/// Names of price files and of members of archives, and texts of masks, are never read by a shell.
TEST(HostileName, ReachesNoShellAndNoOtherFolder) {
    for (const std::string name :
         {"$(touch hacked).txt", "`touch hacked`.txt", "a;touch hacked;.txt", "-rf.txt", "| touch hacked"}) {
        SCOPED_TRACE(name);
        World world;
        world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Benämning"}, {3, "Inpris"}}});
        Mask mask = MaskFile(world.data()).read(1)->mask;
        mask.Namn = "$(touch hacked)";
        MaskFile(world.data()).save(mask, MaskFile(world.data()).read(1)->relations);
        world.job.mask = mask.Namn;
        world.job.priceFile = name;
        JobFile(world.data()).save(world.job);
        std::ofstream(world.data() / name, std::ios::binary) << "A\t$(touch hacked)\t1\r\n";
        Commands commands(world);
        EXPECT_EQ(commands.run({"run", world.job.name}), 0) << commands.said();
        EXPECT_EQ(world.rows("Produkt", "Nummer"), "A\n");
        for (const fs::path& folder : {world.data(), world.program(), fs::current_path(), world.data() / "Filer"})
            EXPECT_FALSE(fs::exists(folder / "hacked")) << folder;
    }
}

TEST(HostileName, OfAnArchivesMemberStaysInTheArchive) {
    const TemporaryFolder folder;
    for (const char* member : {"../../out.csv", "/tmp/kolmera-out.csv", "C:\\out.csv", "a/../../out.csv"}) {
        SCOPED_TRACE(member);
        World world;
        world.mask({.columns = 2, .relations = {{1, "Nummer", 'S'}, {2, "Inpris"}}});
        world.job.priceFile = "lista.zip";
        JobFile(world.data()).save(world.job);
        writeZip(world.data() / "lista.zip", {{member, "Nummer;Pris\nA;1,50\nB;2,50\nC;3,50\n"}});
        Commands commands(world);
        EXPECT_EQ(commands.run({"source", world.job.name, "--detect"}), 0) << commands.said();
        (void)commands.run({"run", world.job.name});
        EXPECT_EQ(world.rows("Produkt", "Nummer"), "A\nB\nC\n") << commands.said();
        for (const fs::path& place :
             {world.data() / "../out.csv", world.data() / "../../out.csv", fs::path("/tmp/kolmera-out.csv"),
              world.data() / "C:\\out.csv", world.data() / "out.csv"})
            EXPECT_FALSE(fs::exists(place)) << place;
    }
}

/// A link that stands where the program writes a file leads it nowhere.
TEST(Link, AtNamesThatTheProgramWritesIsNotFollowed) {
    const RunWorld world("tabs", 30);
    const DataFolder all(world.before().path());
    const auto work = [&](const DataFolder& data) {
        for (const std::vector<std::string>& arguments :
             std::vector<std::vector<std::string>>{world.command(false),
                                                   {"limits", "Test", "--set", "largest-change=99"},
                                                   {"add-server", "A", "--connect", "DSN=a"},
                                                   {"undo", "last"}}) {
            EXPECT_TRUE(data.run(arguments).ended());
        }
    };
    work(all);
    std::vector<std::string> names = {"FTG1.mdb-wal", "FTG1.mdb-shm", "FTG1.mdb-journal", "FTG1.mdb.damaged-1",
                                      "KOLMERA.JNL"};
    for (const auto& [name, content] : all.otherFiles()) {
        if (name != "pris.txt") names.push_back(name);
    }
    EXPECT_GT(names.size(), 10U);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const DataFolder data(world.before().path());
        fs::remove(data.path() / name);
        std::ofstream(data.file("precious")) << "precious";
        fs::create_symlink(data.file("precious"), data.path() / name);
        work(data);
        EXPECT_EQ(readWholeFile(data.file("precious")), "precious");
    }
}

TEST(Secret, StandsInNoMessageAndNoOtherFile) {
    constexpr const char* kSecret = "hemligt123";
    World world;
    world.mask({.relations = {{1, "Nummer", 'S'}}});
    world.priceFile("A\r\n");
    Commands commands(world);
    const std::string connect = world.data() / "anslutning";
    std::ofstream(connect) << "DRIVER={Finns inte};UID=jag;PWD=" << kSecret << "\n";
    ASSERT_EQ(commands.run({"add-server", "Hemlig", "--connect-file", connect}), 0) << commands.said();
    EXPECT_EQ(commands.said().find(kSecret), std::string::npos);
    fs::remove(connect);
    world.job.company = "SQL;HEMLIG";
    JobFile(world.data()).save(world.job);
    const std::string summary = world.data() / "summary.json";
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"run", world.job.name, "--summary", summary},
                                               {"preview", world.job.name},
                                               {"copy-company", "FTG1.mdb", "SQL;HEMLIG"},
                                               {"copy-company", "SQL;HEMLIG", "FTG2.mdb"},
                                               {"jobs", "--json"},
                                               {"history", "--json"}}) {
        SCOPED_TRACE(fmt::format("{}", fmt::join(arguments, " ")));
        commands.run(arguments);
        EXPECT_EQ(commands.said().find(kSecret), std::string::npos) << commands.said();
        EXPECT_EQ(commands.said().find("UID=jag"), std::string::npos) << commands.said();
    }
    createCompany(world.data(), "FTG3.mdb", "Låst", "lösen99");
    for (const auto& entry : fs::recursive_directory_iterator(world.data())) {
        if (!entry.is_regular_file()) continue;
        const std::string name = entry.path().filename().string(), content = readWholeFile(entry.path());
        const bool ofTheRegister = equalNoCase(name, "DVSQLSvr.ini"), ofPasswords = equalNoCase(name, "DVDefLog.bin");
        EXPECT_TRUE(ofTheRegister || content.find(kSecret) == std::string::npos) << name;
        EXPECT_EQ(content.find("sen99"), std::string::npos) << name;
        if (ofTheRegister || ofPasswords) {
            EXPECT_EQ(fs::status(entry.path()).permissions(), fs::perms(0600)) << name;
        }
    }
}

}  // namespace
}  // namespace kolmera::test
