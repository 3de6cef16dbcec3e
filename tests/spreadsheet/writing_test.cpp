#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <limits>
#include <stdexcept>

#include "platform/lettercase.h"
#include "platform/restrictedpath.h"
#include "platform/spreadsheet/workbook.h"
#include "spreadsheet/workbookparts.h"
#include "support/errorof.h"
#include "support/filesizelimit.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

namespace {

namespace fs = std::filesystem;

using Rows = std::vector<std::vector<Value>>;

const SheetColumn kColumns[] = {{"Rabattgrupp", FieldType::Text, 10}, {"1Rabatt", FieldType::Double, 0}};

void add(const fs::path& file, const Rows& rows, std::span<const SheetColumn> columns = kColumns,
         const std::string& prefix = "Rabattbrev") {
    std::size_t at = 0;
    addSheet(file, prefix, columns, [&]() -> std::optional<std::vector<Value>> {
        if (at == rows.size()) return std::nullopt;
        return rows[at++];
    });
}

int errorOfAdding(const fs::path& file, const Rows& rows = {{std::string("A"), 1.0}}) {
    return errorOf([&] { add(file, rows); });
}

std::string outputOf(const std::string& command) {
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    for (int c = 0; pipe && (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

/// What a second program makes of a workbook.
std::string openpyxlCells(const fs::path& file) {
    return outputOf("PATH=/usr/bin:/bin PYTHONIOENCODING=utf-8 python3 '" KOLMERA_SOURCE_DIR
                    "/tests/spreadsheet/print_workbook.py' '" +
                    file.string() + "'");
}

/// The names of a workbook's sheets, joined by blanks.
std::string sheetNames(const fs::path& file) {
    std::string names;
    const std::string workbook = readZip(file)["xl/workbook.xml"];
    for (std::size_t at = 0; (at = workbook.find("<sheet name=\"", at)) != std::string::npos;) {
        at += 13;
        names += workbook.substr(at, workbook.find('"', at) - at) + " ";
    }
    return names;
}

TEST(WritingASheet, ReadsBackUnchanged) {
    const TemporaryFolder folder;
    const SheetColumn columns[] = {
        {"Kod", FieldType::Text, 10}, {"Rabatt", FieldType::Double, 0}, {"A", FieldType::Single, 0}};
    const double entered = 10.1F;  // 17 digits
    const std::string odd = " R&D <å> \"€\"\ttab\nrad\rCR\x01_x000D_ 😀 ";
    add(folder / "new.xlsx",
        {{std::string("0012"), entered, static_cast<double>(0.1F)},
         {odd, -0.1, true},
         {Null(), Null(), 1e300},
         {std::string(), std::numeric_limits<double>::infinity(), Null()},
         {std::string("=1+1"), std::int64_t{7}, *Date::fromIso("2024-02-29"), std::string("beyond the columns")},
         {std::string("a\xFF z"), std::numeric_limits<double>::denorm_min()}},
        columns);
    EXPECT_EQ(rowsOf(folder / "new.xlsx"), "'0012' 10.100000381469727 0.1\n'" + odd +
                                               "' -0.1 TRUE\n- - 1e+300\n'=1+1' 7 '2024-02-29'\n'a\uFFFD z' 5e-324\n");
}

TEST(WritingASheet, MakesAWorkbookThatASecondProgramOpens) {
    const TemporaryFolder folder;
    add(folder / "new.xlsx", {{std::string("0012"), 12.5}, {Null(), -0.1}, {std::string(" å\n"), Null()}});
    add(folder / "new.xlsx", {{std::string("B"), 1.0}});
    EXPECT_EQ(openpyxlCells(folder / "new.xlsx"),
              "[Rabattbrev1 visible]\nA1 str 'Rabattgrupp' \nB1 str '1Rabatt' \nA2 str '0012' \nB2 float 12.5 \n"
              "B3 float -0.1 \nA4 str ' å\\n' \n"
              "[Rabattbrev2 visible]\nA1 str 'Rabattgrupp' \nB1 str '1Rabatt' \nA2 str 'B' \nB2 int 1 \n");
}

TEST(WritingASheet, LeavesTheRestOfAWorkbookAlone) {
    const TemporaryFolder folder;
    const fs::path file = folder / "letter.xlsx";
    fs::copy_file(savedWorkbook("letter.xlsx"), file);
    Parts before = readZip(file);
    const std::string cells = openpyxlCells(file);
    ASSERT_NE(cells.find("A6 str '=\"A\"&\"12\"'"), std::string::npos);
    add(file, {{std::string("A"), 1.0}});

    EXPECT_EQ(openpyxlCells(file),
              cells + "[Rabattbrev2 visible]\nA1 str 'Rabattgrupp' \nB1 str '1Rabatt' \nA2 str 'A' \nB2 int 1 \n");
    Parts after = readZip(file);
    EXPECT_EQ(after.erase("xl/worksheets/sheet3.xml"), 1u);
    for (const char* changed : {"[Content_Types].xml", "xl/workbook.xml", "xl/_rels/workbook.xml.rels"}) {
        before.erase(changed);
        after.erase(changed);
    }
    EXPECT_EQ(after, before);
}

TEST(WritingASheet, FitsTheFrameItFinds) {
    const char* const kWorkbook = "xl/workbook.xml";
    const char* const kPrefixed = R"(<x:workbook xmlns:x="http://schemas.openxmlformats.org/spreadsheetml/2006/main" )"
                                  R"(xmlns:q="http://schemas.openxmlformats.org/officeDocument/2006/relationships">)"
                                  R"(<x:sheets><x:sheet name="Blad" sheetId="7" q:id="s1"/></x:sheets></x:workbook>)";
    const struct {
        const char *fault, *part;
        const char* from;  ///< all of the part when empty
        const char* to;
    } cases[] = {
        {"the new sheet outside a prefixed namespace", kWorkbook, "", kPrefixed},
        {"another part written over", "xl/worksheets/Sheet2.xml", "", "<other/>"},
        {"a relation named twice", "xl/_rels/workbook.xml.rels", "\"s3\"", "\"rId5\""},
        {"hidden like its neighbour", kWorkbook, "sheetId", "state=\"hidden\" sheetId"},
    };
    const TemporaryFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        Parts parts = workbookOf("<row/>");
        std::string& part = parts[c.part];
        part = *c.from ? replaceAll(part, c.from, c.to) : c.to;
        parts.erase("xl/styles.xml");
        writeZip(folder / "book.xlsx", parts);
        add(folder / "book.xlsx", {{std::string("A"), 1.0}});
        const std::string cells = openpyxlCells(folder / "book.xlsx");
        EXPECT_NE(cells.find("[Rabattbrev1 visible]\nA1 str 'Rabattgrupp'"), std::string::npos) << cells;
        if (c.part != kWorkbook && *c.from == '\0') {
            EXPECT_EQ(readZip(folder / "book.xlsx")[c.part], c.to);
        }
    }
}

TEST(WritingASheet, NamesItByTheNumberOfSheets) {
    const TemporaryFolder folder;
    add(folder / "new.xlsx", {});
    EXPECT_EQ(sheetNames(folder / "new.xlsx"), "Rabattbrev1 ");
    add(folder / "new.xlsx", {});
    add(folder / "new.xlsx", {}, kColumns, "RABATTBREV");
    EXPECT_EQ(sheetNames(folder / "new.xlsx"), "Rabattbrev1 Rabattbrev2 RABATTBREV3 ");
    const std::string longest(31, 'x');
    add(folder / "long.xlsx", {}, kColumns, longest);
    add(folder / "long.xlsx", {}, kColumns, longest);
    EXPECT_EQ(sheetNames(folder / "long.xlsx"), std::string(30, 'x') + "1 " + std::string(30, 'x') + "2 ");
}

TEST(WritingASheet, KeepsRightsAndLinks) {
    const TemporaryFolder folder;
    const fs::path file = folder / "book.xlsx";
    add(file, {});
    folder.write("ordinary", "");
    EXPECT_EQ(fs::status(file).permissions(), fs::status(folder / "ordinary").permissions());
    fs::permissions(file, fs::perms(0660));
    fs::create_symlink("book.xlsx", folder / "link.xlsx");
    add(folder / "link.xlsx", {});
    EXPECT_TRUE(fs::is_symlink(folder / "link.xlsx"));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0660));
    EXPECT_EQ(sheetNames(file), "Rabattbrev1 Rabattbrev2 ");
}

/// Checks that a file and its folder are as they were.
void expectUntouched(const TemporaryFolder& folder, std::string_view name, const std::string& bytes) {
    EXPECT_EQ(folder.read(name), bytes);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), bytes.empty() ? 0 : 1);
}

TEST(WritingASheet, RefusesWhatItCannotWrite) {
    const auto zipped = [](const char* part, const char* from, const char* to) {
        const TemporaryFolder other;
        Parts parts = workbookOf("");
        parts[part] = replaceAll(parts[part], from, to);
        writeZip(other / "book", parts);
        return other.read("book");
    };
    const struct {
        const char *fault, *name;
        std::string bytes;  ///< empty: there is no such file
        int expected;
    } cases[] = {
        {"a new .xls", "new.xls", "", errors::kUnwritableFormat},
        {"a new workbook with macros", "new.xlsm", "", errors::kUnwritableFormat},
        {"no extension of a workbook", "new.txt", "", errors::kUnwritableFormat},
        {"an .xls workbook", "old.xls", savedBytes("letter.xls"), errors::kUnwritableFormat},
        {"an .xls workbook under another name", "old.xlsx", savedBytes("letter.xls"), errors::kUnwritableFormat},
        {"an .xlsx workbook named .xls", "new.xls", savedBytes("letter.xlsx"), errors::kUnwritableFormat},
        {"a text file", "text.xlsx", "Rabattgrupp\r\n", errors::kUnreadableSpreadsheet},
        {"a cut workbook", "cut.xlsx", savedBytes("letter.xlsx").substr(0, 5000), errors::kUnreadableSpreadsheet},
        {"a workbook with a password", "p.xlsx", protectedXlsx(), errors::kProtectedSpreadsheet},
        {"a signed workbook", "s.xlsx",
         zipped("_rels/.rels", "</Relationships>",
                R"(<Relationship Id="z" Type="x/digital-signature/origin" Target="sig"/></Relationships>)"),
         errors::kProtectedSpreadsheet},
        {"a locked list of sheets", "l.xlsm",
         zipped("xl/workbook.xml", "<sheets>", R"(<workbookProtection lockStructure="1"/><sheets>)"),
         errors::kProtectedSpreadsheet},
        {"a password for changes", "c.xlsx",
         zipped("xl/workbook.xml", "<workbookPr/>", R"(<fileSharing reservationPassword="CC1A"/><workbookPr/>)"),
         errors::kProtectedSpreadsheet},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const TemporaryFolder folder;
        if (!c.bytes.empty()) folder.write(c.name, c.bytes);
        EXPECT_EQ(errorOfAdding(folder / c.name), c.expected);
        expectUntouched(folder, c.name, c.bytes);
    }
    EXPECT_EQ(errorOfAdding("/no such folder/new.xlsx"), errors::kFileNotFound);
}

TEST(WritingASheet, RefusesWhatMayOnlyBeRead) {
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms(0777));
    const std::string bytes = savedBytes("letter.xlsx");
    folder.write("book.xlsx", bytes);
    {
        const RestrictedPath file(folder / "book.xlsx", 0444);
        EXPECT_EQ(errorOfAdding(folder / "book.xlsx"), errors::kReadOnly);
    }
    fs::permissions(folder / "book.xlsx", fs::perms(0666));
    {
        const RestrictedPath itsFolder(folder.path(), 0555);
        EXPECT_EQ(errorOfAdding(folder / "book.xlsx"), errors::kReadOnly);
        EXPECT_EQ(errorOfAdding(folder / "new.xlsx"), errors::kReadOnly);
    }
    expectUntouched(folder, "book.xlsx", bytes);
}

TEST(WritingASheet, LeavesEverythingAsItWasWhenItFails) {
    const std::string old = savedBytes("letter.xlsx");
    for (const std::string& before : {old, std::string()}) {
        SCOPED_TRACE(before.empty() ? "new" : "existing");
        const TemporaryFolder folder;
        if (!before.empty()) folder.write("book.xlsx", before);

        EXPECT_EQ(errorOfAdding(folder / "book.xlsx", {{std::string(32768, 'x')}}), errors::kTextTooLong);
        for (const rlim_t bytes : {rlim_t{100}, rlim_t{6000}, rlim_t{200'000}}) {
            SCOPED_TRACE(bytes);
            const Rows large(3000, {std::string("a text that fills the disk soon enough"), 0.1});
            const FileSizeLimit disk(bytes);
            EXPECT_EQ(errorOfAdding(folder / "book.xlsx", large), errors::kDiskFull);
        }
        int rows = 0;
        const auto failing = [&rows]() -> std::optional<std::vector<Value>> {
            if (++rows == 3) throw std::runtime_error("the table is gone");
            return std::vector<Value>{1.0};
        };
        EXPECT_THROW(addSheet(folder / "book.xlsx", "R", kColumns, failing), std::runtime_error);
        expectUntouched(folder, "book.xlsx", before);
    }
}

TEST(WritingASheet, StopsBelowTheLastRow) {
    const TemporaryFolder folder;
    for (const auto& [rows, name] : {std::pair(1048575, "full.xlsx"), std::pair(1048576, "over.xlsx")}) {
        int left = rows;
        const auto next = [&left] { return left-- > 0 ? std::optional(std::vector<Value>()) : std::nullopt; };
        EXPECT_EQ(errorOf([&] { addSheet(folder / name, "R", kColumns, next); }) == 0, rows == 1048575);
        EXPECT_EQ(fs::exists(folder / name), rows == 1048575);
    }
}

}  // namespace

}  // namespace kolmera::test
