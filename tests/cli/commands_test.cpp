#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/climachine.h"
#include "cli/progressbar.h"
#include "cli/summaryfile.h"
#include "cli/terminalstream.h"
#include "definitions/jobfile.h"
#include "platform/descriptor.h"
#include "platform/engine/database.h"
#include "platform/lettercase.h"
#include "platform/tsv.h"

namespace kolmera::test {
namespace {

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::int32_t rowCount(const CliMachine& machine, std::string_view table) {
    const auto database = machine.open();
    return database->open(table, RecordsetType::Table)->recordCount();
}

std::int32_t products(const CliMachine& machine) { return rowCount(machine, "Produkt"); }

}  // namespace

TEST(CommandLine, WrongUseEndsWithTwoAndIsExplained) {
    const struct {
        std::vector<std::string> arguments;
        const char* told;
    } cases[] = {{{}, "saknas något på kommandoraden: KOMMANDO"},
                 {{"rnu"}, "Kommandot rnu finns inte. Menade du run?"},
                 {{"new"}, "saknas något på kommandoraden: DIR"},
                 {{"run", "Job"}, "saknas något på kommandoraden: --data"},
                 {{"jobs", "--data"}, "värde saknas efter --data"},
                 {{"jobs", "-d", "x", "extra"}, "väntades inte på kommandoraden: extra"},
                 {{"run", "Job", "-d", "x", "--strict", "--force"}, "--strict, --force kan inte användas tillsammans"},
                 {{"run", "Job", "-d", "x", "--locale", "de"}, "--locale: de"},
                 {{"jobs", "-d", "x", "--jsn", "y"}, "Menade du --json?"},
                 {{"undo", "last", "-d", "x", "--json", "--quiet"}, "--quiet kan inte användas tillsammans"}};
    CliMachine machine;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.told);
        EXPECT_EQ(machine.run(c.arguments), cli::exitcode::kUsage);
        EXPECT_TRUE(contains(machine.err(), c.told)) << machine.err();
    }
    EXPECT_EQ(machine.run({"run", "--help"}), cli::exitcode::kDone);
    EXPECT_TRUE(contains(machine.out(), "Användning: kolmera-cli run [VAL] JOB")) << machine.out();
    EXPECT_FALSE(contains(machine.out(), "Options"));
}

TEST(CommandLine, NewMakesAFolderOnce) {
    CliMachine machine;
    EXPECT_EQ(machine.run({"new", machine.data(), "--company", "Provbolaget"}), cli::exitcode::kDone);
    {
        const auto database = machine.open();
        const auto settings = database->open("Syinställningar", RecordsetType::Snapshot);
        EXPECT_EQ(settings->value("Företagsnamn"), Value("Provbolaget"));
    }
    EXPECT_EQ(machine.run({"jobs", "--data", machine.data(), "--json"}), cli::exitcode::kDone);
    const auto jobs = nlohmann::json::parse(machine.out());
    ASSERT_EQ(jobs.size(), 3U);
    EXPECT_EQ(jobs[2]["job"], "(FINFO)");
    EXPECT_EQ(jobs[2]["company"], "FTG1.mdb");

    EXPECT_EQ(machine.run({"new", machine.data()}), cli::exitcode::kStopped) << "a folder in use was taken again";
    EXPECT_EQ(machine.run({"demo", machine.data()}), cli::exitcode::kStopped);
}

TEST(CommandLine, RunStopsWithAMessage) {
    DemoMachine machine;
    std::filesystem::remove(std::filesystem::path(machine.data()) / "Prisfiler" / "VERKTYG.TXT");
    const struct {
        const char* fault;
        std::vector<std::string> arguments;
        const char* message;
    } cases[] = {
        {"an unknown job", {"run", "Finns ej", "--data", machine.data()}, "Finns ej"},
        {"a name with a slip", {"run", "smedhultverktig", "--data", machine.data()}, "\"Smedhult verktyg\""},
        {"no data folder", {"run", "(EIO)", "--data", machine.file("none")}, "none"},
        {"a folder name that the system refuses", {"run", "(EIO)", "--data", std::string(300, 'x')}, "Datamappen"},
        {"the same, for the list of jobs", {"jobs", "--data", std::string(300, 'x')}, "Datamappen"},
        {"the price file is missing", {"run", "Smedhult verktyg", "--data", machine.data()}, "VERKTYG.TXT"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(machine.run(c.arguments), cli::exitcode::kStopped);
        EXPECT_TRUE(contains(machine.err(), c.message)) << machine.err();
    }
    std::ofstream(machine.file("settings.ini")) << "[Start]\nLang=EN\n";
    (void)machine.run(cases[0].arguments);
    EXPECT_TRUE(machine.err().starts_with("Error: ")) << "not in the user's language: " << machine.err();
}

TEST(CommandLine, SaysAsMuchAsIsWanted) {
    DemoMachine machine;
    const auto runJob = [&](const std::string& job, const char* option) { return machine.runJob(job, {option}); };
    EXPECT_EQ(runJob("Granlid arbetsbok", "--quiet"), cli::exitcode::kDone);
    EXPECT_EQ(machine.out() + machine.err(), "");
    EXPECT_EQ(runJob("(EIO)", "-q"), cli::exitcode::kPassedOver);
    EXPECT_EQ(machine.out(), "");
    EXPECT_TRUE(contains(machine.err(), "0001A550")) << "remarks kept back: " << machine.err();
    EXPECT_FALSE(contains(machine.err(), "[3421"));
    EXPECT_EQ(runJob("(EIO)", "--verbose"), cli::exitcode::kPassedOver);
    EXPECT_TRUE(contains(machine.err(), " [3421: ")) << machine.err();
    std::filesystem::create_directory(machine.file("s.json"));
    EXPECT_EQ(machine.runJob("(EIO)", {"-v", "--summary", machine.file("s.json")}), cli::exitcode::kStopped);
    EXPECT_TRUE(contains(machine.err(), "errno 21: ")) << machine.err();
    std::ofstream(machine.company(), std::ios::trunc) << "no company";
    EXPECT_EQ(machine.runJob("(EIO)", {"-v"}), cli::exitcode::kStopped);
    EXPECT_TRUE(contains(machine.err(), "[3343: ")) << "words of a message kept back: " << machine.err();
    EXPECT_EQ(machine.runJob("zzz"), cli::exitcode::kStopped);
    EXPECT_TRUE(contains(machine.err(), R"("Ekhult semikolonlista", "Granlid arbetsbok")")) << machine.err();
}

TEST(CommandLine, CancelKeepsWhatWasRead) {
    DemoMachine machine;
    const std::int32_t before = products(machine);
    machine.cancel = true;
    EXPECT_EQ(machine.runJob("Smedhult verktyg", {"--summary", machine.file("s.json")}), cli::exitcode::kCancelled);
    const auto summary = nlohmann::json::parse(readWholeFile(machine.file("s.json")));
    EXPECT_EQ(summary["cancelled"], true);
    EXPECT_EQ(summary["records"], 25) << "Cancel is looked at behind every 25th record";
    EXPECT_EQ(products(machine), before + summary["new"].get<std::int32_t>());
}

TEST(CommandLine, CancelDuringThePreparationEmptiesNothing) {
    DemoMachine machine;
    JobFile jobs(machine.data());
    auto job = *jobs.find("Smedhult verktyg");
    job.command = "sleep 3";
    jobs.save(job);
    const std::int32_t before = products(machine);
    machine.cancel = true;
    EXPECT_EQ(machine.runJob(job.name, {"--empty"}), cli::exitcode::kCancelled);
    EXPECT_EQ(products(machine), before);
}

TEST(CommandLine, EmptiesWhatAnInterruptedEmptyingLeft) {
    const auto supplierPrices = [](bool interrupted) {
        DemoMachine machine;
        if (interrupted) machine.open()->execute("DELETE FROM Produkt");
        EXPECT_NE(machine.runJob("Smedhult verktyg", {"--empty"}), cli::exitcode::kStopped) << machine.err();
        return rowCount(machine, "Levprislista");
    };
    EXPECT_EQ(supplierPrices(true), supplierPrices(false));
}

TEST(CommandLine, AFolderIsMadeWholeOrNotAtAll) {
    CliMachine machine;
    machine.programFolder = machine.file("program");  // without the demo's files
    const std::filesystem::path parent = std::filesystem::path(machine.data()).parent_path();
    for (const bool there : {false, true}) {
        SCOPED_TRACE(there);
        if (there) std::filesystem::create_directory(machine.data());
        EXPECT_EQ(machine.run({"demo", machine.data()}), cli::exitcode::kStopped);
        EXPECT_TRUE(contains(machine.err(), "Fel: ")) << "no texts without DVLang.sys: " << machine.err();
        EXPECT_EQ(std::filesystem::is_empty(there ? std::filesystem::path(machine.data()) : parent), true);
    }
    machine.programFolder = KOLMERA_BIN_DIR;
    EXPECT_EQ(machine.run({"demo", machine.data()}), cli::exitcode::kDone) << machine.err();
}

TEST(CommandLine, OutputThatCannotBeWrittenIsNoSuccess) {
    CliMachine machine;
    ASSERT_EQ(machine.run({"new", machine.data() + "/"}), cli::exitcode::kDone) << machine.err();
    machine.closeOutput();
    EXPECT_EQ(machine.run({"jobs", "--data", machine.data()}), cli::exitcode::kStopped);
    EXPECT_NE(machine.err(), "");
    machine.cancel = true;
    EXPECT_EQ(machine.run({"jobs", "--data", machine.data()}), cli::exitcode::kCancelled);
}

TEST(TerminalStream, WaitsForAReaderUntilCancelled) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const Descriptor reader(ends[0]);
    const Descriptor writer(ends[1]);
    std::atomic<bool> cancel{true};
    cli::TerminalStream buffer(writer.get(), cancel);
    std::ostream out(&buffer);
    out << "what there is room for is written" << std::flush;
    EXPECT_TRUE(out.good());
    out << std::string(1'000'000, 'x') << std::flush;
    EXPECT_FALSE(out.good());
}

TEST(CommandLine, DoubtfulFilesAreReadOnlyWhenAsked) {
    DemoMachine machine;
    const std::string file = machine.data() + "/Prisfiler/VERKTYG.TXT";
    const std::string sound = readWholeFile(file);
    const struct {
        const char* fault;
        std::string bytes;
        std::vector<std::string> options;
        int code;
        bool kept;  // the products
    } cases[] = {
        {"garbage is read", replaceAll(sound, "\r", ""), {"--empty"}, cli::exitcode::kStopped, true},
        {"--force is not heard",
         replaceAll(sound, "\r", ""),
         {"--empty", "--force"},
         cli::exitcode::kPassedOver,
         false},
        {"an empty file stops by itself", "", {}, cli::exitcode::kPassedOver, true},
        {"--strict is not heard", "", {"--empty", "--strict"}, cli::exitcode::kStopped, true},
        {"the other locale is read",
         replaceAll(sound, ".", ","),
         {"--empty", "--locale", "en"},
         cli::exitcode::kStopped,
         true},
        {"the own locale is not", sound, {"--strict", "--locale", "sv"}, cli::exitcode::kPassedOver, true},
        {"both at once", sound, {"--strict", "--force"}, cli::exitcode::kUsage, true},
        {"an unknown locale", sound, {"--locale", "de"}, cli::exitcode::kUsage, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        std::ofstream(file, std::ios::binary) << c.bytes;
        const std::int32_t before = products(machine);
        EXPECT_EQ(machine.runJob("Smedhult verktyg", c.options), c.code) << machine.err();
        EXPECT_EQ(products(machine) >= before, c.kept);
    }
}

TEST(SummaryFile, SaysHowEveryRunEnded) {
    DemoMachine machine;
    std::filesystem::remove(std::filesystem::path(machine.data()) / "Prisfiler" / "VERKTYG.TXT");
    std::ofstream(std::filesystem::path(machine.data()) / "Prisfiler" / "SKRUV.TXT", std::ios::trunc);
    const struct {
        const char *fault, *job;
        std::string data;
        int exitCode;
        const char *outcome, *message;
    } cases[] = {
        {"an unknown job leaves yesterday's file", "Finns ej", machine.data(), 1, "stopped", "Finns ej"},
        {"an unknown folder leaves yesterday's file", "(EIO)", machine.file("none"), 1, "stopped", "none"},
        {"a missing price file looks like an empty one", "Smedhult verktyg", machine.data(), 1, "stopped",
         "VERKTYG.TXT"},
        {"an empty price file looks like a good one", "Bruknäs skruv och beslag", machine.data(), 3,
         "done_with_remarks", "SKRUV.TXT"},
        {"what a run told is not in its summary", "(EIO)", machine.data(), 3, "done_with_remarks", "0001A550"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        std::ofstream(machine.file("s.json")) << "yesterday's";
        EXPECT_EQ(machine.run({"run", c.job, "--data", c.data, "--summary", machine.file("s.json")}), c.exitCode);
        const auto summary = nlohmann::json::parse(readWholeFile(machine.file("s.json")));
        EXPECT_EQ(summary["job"], c.job);
        EXPECT_EQ(summary["outcome"], c.outcome);
        EXPECT_EQ(summary["exit_code"], c.exitCode);
        EXPECT_TRUE(contains(summary["messages"].dump(), c.message)) << summary["messages"];
    }
    const auto summary = nlohmann::json::parse(readWholeFile(machine.file("s.json")));
    EXPECT_EQ(summary["uncoupled_codes"]["KB"], 6);
    EXPECT_EQ(summary["remarks"]["damaged_prices"]["count"], 2);
    EXPECT_EQ(summary["remarks"]["damaged_prices"]["examples"][1]["record"], 115);
    EXPECT_EQ(summary["failed_statements"][0]["product"], "4800103");
}

TEST(SummaryFile, IsThereWhileTheRunIsOnAndNobodyElses) {
    const TemporaryFolder folder;
    folder.write("other", "theirs");
    std::filesystem::create_symlink(folder / "other", folder / "s.json");
    const std::atomic<bool> cancel{false};
    cli::SummaryFile file(folder / "s.json", "(EIO)", cancel);
    EXPECT_EQ(nlohmann::json::parse(readWholeFile(folder / "s.json"))["outcome"], "running");
    file.finish({{"outcome", "done"}});
    EXPECT_EQ(nlohmann::json::parse(readWholeFile(folder / "s.json"))["outcome"], "done");
    EXPECT_EQ(readWholeFile(folder / "other"), "theirs") << "a link was followed";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2) << "something was left behind";
}

TEST(SummaryFile, ThatCannotBeWrittenStopsTheRunBeforeItBegins) {
    DemoMachine machine;
    const std::int32_t before = products(machine);
    for (const std::string& file : {machine.file("no/s.json"), machine.data()}) {
        SCOPED_TRACE(file);
        EXPECT_EQ(machine.runJob("Pärmnäs kontor", {"--summary", file}), cli::exitcode::kStopped);
        EXPECT_TRUE(contains(machine.err(), file)) << machine.err();
        EXPECT_EQ(products(machine), before);
    }
}

TEST(SummaryFile, HasNoMemberThatAGuideDoesNotExplain) {
    LanguageTexts texts;
    std::vector<std::string> names;
    const auto summary = cli::summaryJson(texts, "", {});
    for (const auto& member : summary.items()) names.push_back(member.key());
    for (const RemarkKind& kind : kRemarks) names.emplace_back(kind.name);
    std::vector<std::string> headings;
    for (const std::string language : {"en", "sv"}) {
        const std::string guide = readWholeFile(KOLMERA_SOURCE_DIR "/docs/guide." + language + ".md");
        for (const std::string& name : names)
            EXPECT_TRUE(contains(guide, '`' + name + '`')) << language << ": " << name;
        std::string levels;  // one guide has a section that the other lacks
        for (auto at = guide.find("\n#"); at != std::string::npos; at = guide.find("\n#", at + 1)) {
            levels += guide.substr(at, guide.find(' ', at) - at);
        }
        headings.push_back(levels);
    }
    EXPECT_EQ(headings[0], headings[1]);
}

TEST(CommandLine, RepairSavesWhatCanBeRead) {
    DemoMachine machine;
    const std::vector<std::string> repair{"repair", "FTG1.mdb", "--data", machine.data()};
    EXPECT_EQ(machine.run(repair), 0) << "a sound company repaired";
    std::fstream(machine.company(), std::ios::binary | std::ios::in | std::ios::out) << std::string(8 * 4096, '\0');
    EXPECT_EQ(machine.runJob("(EIO)"), 1);
    EXPECT_NE(machine.err().find("repair"), std::string::npos) << machine.err();
    EXPECT_EQ(machine.err().find('?'), std::string::npos) << "a question that nobody can answer: " << machine.err();
    EXPECT_EQ(machine.err().find("skada"), machine.err().rfind("skada")) << "told twice: " << machine.err();
    EXPECT_EQ(machine.run(repair), 3);
    EXPECT_NE(machine.out().find("Produkt: 62\n"), std::string::npos) << machine.out();
    EXPECT_EQ(machine.run(repair), 0);
    EXPECT_EQ(machine.run({"repair", "FTG9.mdb", "--data", machine.data()}), 1);
    EXPECT_EQ(machine.run({"repair", "SQL;X", "--data", machine.data()}), 2);
}

TEST(ProgressBar, FitsTheTerminal) {
    const struct {
        const char* fault;
        std::uint64_t position, size;
        const char* text;
        int width;
        const char* expected;
    } cases[] = {
        {"half way", 50, 100, "Lästa poster: 25", 80, "[###############...............]  50 %  Lästa poster: 25"},
        {"an empty file divides by nothing", 0, 0, "", 80, "[##############################] 100 %"},
        {"the file grew behind our back", 120, 100, "", 80, "[##############################] 100 %"},
        {"letters of two bytes are one column", 0, 1, "ååååå", 41, "[..............................]   0 %"},
        {"a narrow terminal keeps the share", 1, 4, "text", 20, " 25 %  text"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(cli::ProgressBar::line(c.position, c.size, c.text, c.width), c.expected);
    }
}

}  // namespace kolmera::test
