#include <fmt/format.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "platform/error.h"
#include "source/sourcejson.h"
#include "support/errorof.h"
#include "support/sourcerows.h"

namespace kolmera::test {
namespace {

using namespace std::string_view_literals;

SourceFormat delimited(char delimiter = ';') {
    SourceFormat format;
    format.delimiter = delimiter;
    return format;
}

TEST(DelimitedText, TakesItsRowsApart) {
    const struct {
        const char* fault;
        std::string_view bytes;
        std::string_view rows;
    } cases[] = {
        {"last line without an end lost", "a;b\nc;d", "1|a|b\n2|c|d\n"},
        {"an empty line more at the end", "a;b\n", "1|a|b\n"},
        {"only one kind of line end known", "a\rb\r\nc\nd", "1|a\n2|b\n3|c\n4|d\n"},
        {"empty cells lost", ";a;;\n;\n", "1||a||\n2||\n"},
        {"an empty line has a cell", "a\n\nb\n", "1|a\n2\n3|b\n"},
        {"an empty quoted cell is no cell", "\"\"\n", "1|\n"},
        {"quotes kept", "\"a;b\";\"c\"\n", "1|a;b|c\n"},
        {"doubled quotes not halved", "\"3/4\"\" rör\";\"\"\"\"\n", "1|3/4\" rör|\"\n"},
        {"line break in a cell ends the row", "\"a\nb\r\nc\";d\ne\n", "1|a\nb\r\nc|d\n4|e\n"},
        {"quote in an open cell opens a quoted one", "3/4\" rör;x\n", "1|3/4\" rör|x\n"},
        {"quote inside closes the cell", "\"3/4\" rör\";x\n", "1|3/4\" rör|x\n"},
        {"blanks around quotes make them text", "a ; \"b;c\" ;\t\"d\"\n", "1|a |b;c|d\n"},
        {"quoted cell at the very end", "a;\"b\"", "1|a|b\n"},
        {"the end of a DOS text read as a row", "a;b\r\n\x1A", "1|a|b\n"},
        {"NUL ends a cell", "a\0b;c\n"sv, "1|a\0b|c\n"sv},
        {"nothing is a row", "", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(rowsOf(c.bytes, delimited()), c.rows) << c.fault;
    EXPECT_EQ(rowsOf("a\t \"b\tc\"\n", delimited('\t')), "1|a|b\tc\n");
    SourceFormat plain = delimited();
    plain.quote = '\0';
    EXPECT_EQ(rowsOf("\"a;b\"\n", plain), "1|\"a|b\"\n") << "quotes taken where there are none";
}

TEST(DelimitedText, IsTheSameWhereverItsPiecesAreCut) {
    // Each oddity at every place around the end of a piece of 256 KB.
    constexpr std::string_view kRow = "\"å\"\"\r\n€\" ;b\r\n";
    for (std::size_t shift = 0; shift < kRow.size() + 3; ++shift) {
        const std::string filler(262'144 - shift, 'x');
        const std::string bytes = filler + ";\n" + std::string(kRow) + "c\n";
        EXPECT_EQ(rowsOf(bytes, delimited()), "1|" + filler + "|\n2|å\"\r\n€|b\n4|c\n") << shift;
    }
}

TEST(DelimitedText, EndsHostileFilesWithTheirRow) {
    SourceLimits limits;
    limits.rowBytes = 300'000;
    limits.columns = 100;
    limits.quotedLines = 10;
    const std::string many(3'000'000, 'x');
    std::string lines;
    for (int i = 0; i < 30; ++i) lines += "b;c\n";
    const struct {
        const char* fault;
        std::string bytes;
        int error;
    } cases[] = {
        {"one endless line", "a\n" + many, errors::kRowTooLong},
        {"an endless quoted cell", "a\n\"" + many, errors::kQuoteNotClosed},
        {"a quote that the file's end closes", "a\n\"b;c", errors::kQuoteNotClosed},
        {"a quote that swallows the rows behind it", "a\n\"b;c\n" + lines + "d\";e\n", errors::kQuoteNotClosed},
        {"a million columns", "a\n" + std::string(1'000'000, ';'), errors::kTooManyColumns},
    };
    for (const auto& c : cases) {
        const TemporaryFolder folder;
        folder.write("file", c.bytes);
        try {
            rowsOf(*openRows(folder / "file", delimited(), limits));
            ADD_FAILURE() << c.fault;
        } catch (const PlatformError& error) {
            EXPECT_EQ(error.number(), c.error) << c.fault;
            EXPECT_EQ(error.subject(), "2") << c.fault;
        }
    }
}

TEST(DelimitedText, CountsWhatItDidNotTakeAsItStands) {
    const TemporaryFolder folder;
    folder.write("file", "a\n\"b\" c\";\xFF\n\"d\ne\"\n\xFF\n");
    const auto reader = openRows(folder / "file", delimited());
    EXPECT_EQ(rowsOf(*reader), "1|a\n2|b\" c|\uFFFD\n3|d\ne\n5|\uFFFD\n");
    const SourceRemarks remarks = reader->remarks();
    EXPECT_EQ(remarks.strayQuotes.count, 1U);
    EXPECT_EQ(remarks.strayQuotes.firstRow, 2U);
    EXPECT_EQ(remarks.malformed.count, 2U);
    EXPECT_EQ(remarks.malformed.firstRow, 2U);
    EXPECT_EQ(remarks.lineBreaks.count, 1U);
    EXPECT_EQ(remarks.lineBreaks.firstRow, 3U);
}

TEST(CharacterSets, ComeAsUtf8) {
    const struct {
        const char* fault;
        CharacterSet characters;
        std::string_view bytes, text;
    } cases[] = {
        {"mark of UTF-8 taken for text", CharacterSet::Utf8, "\xEF\xBB\xBFå\n", "1|å\n"},
        {"mark of UTF-16 taken for text", CharacterSet::Utf16Le, "\xFF\xFE\xE5\0\n\0"sv, "1|å\n"},
        {"bytes of UTF-16 in the wrong order", CharacterSet::Utf16Be, "\0\xE5\0;\0a"sv, "1|å|a\n"},
        {"pairs of UTF-16 taken apart", CharacterSet::Utf16Le, "\x3D\xD8\x00\xDE\n\0"sv, "1|😀\n"},
        {"half pairs and bytes of UTF-16 lost", CharacterSet::Utf16Le,
         "\x3D\xD8"
         "a\0b"sv,
         "1|\uFFFDa\uFFFD\n"},
        {"Windows-1252 read as ISO 8859-1", CharacterSet::Windows1252, "\x80\xE5", "1|€å\n"},
        {"ISO 8859-15 read as ISO 8859-1", CharacterSet::Latin9, "\xA4\xBD", "1|€œ\n"},
        {"ISO 8859-1 read as ISO 8859-15", CharacterSet::Latin1, "\xA4\xBD", "1|¤½\n"},
        {"code page 850 read as another", CharacterSet::Oem850, "\x86\x84\x94\x9B", "1|åäöø\n"},
    };
    for (const auto& c : cases) {
        SourceFormat format = delimited();
        format.characters = c.characters;
        EXPECT_EQ(rowsOf(c.bytes, format), c.text) << c.fault;
    }
}

TEST(FixedText, IsCutByCharacters) {
    SourceFormat format;
    format.kind = SourceKind::Fixed;
    format.starts = {1, 4, 10};
    EXPECT_EQ(rowsOf("x12 å ä ö  9,5\r\n\r\nx1\nx123456789abc", format),
              "1|12|å ä ö|9,5\n2\n3|1||\n4|123|456789|abc\n");
    format.starts = {0, 3};
    format.length = 6;
    EXPECT_EQ(rowsOf("1  åäö2  böj3\r\n", format), "1|1|åäö\n2|2|böj\n3|3|\n") << "records that nothing parts";
    EXPECT_EQ(rowsOf("", format), "");
    format.starts = {0, 8};
    format.length = 0;
    EXPECT_EQ(rowsOf("│ 1    │ å  │\n├──────┼────┤\n", format), "1|1|å\n2||\n") << "what a table is drawn with";
}

TEST(SourceTables, BeginAtTheirHeadings) {
    const TemporaryFolder folder;
    folder.write("file", "Prislista\n\n;;\nArtikelnr;Pris\n1;2\n");
    SourceFormat format = delimited();
    format.headings = true;
    format.skip = 1;
    SourceTable table(openRows(folder / "file", format), format);
    EXPECT_EQ(table.headings(), (std::vector<std::string>{"Artikelnr", "Pris"}));
    EXPECT_EQ(table.headingRow(), 4U);
    Row row;
    ASSERT_TRUE(table.next(row));
    EXPECT_EQ(row.number, 5U);
    EXPECT_FALSE(table.next(row));
}

TEST(SourceFormats, ComeBackFromTheirJson) {
    SourceFormat format;
    format.kind = SourceKind::Fixed;
    format.member = "*.txt";
    format.characters = CharacterSet::Oem850;
    format.delimiter = '\t';
    format.quote = '\0';
    format.starts = {0, 5};
    format.length = 80;
    format.sheet = "Blad å";
    format.record = "Artikel";
    format.fields = {"Nr", "Pris/@valuta"};
    format.skip = 3;
    format.headings = true;
    format.decimalSign = ',';
    format.thousandsSign = "\u00A0";
    format.dateOrder = DateOrder::DayMonthYear;
    EXPECT_EQ(sourceFormatOf(toJson(format)), format);
    EXPECT_EQ(toJson(SourceFormat()).dump(), R"({"kind":"delimited"})");
    for (const char* wrong : {R"([])", R"({"kind":"pdf"})", R"({"delimiter":";;"})", R"({"skip":-1})",
                              R"({"starts":[4,2]})", R"({"headings":1})", R"({"fields":[1]})"}) {
        EXPECT_EQ(sourceFormatOf(nlohmann::ordered_json::parse(wrong)), std::nullopt) << wrong;
    }
}

}  // namespace
}  // namespace kolmera::test
