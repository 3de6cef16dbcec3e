#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/climachine.h"
#include "definitions/couplingfile.h"
#include "definitions/joboptions.h"
#include "definitions/maskfile.h"
#include "platform/lettercase.h"
#include "platform/tsv.h"

namespace kolmera::test {
namespace {

constexpr const char* kJob = "Ekhult semikolonlista";

class SourceMachine : public DemoMachine {
  public:
    int source(std::vector<std::string> options) {
        options.insert(options.begin(), {"source", kJob, "--data", data()});
        return run(options);
    }
    int convert(std::vector<std::string> options) {
        options.insert(options.begin(), {"convert", kJob, "--data", data(), "--output", "-"});
        return run(options);
    }
    std::string write(const char* name, std::string_view bytes) {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }
};

TEST(SourceOfTheTerminal, IsShownDetectedChangedAndRemoved) {
    SourceMachine machine;
    EXPECT_EQ(machine.source({}), 0) << machine.err();
    const std::string stored = machine.out();
    EXPECT_NE(stored.find("\"heading\": \"Nettopris\""), std::string::npos) << stored;
    for (const char* wrong : {"format/kind=cvs", "format", "formt/kind=xlsx", "columns/0/number=-1",
                              "columns/99999999=1", "columns/x/number=1", "format/skip=\"2\""})
        EXPECT_EQ(machine.source({"--set", wrong}), 2) << wrong;
    EXPECT_EQ(machine.source({}), 0);
    EXPECT_EQ(machine.out(), stored) << "a refused change is kept";
    EXPECT_EQ(machine.source({"--set", "columns/0/value/zeros=filled", "columns/0/value/width=9", "leave-out="}), 0);
    const SourceSettings settings = *JobOptionsFile(machine.data()).source(kJob);
    EXPECT_EQ(settings.columns[0].rule.width, 9);
    EXPECT_TRUE(settings.leaveOut.empty());
    EXPECT_EQ(machine.source({"--clear"}), 0);
    EXPECT_FALSE(JobOptionsFile(machine.data()).source(kJob));
    EXPECT_EQ(machine.convert({}), 1);
    EXPECT_EQ(machine.source({"--set", "formt=1"}), 2);
    EXPECT_EQ(machine.source({"--set", "format/kind=delimited", "format/delimiter=\"\"", "format/characters=utf-8"}), 0)
        << "what is so without being said cannot be said";
    EXPECT_EQ(machine.source({"--clear"}), 0);

    const std::string file =
        machine.write("ny.csv", "Nummer|Text|Pris|Enhet\n1|Skruv|1 250,50 kr|st\n2|Bult|12,00|st\n");
    EXPECT_EQ(machine.source({"--detect", "--file", file}), 0) << machine.err();
    EXPECT_EQ(machine.convert({"--file", file}), 0) << machine.err();
    EXPECT_EQ(machine.out(), "1\tSkruv\t1250.50\tst\r\n2\tBult\t12.00\tst\r\n");
}

TEST(SourceOfTheTerminal, RejectsRunWhenTheyAreCorrected) {
    std::string joined;
    for (int i = 10; i < 30; ++i)
        joined += fmt::format("A{:<6}{:12}{:>8} {:3}", i, i % 3 ? "Skruv" : "Låda lång", i == 17 ? "x" : "5,50", "st");
    const struct {
        const char* fault;
        std::string file, rejects, right, wrong = ";x;";
    } cases[] = {
        {"records that nothing parts", joined, "A17    Skruv              x st ", "  6,50 ", "     x "},
        {"what stands above the table, a row of two lines or the line ends lost",
         "Prislista 2026;;;\r\n;;;\r\nNummer;Text;Pris;Enhet\r\nA1;Skruv;5,50;st\r\nA2;\"Bult,\nl\xC3\xA5ng\";x;st\r\n"
         "A3;Mutter;7,50;st\r\n",
         "Prislista 2026;;;\r\n;;;\r\nNummer;Text;Pris;Enhet\r\nA2;\"Bult,\nl\xC3\xA5ng\";x;st\r\n", ";6,50;"},
        {"XML written as what its job cannot read",
         "<Lista><Vara><Nummer>B1</Nummer><Text>Skruv; lös</Text><Pris>5.50</Pris><Enhet>st</Enhet></Vara>"
         "<Vara><Nummer>B2</Nummer><Text>Bult; lös</Text><Pris>x</Pris><Enhet>st</Enhet></Vara></Lista>",
         "\xEF\xBB\xBFNummer;Text;Pris;Enhet\r\nB2;\"Bult; lös\";x;st\r\n", ";6.50;"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        SourceMachine machine;
        const std::string file = machine.write("ny", c.file);
        const std::string rejects = machine.file("r");
        ASSERT_EQ(machine.source({"--clear"}), 0);
        ASSERT_EQ(machine.source({"--detect", "--file", file}), 0) << machine.err();
        EXPECT_EQ(machine.runJob(kJob, {"--file", file, "--rejects", rejects}), 3) << machine.err();
        EXPECT_EQ(readWholeFile(rejects), c.rejects);
        machine.write("r", replaceAll(c.rejects, c.wrong, c.right));
        EXPECT_EQ(machine.runJob(kJob, {"--file", rejects}), 0) << machine.err();
        EXPECT_NE(machine.out().find(": 1\n"), std::string::npos) << machine.out();
    }
}

TEST(SourceOfTheTerminal, ADetectedTradeFormatKeepsItsLines) {
    SourceMachine machine;
    for (const auto& [job, file] : {std::pair("(EIO)", "EIO.TXT"), std::pair("(RSK)", "RSK.TXT")}) {
        SCOPED_TRACE(job);
        ASSERT_EQ(machine.run({"source", job, "--data", machine.data(), "--detect"}), 0) << machine.err();
        ASSERT_EQ(machine.run({"convert", job, "--data", machine.data(), "--output", machine.file("lines")}), 0)
            << machine.err();
        std::string lines = readWholeFile(machine.data() + "/Prisfiler/" + file);
        if (lines.ends_with('\x1A')) lines.pop_back();
        EXPECT_EQ(readWholeFile(machine.file("lines")), lines);
    }
}

TEST(SourceOfTheTerminal, AnotherFileIsReadForOneRun) {
    SourceMachine machine;
    const std::string file = machine.write(
        "ny.csv", "EAN;Nettopris;Artikelnr;Ny;Benämning;Enhet\n;5,50;EK-1000;;Lampa;st\n;x;EK-1007;;Lampa 2;st\n");
    EXPECT_EQ(machine.convert({"--file", file}), 3);
    EXPECT_EQ(machine.out(), "EK-1000\tLampa\t5.50\tst\r\nEK-1007\tLampa 2\tx\tst\r\n");
    EXPECT_NE(machine.err().find("post 3, EK-1007: \"x\" (Nettopris)"), std::string::npos) << machine.err();
    EXPECT_EQ(machine.err().find("\\x0D"), std::string::npos) << machine.err();
    EXPECT_EQ(
        machine.runJob(kJob, {"--file", file, "--summary", machine.file("s.json"), "--rejects", machine.file("r")}), 3);
    EXPECT_EQ(readWholeFile(machine.file("r")), "EAN;Nettopris;Artikelnr;Ny;Benämning;Enhet\n;x;EK-1007;;Lampa 2;st\n");
    const auto summary = nlohmann::json::parse(readWholeFile(machine.file("s.json")));
    EXPECT_EQ(summary["price_file"], file);
    EXPECT_EQ(summary["new"], 2);

    const int kept = dup(STDIN_FILENO);
    const int input = open(file.c_str(), O_RDONLY);
    dup2(input, STDIN_FILENO);
    EXPECT_EQ(machine.runJob(kJob, {"--file", "-"}), 3) << machine.err();
    dup2(kept, STDIN_FILENO);
    close(input);
    close(kept);

    EXPECT_EQ(machine.convert({"--file", machine.write("x.csv", "Artikelnr;Pris\n1;2\n")}), 1);
    EXPECT_EQ(machine.err().find("\\x0D"), std::string::npos) << machine.err();
    EXPECT_EQ(machine.runJob(kJob, {"--file", machine.file("x.csv")}), 1);
    EXPECT_NE(machine.err().find("\"Benämning\", \"Nettopris\", \"Enhet\""), std::string::npos) << machine.err();
}

TEST(TemplateOfTheTerminal, GoesToAnotherFolderAndAsksBeforeItWritesOver) {
    SourceMachine machine;
    const std::string file = machine.file("t.json");
    const auto imported = [&](const std::string& data, std::vector<std::string> options) {
        options.insert(options.begin(), {"template", "import", file, "--data", data});
        return machine.run(options);
    };
    const std::string other = machine.file("other");
    ASSERT_EQ(machine.run({"new", other}), 0);
    ASSERT_EQ(machine.run({"template", "export", kJob, file, "--data", machine.data()}), 0) << machine.err();
    EXPECT_EQ(imported(machine.data(), {}), 1) << "a job is written over unasked";
    EXPECT_EQ(imported(machine.data(), {"--as", "Kopia"}), 0) << machine.err();
    EXPECT_EQ(JobOptionsFile(machine.data()).source("Kopia"), JobOptionsFile(machine.data()).source(kJob));
    EXPECT_EQ(machine.runJob("Kopia"), 3) << machine.err();

    ASSERT_EQ(machine.run({"template", "export", "(EIO)", file, "--data", machine.data()}), 0);
    ASSERT_EQ(machine.run({"limits", "(EIO)", "--data", other, "--set", "zero-prices=0"}), 0);
    EXPECT_EQ(imported(other, {"--company", "FTG1.mdb"}), 1) << "limits of a trade format are written over unasked";
    EXPECT_EQ(JobOptionsFile(other).limits("(EIO)").zeroPrices, 0);
    ASSERT_EQ(machine.run({"limits", "(EIO)", "--data", other, "--clear"}), 0);
    EXPECT_EQ(imported(other, {"--company", "FTG1.mdb"}), 1) << "couplings to suppliers who are not there";
    ASSERT_EQ(machine.run({"template", "export", "(RSK)", file, "--data", other}), 0);
    EXPECT_EQ(imported(other, {"--company", "FTG1.mdb"}), 0) << machine.err();

    ASSERT_EQ(machine.run({"template", "export", "Bruknäs höstlista", file, "--data", machine.data()}), 0);
    EXPECT_EQ(imported(other, {"--company", "FTG1.mdb"}), 1) << "a supplier who is not there";
    EXPECT_EQ(imported(machine.data(), {"--replace"}), 0) << machine.err();
    EXPECT_TRUE(JobOptionsFile(machine.data()).limits("Bruknäs höstlista").any());
}

TEST(TemplateOfTheTerminal, ComparesTheSuppliersOfItsCouplings) {
    SourceMachine machine;
    const std::string file = machine.file("t.json");
    ASSERT_EQ(machine.run({"template", "export", "(EIO)", file, "--data", machine.data()}), 0);
    auto made = nlohmann::ordered_json::parse(readWholeFile(file));
    ASSERT_GT(made["supplierNames"].size(), 1U);
    EXPECT_FALSE(made["supplierNames"].contains("9999")) << "a supplier who is not there";
    made["couplings"].erase(2);
    made["couplings"][0]["code"] = "NY";
    const std::string there = made["couplings"][1]["supplier"];
    made["supplierNames"][there] = "En annan";
    machine.write("t.json", made.dump());
    const auto imported = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"template", "import", file, "--data", machine.data(), "--replace"});
        return machine.run(options);
    };
    EXPECT_EQ(imported({}), 1);
    EXPECT_NE(machine.err().find(there + " En annan"), std::string::npos) << machine.err();
    EXPECT_EQ(imported({"--supplier", "4711=2010"}), 1) << "a supplier whom the template does not have";
    EXPECT_EQ(imported({"--supplier", there + "=4711"}), 1) << "one whom the company does not have";
    EXPECT_EQ(imported({"--supplier", there + "=2010"}), 0) << machine.err();
    std::string couplings;
    for (const Coupling& each : CouplingFile(machine.data()).ofJob("(EIO)"))
        couplings += each.code + each.supplier + " ";
    EXPECT_EQ(couplings, "NY1010 LY2010 ") << "couplings of the replaced job stay";
}

TEST(TemplateOfTheTerminal, HostileOnesAreRefused) {
    SourceMachine machine;
    const std::string file = machine.file("t.json");
    ASSERT_EQ(machine.run({"template", "export", kJob, file, "--data", machine.data()}), 0);
    const auto sound = nlohmann::ordered_json::parse(readWholeFile(file));
    const struct {
        const char* fault;
        const char* member;
        nlohmann::ordered_json value;
    } cases[] = {{"a name too long", "/job/name", std::string(101, 'x')},
                 {"a line end in a name", "/job/name", "a\r\nb"},
                 {"a number that does not fit", "/mask/relations/0/Mål", 1000},
                 {"a negative one", "/mask/relations/0/Längd", -1},
                 {"an unknown structure", "/mask/FilTyp", "X"},
                 {"another version", "/kolmeraTemplate", 2},
                 {"a source that is none", "/source/format/kind", "cvs"},
                 {"a text for a number", "/mask/AntalKolumner", "4"},
                 {"relations without end", "/mask/relations",
                  std::vector<nlohmann::ordered_json>(101, sound["mask"]["relations"][0])}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        auto changed = sound;
        changed[nlohmann::ordered_json::json_pointer(c.member)] = c.value;
        machine.write("t.json", changed.dump());
        EXPECT_EQ(
            machine.run({"template", "import", file, "--data", machine.data(), "--as", c.member[1] == 'j' ? "" : "Ny"}),
            1);
    }
    auto unnamed = sound;
    unnamed["job"]["name"] = "\u65E5";
    unnamed["job"]["mask"] = unnamed["mask"]["Namn"] = "Ny mask";
    machine.write("t.json", unnamed.dump());
    EXPECT_EQ(machine.run({"template", "import", file, "--data", machine.data()}), 1);
    EXPECT_FALSE(MaskFile(machine.data()).find("Ny mask")) << "half of a template is written";
    machine.write("t.json", std::string(100000, '['));
    EXPECT_EQ(machine.run({"template", "import", file, "--data", machine.data()}), 1);
    machine.write("t.json", std::string(5 << 20, ' '));
    EXPECT_EQ(machine.run({"template", "import", file, "--data", machine.data()}), 1);
}

}  // namespace
}  // namespace kolmera::test
