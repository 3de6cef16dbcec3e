#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cli/climachine.h"
#include "platform/tsv.h"
#include "startup/inifile.h"
#include "startup/newcompany.h"

namespace kolmera::test {
namespace {

class DiscountsCommand : public testing::Test {
  protected:
    int discounts(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "discounts");
        for (const std::string& each : {std::string("--data"), machine.data()}) arguments.push_back(each);
        return machine.run(arguments);
    }
    std::string write(const char* name, std::string_view content) {
        std::string file = machine.file(name);
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }
    /// The supplier's letter as a text file.
    std::string letter(const char* supplier) {
        const std::string file = machine.file("letter.txt");
        EXPECT_EQ(discounts({"export", supplier, file}), 0) << machine.err();
        return readWholeFile(file);
    }
    bool told(std::string_view part) { return machine.err().find(part) != std::string::npos; }

    DemoMachine machine;
};

TEST_F(DiscountsCommand, TakesALetterFromSupplierToSupplier) {
    const std::string before = letter("1010");
    EXPECT_EQ(before.substr(0, before.find('\n')), "A50\t28\t5\t3\t2\t1\r");
    const std::string sheet = machine.file("letter.xlsx");
    ASSERT_EQ(discounts({"export", "1010", sheet, "--company", "ftg1.mdb"}), 0) << machine.err();
    ASSERT_EQ(discounts({"import", "5010", sheet, "--company", "Hedlunds Järn, El & Rör AB"}), 0) << machine.err();
    EXPECT_EQ(machine.out(),
              "Borttagna rabattgrupper: 2\nLästa rader: 12\nNya rabattgrupper: 12\nÖverhoppade rader: 0\n"
              "Rabattbrevet är inläst.\n");
    EXPECT_EQ(letter("5010"), before);
}

TEST_F(DiscountsCommand, CountsWhatWasPassedOver) {
    EXPECT_EQ(discounts({"import", "1010", write("new.txt", "A\t1\r\nA\t2\r\nB\tx\r\n")}), cli::exitcode::kPassedOver);
    EXPECT_TRUE(told("1 (A)") && told("1 (B)")) << machine.err();
}

TEST_F(DiscountsCommand, StopsWithAMessageAndKeepsTheLetter) {
    const std::string before = letter("1010");
    const std::string good = write("good.txt", "A\t1\r\n");
    const struct {
        const char* fault;
        std::vector<std::string> arguments;
        const char* message;
    } cases[] = {
        {"no such supplier", {"import", "999", good}, "999"},
        {"no such company", {"import", "1010", good, "--company", "FTG7.mdb"}, "FTG7.mdb"},
        {"no such file", {"import", "1010", machine.file("none.txt")}, "none.txt"},
        {"a supplier without a letter", {"export", "4020", machine.file("x.txt")}, "4020"},
        {"a format that cannot be written", {"export", "1010", machine.file("x.xls")}, "xlsx"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(discounts(c.arguments), cli::exitcode::kStopped);
        EXPECT_TRUE(told(c.message)) << machine.err();
    }
    EXPECT_FALSE(std::filesystem::exists(machine.file("x.txt")));
    EXPECT_EQ(letter("1010"), before);
    EXPECT_EQ(machine.run({"discounts", "--data", machine.data()}), cli::exitcode::kUsage);
}

TEST_F(DiscountsCommand, CancelKeepsTheOldLetter) {
    const std::string before = letter("1010");
    std::string lines;
    for (int i = 0; i < 60; ++i) lines.append("N").append(std::to_string(i)).append("\t1\r\n");
    machine.cancel = true;
    EXPECT_EQ(discounts({"import", "1010", write("new.txt", lines)}), cli::exitcode::kCancelled);
    machine.cancel = false;
    EXPECT_EQ(letter("1010"), before);
}

TEST_F(DiscountsCommand, AsksForACompanyWhenThereAreSeveral) {
    createCompany(machine.data(), "FTG2.mdb", "Andra");
    const std::string file = machine.file("x.txt");
    EXPECT_EQ(discounts({"export", "1010", file}), cli::exitcode::kDone) << "the suite's current company";
    const IniLine none{};
    writeIniValues(std::filesystem::path(machine.data()) / "DORVIK.INI", 2, {&none, 1});
    EXPECT_EQ(discounts({"export", "1010", file}), cli::exitcode::kStopped);
    EXPECT_TRUE(told("FTG1.MDB, FTG2.MDB")) << machine.err();
    EXPECT_EQ(discounts({"export", "1010", file, "--company", "andra"}), cli::exitcode::kStopped);
    EXPECT_TRUE(told("1010")) << "the second company has no supplier";
}

}  // namespace
}  // namespace kolmera::test
