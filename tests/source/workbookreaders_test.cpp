#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/error.h"
#include "platform/spreadsheet/sheetrows.h"
#include "spreadsheet/workbookparts.h"
#include "support/errorof.h"
#include "support/sourcerows.h"

namespace kolmera::test {
namespace {

SourceFormat of(SourceKind kind) {
    SourceFormat format;
    format.kind = kind;
    return format;
}

std::string zipped(const Parts& parts) {
    const TemporaryFolder folder;
    writeZip(folder / "zip", parts);
    return folder.read("zip");
}

std::string rowsOfOds(std::string_view tables, const std::string& sheet = {}) {
    SourceFormat format = of(SourceKind::Ods);
    format.sheet = sheet;
    constexpr std::string_view kHead =
        R"(<o:document-content xmlns:o="office" xmlns:t="table" xmlns:x="text" xmlns:c="calcext"><o:body><o:spreadsheet>)";
    constexpr std::string_view kFoot = "</o:spreadsheet></o:body></o:document-content>";
    return rowsOf(zipped({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
                          {"content.xml", fmt::format("{}{}{}", kHead, tables, kFoot)}}),
                  format);
}

TEST(Workbooks, GiveTheirCellsInOneSpelling) {
    const struct {
        const char* fault;
        const char* rows;
        const char* expected;
    } cases[] = {
        {"row numbers counted without the empty ones",
         R"(<row r="3"><c><v>1</v></c></row><row r="4"/><row r="7"><c><v>2</v></c></row>)", "3|#1\n7|#2\n"},
        {"the seventeenth digit shown",
         R"(<row><c><v>12.300000000000001</v></c><c><v>0.30000000000000004</v></c></row>)", "1|#12.3|#0.3\n"},
        {"exponents and minus zero", R"(<row><c><v>1E+15</v></c><c><v>1.5E-7</v></c><c><v>-0</v></c></row>)",
         "1|#1000000000000000|#0.00000015|#0\n"},
        {"thirteen digits rounded", R"(<row><c><v>7391234567890</v></c></row>)", "1|#7391234567890\n"},
        {"dates, truth values and errors",
         R"(<row><c s="1"><v>45351.75</v></c><c t="b"><v>1</v></c><c t="e"><v>#N/A</v></c><c><v>3</v></c></row>)",
         "1|@2024-02-29|?1||#3\n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rowsOf(zipped(workbookOf(c.rows)), of(SourceKind::Xlsx)), c.expected) << c.fault;
    for (const char* name : {"letter.xlsx", "letter-1904.xlsx", "letter.xls", "letter-1904.xls"}) {
        const std::string rows = rowsOf(
            savedBytes(name), of(name[std::string_view(name).size() - 1] == 'x' ? SourceKind::Xlsx : SourceKind::Xls));
        EXPECT_NE(rows.find("|?1|@2024-02-29|@2023-12-31\n"), std::string::npos) << name << '\n' << rows;
    }
}

TEST(Workbooks, ShowLeadingZerosAndCountErrors) {
    Parts parts = workbookOf(R"(<row><c s="1"><v>42</v></c><c s="1"><v>4.5</v></c><c t="e"><v>#REF!</v></c></row>)");
    parts["xl/styles.xml"] =
        R"(<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><numFmts><numFmt numFmtId="170" formatCode="00000"/></numFmts><cellXfs><xf numFmtId="0"/><xf numFmtId="170"/></cellXfs></styleSheet>)";
    const TemporaryFolder folder;
    writeZip(folder / "zip", parts);
    const auto reader = openRows(folder / "zip", of(SourceKind::Xlsx));
    EXPECT_EQ(rowsOf(*reader), "1|00042|#4.5\n");
    EXPECT_EQ(reader->remarks().errorValues.count, 1U);
    EXPECT_EQ(reader->remarks().errorValues.firstRow, 1U);
}

TEST(Workbooks, AreReadBySheet) {
    SourceFormat format = of(SourceKind::Xlsx);
    format.sheet = "Blad 7";
    EXPECT_EQ(errorOf([&] { rowsOf(savedBytes("letter.xlsx"), format); }), errors::kNoSuchSheet);
    format.kind = SourceKind::Xls;
    EXPECT_EQ(errorOf([&] { rowsOf(savedBytes("letter.xls"), format); }), errors::kNoSuchSheet);
    constexpr std::string_view kTwo =
        R"(<t:table t:name="Ett"><t:table-row><t:table-cell><x:p>1</x:p></t:table-cell></t:table-row></t:table>)"
        R"(<t:table t:name="Två"><t:table-row><t:table-cell><x:p>2</x:p></t:table-cell></t:table-row></t:table>)";
    EXPECT_EQ(rowsOfOds(kTwo), "1|1\n");
    EXPECT_EQ(rowsOfOds(kTwo, "TVÅ"), "1|2\n");
    EXPECT_EQ(errorOf([&] { rowsOfOds(kTwo, "Tre"); }), errors::kNoSuchSheet);
}

TEST(OpenDocumentSheets, GiveTheirCells) {
    const struct {
        const char* fault;
        std::string_view rows;
        std::string_view expected;
    } cases[] = {
        {"repeated cells and rows once",
         R"(<t:table-row t:number-rows-repeated="2"><t:table-cell t:number-columns-repeated="2"><x:p>a</x:p></t:table-cell></t:table-row>)",
         "1|a|a\n2|a|a\n"},
        {"empty rows and cells up to the edge of the sheet",
         R"(<t:table-row t:number-rows-repeated="5"><t:table-cell t:number-columns-repeated="16384"/></t:table-row>)"
         R"(<t:table-row><t:covered-table-cell t:number-columns-repeated="2"/><t:table-cell o:value-type="float" o:value="1.5"><x:p>1,50 kr</x:p></t:table-cell><t:table-cell t:number-columns-repeated="99999"/></t:table-row>)"
         R"(<t:table-row t:number-rows-repeated="1048570"><t:table-cell/></t:table-row>)",
         "6|||#1.5\n"},
        {"blanks, lines and spans of a text",
         R"(<t:table-row><t:table-cell><x:p>a<x:s x:c="2"/>b<x:span>c</x:span></x:p><x:p>d</x:p></t:table-cell></t:table-row>)",
         "1|a  bc\nd\n"},
        {"a note read as text",
         R"(<t:table-row><t:table-cell><o:annotation><x:p>not</x:p></o:annotation><x:p>a</x:p></t:table-cell></t:table-row>)",
         "1|a\n"},
        {"dates, truth values, errors and leading zeros",
         R"(<t:table-row><t:table-cell o:value-type="date" o:date-value="2026-11-23T10:00:00"><x:p>23/11</x:p></t:table-cell>)"
         R"(<t:table-cell o:value-type="boolean" o:boolean-value="true"><x:p>SANT</x:p></t:table-cell>)"
         R"(<t:table-cell o:value-type="string" c:value-type="error"><x:p>#N/A</x:p></t:table-cell>)"
         R"(<t:table-cell o:value-type="float" o:value="42"><x:p>00042</x:p></t:table-cell></t:table-row>)",
         "1|@2026-11-23|?1||00042\n"},
        {"a time of day as text",
         R"(<t:table-row><t:table-cell o:value-type="time" o:time-value="PT06H30M36S"><x:p>06:30:36</x:p></t:table-cell>)"
         R"(<t:table-cell o:value-type="time" o:time-value="PT6X"><x:p>6 h</x:p></t:table-cell></t:table-row>)",
         "1|#0.27125|6 h\n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rowsOfOds(fmt::format(R"(<t:table t:name="A">{}</t:table>)", c.rows)), c.expected) << c.fault;
}

TEST(OpenDocumentSheets, AreHiddenByTheirStyle) {
    const TemporaryFolder folder;
    writeZip(folder / "zip",
             {{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
              {"content.xml",
               R"(<o:document-content xmlns:o="office" xmlns:t="table" xmlns:s="style"><o:automatic-styles>)"
               R"(<s:style s:name="a" s:family="table"><s:table-properties t:display="true"/></s:style>)"
               R"(<s:style s:name="b" s:family="table"><s:table-properties t:display="false"/></s:style>)"
               R"(</o:automatic-styles><o:body><o:spreadsheet><t:table t:name="Gömt" t:style-name="b"/>)"
               R"(<t:table t:name="Priser" t:style-name="a"/></o:spreadsheet></o:body></o:document-content>)"}});
    const std::vector<SheetName> sheets = odsSheets(Descriptor(folder / "zip", O_RDONLY));
    ASSERT_EQ(sheets.size(), 2U);
    EXPECT_TRUE(sheets[0].isHidden);
    EXPECT_FALSE(sheets[1].isHidden);
}

TEST(Readers, SayThatAFileIsOfAnotherKind) {
    const struct {
        SourceKind kind;
        std::string bytes;
        int error;
    } cases[] = {
        {SourceKind::Delimited, savedBytes("letter.xlsx"), errors::kIsWorkbook},
        {SourceKind::Fixed, savedBytes("letter.xls"), errors::kIsWorkbook},
        {SourceKind::Xml, savedBytes("letter.xls"), errors::kIsWorkbook},
        {SourceKind::Xlsx, "Artikelnr;Pris\n", errors::kIsNoWorkbook},
        {SourceKind::Ods, "", errors::kIsNoWorkbook},
    };
    for (const auto& c : cases) EXPECT_EQ(errorOf([&] { rowsOf(c.bytes, of(c.kind)); }), c.error) << nameOf(c.kind);
}

TEST(Xml, GivesTheFieldsOfItsRecords) {
    SourceFormat format = of(SourceKind::Xml);
    format.record = "Artiklar/Artikel";
    format.fields = {"@nr", "Namn", "Pris/@valuta", "Pris/Netto", "."};
    EXPECT_EQ(rowsOf(R"(<!DOCTYPE Lista SYSTEM "lista.dtd"><Lista xmlns="urn:x"><Artiklar>
<Artikel nr="1"><Namn> Rör &amp; böj </Namn><Pris valuta="SEK"><Netto>12.50</Netto></Pris></Artikel>
<Artikel nr="2">löst<Namn>a</Namn><Namn>b</Namn><Artikel nr="x"/></Artikel>
</Artiklar><Artikel nr="3"/></Lista>)",
                     format),
              "0|@nr|Namn|Pris/@valuta|Pris/Netto|.\n"
              "1|1|Rör & böj|SEK|12.50|\n"
              "2|2|a, b|||löst\n");
    format.record = "r";
    format.fields = {"."};
    EXPECT_EQ(rowsOf("<?xml version=\"1.0\" encoding=\"windows-1252\"?><a><r>\x80\xE5</r></a>", format), "0|.\n1|€å\n");
}

TEST(Xml, EndsHostileFiles) {
    SourceFormat format = of(SourceKind::Xml);
    format.record = "r";
    format.fields = {"a"};
    SourceLimits limits;
    limits.rowBytes = 1000;
    const struct {
        const char* fault;
        std::string bytes;
        int error;
    } cases[] = {
        {"entities of entities", R"(<!DOCTYPE x [<!ENTITY a "b"><!ENTITY c "&a;&a;">]><x><r><a>&c;</a></r></x>)",
         errors::kUnreadableXml},
        {"an endless text", "<x><r><a>" + std::string(100'000, 'a') + "</a></r></x>", errors::kRowTooLong},
        {"an endless tag", "<x><r " + std::string(40'000'000, 'a') + "/></x>", errors::kUnreadableXml},
        {"nested without an end",
         [] {
             std::string text;
             for (int i = 0; i < 100'000; ++i) text += "<x>";
             return text;
         }(),
         errors::kUnreadableXml},
        {"not well formed", "<x><r></x>", errors::kUnreadableXml},
    };
    for (const auto& c : cases) EXPECT_EQ(errorOf([&] { rowsOf(c.bytes, format, limits); }), c.error) << c.fault;
}

TEST(PackedFiles, AreUnpacked) {
    SourceFormat format;
    const std::string zip = zipped({{"pris/Artiklar.csv", "a;b\n"}, {"pris/läs mig.txt", "x\n"}, {"__MACOSX/._a", ""}});
    const struct {
        const char* fault;
        const char* member;
        const char* rows;
    } cases[] = {{"name without its folder", "artiklar.csv", "1|a|b\n"},
                 {"pattern", "*.TXT", "1|x\n"},
                 {"whole name", "pris/Artiklar.csv", "1|a|b\n"}};
    for (const auto& c : cases) {
        format.member = c.member;
        EXPECT_EQ(rowsOf(zip, format), c.rows) << c.fault;
    }
    format.member = "b.csv";
    EXPECT_EQ(rowsOf(zipped({{"B.csv", "1\n"}, {"b.csv", "2\n"}}), format), "1|2\n") << "another one is read";
    format.member = "*.xml";
    EXPECT_EQ(errorOf([&] { rowsOf(zip, format); }), errors::kNoSuchMember);
    format.member.clear();
    try {
        rowsOf(zip, format);
        ADD_FAILURE() << "one of two files taken";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.number(), errors::kSeveralMembers);
        EXPECT_EQ(error.subject(), "pris/Artiklar.csv, pris/läs mig.txt");
    }
    EXPECT_EQ(rowsOf(zipped({{"letter.xlsx", savedBytes("letter.xlsx")}}), of(SourceKind::Xlsx)),
              rowsOf(savedBytes("letter.xlsx"), of(SourceKind::Xlsx)))
        << "a workbook in a zip";
    using namespace std::string_view_literals;
    constexpr std::string_view kGzip =
        "\x1F\x8B\x08\0\0\0\0\0\2\3K\xB4N\xE2\2\0"
        "0\xA5\xFE=\4\0\0\0"sv;
    EXPECT_EQ(rowsOf(kGzip, format), "1|a|b\n");
    EXPECT_EQ(rowsOf(std::string(kGzip).append(kGzip).append(100, '\0'), format), "1|a|b\n2|a|b\n")
        << "two in one file";
    EXPECT_EQ(rowsOf(std::string(kGzip).append(100, '\0').append(kGzip), format), "1|a|b\n2|a|b\n") << "behind zeros";
    EXPECT_EQ(errorOf([&] { rowsOf(std::string(kGzip).append(100, '\0').append("rest"), format); }),
              errors::kUnreadableArchive)
        << "bytes behind zeros are left out unseen";
    EXPECT_EQ(errorOf([&] { rowsOf(kGzip.substr(0, 12), format); }), errors::kUnreadableArchive) << "cut short";
}

}  // namespace
}  // namespace kolmera::test
