#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "platform/lettercase.h"
#include "platform/spreadsheet/workbook.h"
#include "spreadsheet/workbookparts.h"
#include "support/errorof.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

namespace {

/// How many bytes the system gives at once: a server's disk may give fewer than were asked for.
std::size_t bytesAtOnce = SIZE_MAX;

class ShortReads {
  public:
    ShortReads() { bytesAtOnce = 100; }
    ~ShortReads() { bytesAtOnce = SIZE_MAX; }
    ShortReads(const ShortReads&) = delete;
    ShortReads& operator=(const ShortReads&) = delete;
};

}  // namespace

}  // namespace kolmera::test

// Found before the system's.
extern "C" ssize_t pread(int descriptor, void* bytes, std::size_t count, off_t offset) {
    return syscall(SYS_pread64, descriptor, bytes, std::min(count, kolmera::test::bytesAtOnce), offset);
}

namespace kolmera::test {

namespace {

int errorOfReading(const std::filesystem::path& file) {
    return errorOf([&] { rowsOf(file); });
}

TEST(ReadingASheet, GivesWhatAnotherProgramSaved) {
    for (const char* name : {"letter.xlsx", "letter.xls", "letter-1904.xlsx", "letter-1904.xls"}) {
        EXPECT_EQ(rowsOf(savedWorkbook(name)),
                  "'0012' 12.5 - -3\n"
                  "'fetstil åäö €' TRUE 2024-02-29 2023-12-31\n"
                  "'A12' 20 - 1234.5\n"
                  "'två\nrader' '_x000D_' 0.125\n")
            << name;
    }
}

TEST(ReadingASheet, FollowsTextsOfXlsIntoTheNextRecord) {
    std::string expected;
    for (int i = 1; i <= 200; ++i) {
        const char* text = i % 3 == 0 ? "Pris i € för grupp" : "Rör och kopplingar, mässing";
        expected += fmt::format("'{:04}' '{} av den långa listan {}'\n", i, text, i);
    }
    EXPECT_EQ(rowsOf(savedWorkbook("many.xls")), expected);
}

TEST(ReadingASheet, GoesByTheContentNotByTheName) {
    const TemporaryFolder folder;
    std::filesystem::copy_file(savedWorkbook("letter.xlsx"), folder / "new.XLS");
    std::filesystem::copy_file(savedWorkbook("letter.xls"), folder / "old.xlsx");
    EXPECT_EQ(rowsOf(folder / "new.XLS"), rowsOf(folder / "old.xlsx"));
}

TEST(ReadingASheet, TakesNoMoreMemoryThanItsTexts) {
    std::string cells;
    for (int i = 0; i < 2000; ++i) cells += R"(<c t="s"><v>0</v></c>)";
    Parts parts = workbookOf("<row><c><v>1</v></c></row><row>" + cells + "</row>");
    parts["xl/sharedStrings.xml"] =
        R"(<sst xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><si><t>)" +
        std::string(900'000, 'x') + "</t></si></sst>";
    const TemporaryFolder folder;
    writeZip(folder / "bomb.xlsx", parts);
    EXPECT_LT(std::filesystem::file_size(folder / "bomb.xlsx"), 20'000U);
    int rows = 0;
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    readFirstSheet(folder / "bomb.xlsx", 6, [&](std::span<const Value> row) {
        EXPECT_EQ(row.size(), 6U);
        ++rows;
    });
    getrusage(RUSAGE_SELF, &after);
    EXPECT_EQ(rows, 1);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 512 << 10) << "kilobytes for a few megabytes of text";
}

TEST(ReadingASheet, UnderstandsItsCells) {
    const struct {
        const char* fault;
        const char* rows;  ///< behind the row of names
        const char* expected;
    } cases[] = {
        {"a cell without a reference not put behind the one before",
         R"(<row><c r="B9"><v>1</v></c><c><v>2</v></c></row><row><c><v>3</v></c></row>)", "- 1 2\n3\n"},
        {"column AA cut to A", R"(<row><c r="AA1"><v>5</v></c></row>)",
         "- - - - - - - - - - - - - - - - - - - - - - - - - - 5\n"},
        {"cells out of order lost", R"(<row><c r="C1"><v>3</v></c><c r="A1"><v>1</v></c></row>)", "1 - 3\n"},
        {"empty rows, formatted cells and empty texts counted as values",
         R"(<row r="2"/><row><c s="1"/><c t="s"><v>2</v></c><c t="str"><v/></c></row><row><c><v>1</v></c><c s="1"/></row><row/>)",
         "1\n"},
        {"runs of rich text or reading aids mixed up", R"(<row><c t="s"><v>0</v></c><c t="s"><v>1</v></c></row>)",
         "'noll' 'ett två'\n"},
        {"inline texts lost",
         R"(<row><c t="inlineStr"><is><r><t>a</t></r><r><t xml:space="preserve"> b</t></r></is></c></row>)", "'a b'\n"},
        {"value of a formula taken from its text",
         R"(<row><c><f>1+1</f><v>2</v></c><c t="str"><f>"x"</f><v>y</v></c><c><f>1</f></c></row>)", "2 'y'\n"},
        {"errors and truth values read as numbers",
         R"(<row><c t="e"><v>#N/A</v></c><c t="b"><v>0</v></c><c t="b"><v>1</v></c></row>)", "- FALSE TRUE\n"},
        {"built-in or own date formats shown as numbers",
         R"(<row><c s="1"><v>45351</v></c><c s="2"><v>45351.99</v></c><c t="d"><v>2024-02-29T10:00:00</v></c></row>)",
         "2024-02-29 2024-02-29 2024-02-29\n"},
        {"times and quoted letters taken for dates", R"(<row><c s="3"><v>45351</v></c><c s="4"><v>45351</v></c></row>)",
         "45351 45351\n"},
        {"days outside the calendar made dates",
         R"(<row><c s="1"><v>0.5</v></c><c s="1"><v>2958465</v></c><c s="1"><v>2958466</v></c><c s="1"><v>-1</v></c></row>)",
         "0.5 9999-12-31 2958466 -1\n"},
        {"numbers with an exponent or too large for a number",
         R"(<row><c><v>1.5E-3</v></c><c t="n"><v>1E+300</v></c><c><v>nan</v></c></row>)", "0.0015 1e+300\n"},
        {"what is no number thrown away", R"(<row><c><v>12,5</v></c></row>)", "'12,5'\n"},
        {"escaped characters left as they are, or decoded twice",
         R"(<row><c t="str"><v>a_x000D_b_x005F_x000D__xD83D__xDE00_</v></c></row>)", "'a\rb_x000D_😀'\n"},
        {"halves of characters and NUL made broken text",
         R"(<row><c t="str"><v>_xD83D_ _xDE00_ _x0000_ _x00g0_ _x12</v></c></row>)",
         "'_xD83D_ _xDE00_ _x0000_ _x00g0_ _x12'\n"},
        {"entities and CDATA split a text",
         R"(<row><c t="inlineStr"><is><t>R&amp;D <![CDATA[<å>]]>&#228;</t></is></c></row>)", "'R&D <å>ä'\n"},
    };
    const TemporaryFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        writeZip(folder / "book.xlsx", workbookOf(std::string("<row><c t=\"s\"><v>0</v></c></row>") + c.rows));
        EXPECT_EQ(rowsOf(folder / "book.xlsx"), c.expected);
    }
}

TEST(ReadingASheet, FindsItThroughTheRelations) {
    constexpr std::string_view kRows = "<row><c t=\"s\"><v>0</v></c></row><row><c s=\"1\"><v>100</v></c></row>";
    const struct {
        const char *fault, *part, *from, *to, *expected;
    } cases[] = {
        {"absolute target", "xl/_rels/workbook.xml.rels", "\"worksheets/", "\"/xl/worksheets/", "1900-04-09\n"},
        {"target with ..", "xl/_rels/workbook.xml.rels", "\"worksheets/", "\"../xl/./worksheets/", "1900-04-09\n"},
        {"target in another letter case", "xl/_rels/workbook.xml.rels", "blad.xml", "Blad.XML", "1900-04-09\n"},
        {"strict form", "xl/_rels/workbook.xml.rels", "http://schemas.openxmlformats.org/officeDocument/2006",
         "http://purl.oclc.org/ooxml/officeDocument", "1900-04-09\n"},
        {"prefixed elements", "xl/worksheets/blad.xml",
         "<worksheet xmlns=", "<worksheet xmlns:y=\"urn:y\" y:z=\"\" xmlns=", "1900-04-09\n"},
        {"day numbers from 1904", "xl/workbook.xml", "<workbookPr/>", "<workbookPr date1904=\"1\"/>", "1904-04-10\n"},
        {"a chart in front of the sheet", "xl/workbook.xml", "<sheets>",
         "<sheets><sheet name=\"Diagram\" sheetId=\"1\" r:id=\"s3\"/>", "1900-04-09\n"},
        {"no formats", "xl/_rels/workbook.xml.rels", "relationships/styles", "relationships/other", "100\n"},
    };
    const TemporaryFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        Parts parts = workbookOf(kRows);
        const std::string changed = replaceAll(parts[c.part], c.from, c.to);
        ASSERT_NE(changed, parts[c.part]);
        parts[c.part] = changed;
        writeZip(folder / "book.xlsx", parts);
        EXPECT_EQ(rowsOf(folder / "book.xlsx"), c.expected);
    }
}

TEST(ReadingASheet, TakesTheFirstOfTheWorkbooksOrder) {
    const TemporaryFolder folder;
    Parts parts = workbookOf("<row/>");
    parts["xl/worksheets/first.xml"] =
        R"(<x:worksheet xmlns:x="urn:x"><x:sheetData><x:row><x:c><x:v>1</x:v></x:c></x:row>)"
        R"(<x:row><x:c><x:v>2</x:v></x:c></x:row></x:sheetData></x:worksheet>)";
    parts["xl/workbook.xml"] =
        replaceAll(parts["xl/workbook.xml"], "<sheets>", R"(<sheets><sheet name="Z" sheetId="9" r:id="s9"/>)");
    parts["xl/_rels/workbook.xml.rels"] =
        replaceAll(parts["xl/_rels/workbook.xml.rels"], "</Relationships>",
                   R"(<Relationship Id="s9" Type="x/worksheet" Target="worksheets/first.xml"/></Relationships>)");
    writeZip(folder / "book.xlsx", parts);
    EXPECT_EQ(rowsOf(folder / "book.xlsx"), "2\n");
}

TEST(ReadingASheet, RefusesWhatIsNoWorkbook) {
    const TemporaryFolder folder;
    const auto changed = [](const char* part, const char* from, const std::string& to) {
        Parts parts = workbookOf("<row><c t=\"s\"><v>0</v></c></row>");
        parts[part] = replaceAll(parts[part], from, to);
        return parts;
    };
    const auto without = [](const char* part) {
        Parts parts = workbookOf("");
        parts.erase(part);
        return parts;
    };
    constexpr const char* kSheet = "xl/worksheets/blad.xml";
    std::string nested;
    for (int i = 0; i < 300; ++i) nested += "<x>";
    const struct {
        const char* fault;
        Parts parts;
    } cases[] = {
        {"another zip file", {{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"}}},
        {"no sheets", changed("xl/workbook.xml", R"(<sheet name="Blad" sheetId="7" r:id="s1"/>)", "")},
        {"a sheet without a relation", changed("xl/workbook.xml", "\"s1\"", "\"s8\"")},
        {"a sheet outside the file",
         changed("xl/_rels/workbook.xml.rels", R"(Id="s1")", R"(TargetMode="External" Id="s1")")},
        {"the sheet's part missing", without(kSheet)},
        {"the list of sheets missing", without("xl/workbook.xml")},
        {"the binary form", changed("_rels/.rels", "workbook.xml", "workbook.bin")},
        {"XML cut off", changed(kSheet, "</sheetData>", "")},
        {"a document type with an entity",
         changed(kSheet, "<worksheet", R"(<!DOCTYPE a [<!ENTITY e SYSTEM "file:///etc/passwd">]><worksheet)")},
        {"a text that is not there", changed(kSheet, "<v>0", "<v>3")},
        {"a column behind the last one", changed(kSheet, "<c t", "<c r=\"XFE1\" t")},
        {"a reference that is none", changed(kSheet, "<c t", "<c r=\"12\" t")},
        {"elements nested without end", changed(kSheet, "<sheetData>", nested)},
        {"a cell of millions of characters",
         changed(kSheet, "<c t=\"s\"><v>0", "<c t=\"str\"><v>" + std::string(3'000'000, 'a'))},
        {"a small file that unpacks to a large one", changed(kSheet, "<row>", std::string(80'000'000, ' ') + "<row>")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        writeZip(folder / "book.xlsx", c.parts);
        EXPECT_EQ(errorOfReading(folder / "book.xlsx"), errors::kUnreadableSpreadsheet);
    }
    folder.write("empty.xlsx", "");
    folder.write("text.xls", "Rabattgrupp\t1Rabatt\r\n");
    folder.write("zip.xlsx", "PK\3\4 and nothing else");
    for (const char* name : {"empty.xlsx", "text.xls", "zip.xlsx", ""}) {
        EXPECT_EQ(errorOfReading(folder / name), errors::kUnreadableSpreadsheet) << name;
    }
    EXPECT_EQ(errorOfReading(folder / "missing.xlsx"), errors::kFileNotFound);
    EXPECT_EQ(errorOfReading(savedWorkbook("protected.xls")), errors::kProtectedSpreadsheet);
    folder.write("protected.xlsx", protectedXlsx());
    EXPECT_EQ(errorOfReading(folder / "protected.xlsx"), errors::kProtectedSpreadsheet);
}

TEST(ReadingASheet, PassesOverAMillionEmptyRows) {
    const TemporaryFolder folder;
    std::string rows = R"(<row><c t="s"><v>0</v></c></row><row><c><v>1</v></c></row>)";
    for (int i = 0; i < 1'000'000; ++i) {
        rows += fmt::format(R"(<row r="{0}" customFormat="false" ht="12.8"><c r="A{0}" s="1"/></row>)", i + 3);
    }
    writeZip(folder / "book.xlsx", workbookOf(rows));
    EXPECT_EQ(rowsOf(folder / "book.xlsx"), "1\n");
}

TEST(ReadingASheet, EndsWithTheErrorOfTheReceiver) {
    for (const char* name : {"letter.xlsx", "letter.xls"}) {
        int rows = 0;
        const auto failing = [&rows](std::span<const Value>) {
            if (++rows == 2) throw std::runtime_error("enough");
        };
        EXPECT_THROW(readFirstSheet(savedWorkbook(name), 6, failing), std::runtime_error) << name;
        EXPECT_EQ(rows, 2) << name;
    }
}

TEST(ReadingXls, RefusesDamageByItsKind) {
    using namespace std::string_literals;
    const TemporaryFolder folder;
    const std::string whole = savedBytes("letter.xls");
    const std::size_t begin = whole.find("\x09\x08\x10\0\0\x06\x05\0"s);
    ASSERT_NE(begin, std::string::npos);
    const std::size_t sectorTable = (static_cast<std::size_t>(whole[0x4C]) + 1) * 512;
    const struct {
        const char* fault;
        std::size_t at;
        std::string bytes;
    } cases[] = {
        {"records of an older version misread", begin + 4, "\0\5"s},
        {"a record behind the end", begin + 2, "\xFF\xFF"s},
        {"the rows behind a cell that is too long left out", whole.find("\x03\x02\x0E\0"s) + 2, "\xFF\xFF"s},
        {"sectors of an impossible size", 0x1E, "\x1F\0"s},
        {"a directory behind the end", 0x30, "\xFF\xFF\xFF\x0F"s},
        {"chains of sectors that run in a circle", sectorTable, std::string(512, '\0')},
    };
    for (const auto& c : cases) {
        std::string damaged = whole;
        damaged.replace(c.at, c.bytes.size(), c.bytes);
        folder.write("damaged.xls", damaged);
        EXPECT_EQ(errorOfReading(folder / "damaged.xls"), errors::kUnreadableSpreadsheet) << c.fault;
    }
}

TEST(ReadingXls, GoesOnBehindAShortRead) {
    const std::string whole = rowsOf(savedWorkbook("many.xls"));
    const ShortReads shortReads;
    EXPECT_EQ(rowsOf(savedWorkbook("many.xls")), whole);
}

TEST(ReadingXls, StaysWithinTheSectorsOfAStream) {
    using namespace std::string_literals;
    const TemporaryFolder folder;
    const struct {
        const char *sectors, *workbook;
        std::string size;
    } cases[] = {{"small", "letter.xls", "\xFF\x0F\0\0"s}, {"whole", "many.xls", "\xFF\xFF\xFF\xFF"s}};
    for (const auto& c : cases) {
        std::string damaged = savedBytes(c.workbook);
        damaged.replace(damaged.find("W\0o\0r\0k\0b\0o\0o\0k\0"s) + 0x78, c.size.size(), c.size);
        folder.write("damaged.xls", damaged);
        EXPECT_EQ(rowsOf(folder / "damaged.xls"), rowsOf(savedWorkbook(c.workbook))) << c.sectors;
    }
}

TEST(ReadingAWorkbook, SurvivesEveryCut) {
    const TemporaryFolder folder;
    for (const char* name : {"letter.xls", "many.xls", "letter.xlsx"}) {
        const std::string whole = savedBytes(name);
        const std::string rows = rowsOf(savedWorkbook(name));
        for (std::size_t length = 0; length < whole.size(); length += 97) {
            folder.write("cut", std::string_view(whole).substr(0, length));
            try {
                EXPECT_EQ(rowsOf(folder / "cut"), rows) << name << " " << length;
            } catch (const PlatformError& error) {
                EXPECT_EQ(error.number(), errors::kUnreadableSpreadsheet) << name << " " << length;
            }
        }
    }
}

}  // namespace

}  // namespace kolmera::test
