#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "platform/spreadsheet/workbook.h"
#include "spreadsheet/workbookparts.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

namespace {

namespace fs = std::filesystem;

/// Lets LibreOffice save a workbook in another format beside it. It starts with settings of its own.
void convert(const TemporaryFolder& folder, std::string_view file, std::string_view format) {
    const std::string path = folder.path().string();
    const std::string command = fmt::format(
        "timeout 120 soffice '-env:UserInstallation=file://{0}/settings' --headless --convert-to '{1}' --outdir '{0}' "
        "'{0}/{2}' </dev/null >/dev/null 2>&1",
        path, format, file);
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

void addLetter(const fs::path& file) {
    const SheetColumn columns[] = {{"Rabattgrupp", FieldType::Text, 10}, {"1Rabatt", FieldType::Double, 0}};
    const std::vector<Value> rows[] = {{std::string("0012"), 12.5}, {std::string("å;\"ä\""), Null()}, {Null(), -0.1}};
    std::size_t at = 0;
    addSheet(file, "Rabattbrev", columns, [&]() -> std::optional<std::vector<Value>> {
        if (at == std::size(rows)) return std::nullopt;
        return rows[at++];
    });
}

constexpr const char* kLetterAsCsv = "Rabattgrupp,1Rabatt\n0012,12.5\n\"å;\"\"ä\"\"\",\n,-0.1\n";

TEST(LibreOffice, OpensANewWorkbook) {
    const TemporaryFolder folder;
    addLetter(folder / "new.xlsx");
    convert(folder, "new.xlsx", "csv:Text - txt - csv (StarCalc):44,34,76");
    EXPECT_EQ(folder.read("new.csv"), kLetterAsCsv);
}

TEST(LibreOffice, OpensAWorkbookThatGotASheet) {
    const TemporaryFolder folder;
    fs::copy_file(savedWorkbook("letter.xlsx"), folder / "letter.xlsx");
    addLetter(folder / "letter.xlsx");
    // The last parameter asks for every sheet, each in a file named after it.
    convert(folder, "letter.xlsx", "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,false,false,false,-1");
    EXPECT_EQ(folder.read("letter-Rabattbrev2.csv"), kLetterAsCsv);
    EXPECT_EQ(folder.read("letter-Annat.csv"), "not this sheet\n");
    EXPECT_NE(folder.read("letter-Brev.csv").find("A12,20,#N/A,"), std::string::npos) << folder.read("letter-Brev.csv");
}

TEST(LibreOffice, SavesWhatWeReadBack) {
    const TemporaryFolder folder;
    addLetter(folder / "new.xlsx");
    const std::string rows = rowsOf(folder / "new.xlsx");
    for (const char* format : {"xls", "xlsx:Calc MS Excel 2007 XML"}) {
        convert(folder, "new.xlsx", format);
        EXPECT_EQ(rowsOf(folder / (std::string_view(format) == "xls" ? "new.xls" : "new.xlsx")), rows) << format;
    }
}

}  // namespace

}  // namespace kolmera::test
