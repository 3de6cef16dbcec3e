#include "discounts/letterexchange.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <tuple>

#include "platform/encodings.h"
#include "platform/spreadsheet/workbook.h"
#include "support/errorof.h"
#include "support/temporaryfolder.h"
#include "support/testcompany.h"

namespace kolmera {
namespace {

using test::TemporaryFolder;
using test::TestCompany;
using testing::ElementsAre;

constexpr const char* kTable = "LevrabattBrev";

class LetterExchangeTest : public testing::Test {
  protected:
    LetterExchange exchange(const char* supplier = "7") { return {company.sql, supplier, company.passedOver}; }
    void group(const char* code, const Value& first = Null(), const char* supplier = "7") {
        company.add(kTable, {{"Leverantör", supplier}, {"Rabattgrupp", code}, {"1Rabatt", first}});
    }
    LetterRead read(std::string_view text, const char* file = "letter.txt") {
        folder.write(file, fromUtf8(text, CodePage::Windows1252));
        return exchange().replaceFrom(folder / file);
    }
    std::string rows(const char* supplier = "7", const char* order = "ID") {
        return company.select(
            "SELECT Rabattgrupp, 1Rabatt, 2Rabatt, 3Rabatt, 4Rabatt, 5Rabatt FROM LevrabattBrev "
            "WHERE Leverantör = '" +
            std::string(supplier) + "' ORDER BY " + order);
    }

    TemporaryFolder folder;
    TestCompany company;
};

TEST_F(LetterExchangeTest, ExtensionTellsASpreadsheet) {
    const struct {
        const char* file;
        bool expected;
    } cases[] = {{"a.xls", true},  {"a.XlSx", true},  {"a.xlt", true},
                 {"a.txt", false}, {"xl.txt", false}, {"XL", false}};
    for (const auto& c : cases) EXPECT_EQ(isSpreadsheet(c.file), c.expected) << c.file;
}

TEST_F(LetterExchangeTest, ReadsLinesOfText) {
    const struct {
        const char *fault, *line, *row;
    } cases[] = {
        {"missing pieces are 0", "A12\t25", "A12 25    \n"},
        {"an empty piece ends the line", "A\t\t5", "A  5   \n"},
        {"more pieces than columns", "B\t1\t2\t3\t4\t5\t6", "B 1 2 3 4 5\n"},
        {"decimals, blanks and signs", "C\t12,5\t -3 ", "C 12.5 -3   \n"},
        {"the code page", "Rör\t1", "Rör 1    \n"},
        {"bytes counted for characters", "ÅÄÖåäöéüß€\t1", "ÅÄÖåäöéüß€ 1    \n"},
        {"a line end is missing", "X\t1\rY\t2", "X 1    \nY 2    \n"},
        {"empty lines are groups", "\r\n\r\nX\t1\r\n\t\t\r\n", "X 1    \n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const LetterRead report = read(c.line);
        EXPECT_EQ(rows(), c.row);
        EXPECT_EQ(report.passedOver.count + report.notNumbers.count, 0);
    }
}

TEST_F(LetterExchangeTest, PassesBadLinesOverAndKeepsTheOthers) {
    const LetterRead report = read(
        "A1\t1\r\nA1\t2\r\nTOO LONG CODE\t2\r\nB2\t12.5\tx\t3\r\nC3\t1\nD4\t2\r\nE5\t4\r\ne5\t9\r\n"
        "\t25\t5\r\n \t7\r\nF6\t-150\r\n");
    EXPECT_EQ(rows(), "A1 1    \nB2   3  \nE5 4    \nF6 -150    \n");
    EXPECT_EQ(report.lines, 10);
    EXPECT_EQ(report.added, 4);
    EXPECT_EQ(report.withoutCode.text(), "2 (25 5, 7)") << "a group for all price lines without a code";
    EXPECT_EQ(report.beyond.text(), "1 (F6)");
    EXPECT_EQ(report.passedOver.text(), "4 (A1, TOO LONG CODE, C3, e5)");
    EXPECT_EQ(report.notNumbers.text(), "2 (B2, B2)");
    EXPECT_EQ(company.passedOver.notes.size(), 8U);
}

TEST_F(LetterExchangeTest, ReplacesOneSuppliersLetter) {
    group("OTHER", 1.0, "77");
    std::string text;
    for (int i = 0; i < 120; ++i) {
        group(fmt::format("OLD{}", i).c_str(), 1.0);
        text += fmt::format("N{}\t5\r\n", i);
    }
    const LetterRead report = read(text);
    EXPECT_EQ(report.deleted, 120);
    EXPECT_EQ(report.added, 120);
    EXPECT_FALSE(company.sql.FtgDB->inTransaction());
    EXPECT_EQ(company.select("SELECT count(*) FROM LevrabattBrev WHERE Rabattgrupp LIKE 'N%'"), "120\n");
    EXPECT_EQ(rows("77"), "OTHER 1    \n") << "another supplier's letter";
    EXPECT_EQ(company.select("SELECT count(*) FROM LevrabattBrev"), "121\n");
}

TEST_F(LetterExchangeTest, CancelPutsTheOldLetterBack) {
    group("A1", 12.3456789012345);
    group("B2");
    group("");
    const std::string before = rows("7", "Rabattgrupp");
    std::string text;
    for (int i = 0; i < 120; ++i) text += fmt::format("N{}\t5\r\n", i);
    folder.write("letter.txt", text);
    LetterExchange letter = exchange();
    int asked = 0;
    letter.cancelled = [&] { return ++asked == 2; };
    const LetterRead report = letter.replaceFrom(folder / "letter.txt");
    EXPECT_TRUE(report.cancelled && report.restored);
    EXPECT_EQ(report.lines, 100) << "asked elsewhere than behind a transaction";
    EXPECT_EQ(rows("7", "Rabattgrupp"), before);
}

TEST_F(LetterExchangeTest, SeesWhatIsNoLetterBeforeAnythingIsDeleted) {
    const struct {
        const char* fault;
        std::string content;
        std::int64_t usable;
    } cases[] = {
        {"an empty file", "", 0},
        {"empty lines", "\r\n\t\r\n", 0},
        {"LF ends: one line", "A\t1\nB\t2\n", 0},
        {"codes without tabs", "a long line of text\r\n", 0},
        {"groups without codes", "\t5\r\n \t5\r\n", 0},
        {"no text at all", std::string("AB\r\n\0\x01\r\nCD\r\n", 12), 0},
        {"good lines among bad ones", "A\t1\r\na long line of text\r\nB\tx\r\n", 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        folder.write("letter.txt", c.content);
        EXPECT_EQ(exchange().usableLines(folder / "letter.txt"), c.usable);
    }
    folder.write("letter.xlsx", "A\t1\r\n");  // a text named as a spreadsheet
    for (const auto& file :
         {folder / "letter.xlsx", folder / "none.txt", folder.path(), std::filesystem::path("/dev/null")})
        EXPECT_NE(test::errorOf([&] { std::ignore = exchange().usableLines(file); }), 0) << file;
    EXPECT_EQ(rows(), "") << "checking has read something in";
}

TEST_F(LetterExchangeTest, WritesWhatItReadsBack) {
    for (const char* code : {"Å1", "12", "1E5", "=A1"}) group(code, 12.25);
    group("NONE");
    company.add(kTable, {{"Leverantör", "7"}, {"Rabattgrupp", "ALL"}, {"1Rabatt", -5}, {"5Rabatt", 33.125}});
    const std::string before = rows("7", "Rabattgrupp");
    for (const char* file : {"letter.txt", "letter.xlsx"}) {
        SCOPED_TRACE(file);
        const LetterWritten report = exchange().writeTo(folder / file);
        EXPECT_EQ(report.groups, 6);
        EXPECT_EQ(report.questionMarks.count, 0);
        EXPECT_EQ(exchange().replaceFrom(folder / file).added, 6);
        EXPECT_EQ(rows("7", "Rabattgrupp"), before);
    }
    EXPECT_THAT(folder.read("letter.txt"), testing::HasSubstr("ALL\t-5\t\t\t\t33,125\r\n"));
    EXPECT_THAT(folder.read("letter.txt"), testing::HasSubstr("\xC5"
                                                              "1\t12,25\t\t\t\t\r\n"));
}

TEST_F(LetterExchangeTest, MarksCodesThatATextFileCannotHold) {
    group("Ω1", 1.0);
    group("A\tB", 2.0);
    const LetterWritten report = exchange().writeTo(folder / "letter.txt");
    EXPECT_EQ(folder.read("letter.txt"), "A?B\t2\t\t\t\t\r\n?1\t1\t\t\t\t\r\n");
    EXPECT_EQ(report.questionMarks.text(), "2 (A?B, Ω1)");
}

TEST_F(LetterExchangeTest, AddsASheetAndRefusesWhatItCannotWrite) {
    group("A1", 10.0);
    exchange().writeTo(folder / "letter.xlsx");
    exchange().writeTo(folder / "letter.xlsx");
    std::vector<std::string> first;
    readFirstSheet(folder / "letter.xlsx", 6, [&](std::span<const Value> row) {
        EXPECT_EQ(row.size(), 2U);
        first.push_back(std::get<std::string>(row[0]));
    });
    EXPECT_THAT(first, ElementsAre("A1"));
    group("B2", 10.0);
    EXPECT_EQ(test::errorOf([&] { exchange().writeTo(folder / "letter.xls"); }), errors::kUnwritableFormat);
    EXPECT_FALSE(std::filesystem::exists(folder / "letter.xls"));
    EXPECT_EQ(test::errorOf([&] { exchange().writeTo("/dev/full"); }), errors::kDiskFull);
}

TEST(NotedGroups, KeepsTheFirstCodes) {
    NotedGroups noted;
    for (int i = 1; i <= 12; ++i) noted.note(fmt::format("K{}", i));
    EXPECT_EQ(noted.text(), "12 (K1, K2, K3, K4, K5, K6, K7, K8, K9, K10, ...)");
    NotedGroups strange;
    strange.note(fmt::format("A\r\nB{:x<100}", ""));
    EXPECT_EQ(strange.text(), "1 (A??Bxxxxxxxxxxxxxxxx)");
}

}  // namespace
}  // namespace kolmera
