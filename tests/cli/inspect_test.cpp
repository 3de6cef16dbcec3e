#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/climachine.h"

namespace kolmera::test {
namespace {

TEST(Inspect, TellsWhatAFileIs) {
    const TemporaryFolder folder;
    folder.write("prices", "Firma AB\n\nArtikelnr;Ben\xE4mning;Pris\n1;R\xF6r;1.250,00\n2;\x1B[31m;98,50\n");
    CliMachine machine;
    ASSERT_EQ(machine.run({"inspect", (folder / "prices").string()}), 0) << machine.err();
    for (const char* line : {"windows-1252", ": ;\n", ": på rad 3\n", "3    Artikelnr  Benämning  Pris\n",
                             "5    2          \\x1B[31m   98,50\n"}) {
        EXPECT_NE(machine.out().find(line), std::string::npos) << line << "in\n" << machine.out();
    }
    ASSERT_EQ(machine.run({"inspect", (folder / "prices").string(), "--json"}), 0);
    const auto json = nlohmann::json::parse(machine.out());
    EXPECT_EQ(json["format"]["characters"], "windows-1252");
    EXPECT_EQ(json["rows"][2]["cells"][1], "\x1B[31m");
    EXPECT_GT(json["confidence"]["headings"], 0.8);
}

TEST(Inspect, EndsWithAMessage) {
    const TemporaryFolder folder;
    folder.write("prices", "%PDF-1.4");
    CliMachine machine;
    EXPECT_EQ(machine.run({"inspect", (folder / "prices").string()}), 1);
    EXPECT_NE(machine.err().find("PDF"), std::string::npos) << machine.err();
    EXPECT_EQ(machine.run({"inspect", (folder / "none").string()}), 1);
    folder.write("rows", "a;b\n1;2\n");
    machine.cancel = true;
    EXPECT_EQ(machine.run({"inspect", (folder / "rows").string()}), 130);
}

}  // namespace
}  // namespace kolmera::test
