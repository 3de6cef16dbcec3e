#include "import/masks/recordreader.h"

#include <gtest/gtest.h>

#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

/// A mask that reads every entry: `pieces` are first byte and length of a fixed-length mask, else only counted.
LoadedMask maskOf(char structure, int size, const std::vector<std::pair<int, int>>& pieces, int columns = 0,
                  char Tecken = 'N') {
    Mask mask;
    mask.FilTyp = structure;
    mask.Tecken = Tecken;
    mask.AntalRader = mask.Postlängd = std::to_string(size);
    mask.AntalKolumner = columns;
    std::vector<Relation> relations;
    relations.reserve(pieces.size());
    for (const auto& [from, length] : pieces) {
        relations.push_back({.Källa = static_cast<int>(relations.size()) + 1, .FrånPos = from, .Längd = length});
    }
    return {mask, relations};
}

/// Every record as a line of its entries, and whether it is uneven.
std::string read(const LoadedMask& mask, std::string_view file) {
    const TemporaryFolder folder;
    folder.write("pris.txt", file);
    PriceFile price(folder / "pris.txt");
    MaskRecordReader reader(price, mask);
    std::string text;
    while (reader.next()) {
        for (int number = 1; number <= reader.entries().size(); ++number) {
            if (number > 1) text += '|';
            text += reader.entries().text(number);
        }
        if (reader.uneven()) text += " uneven";
        text += '\n';
    }
    return text;
}

const std::vector<std::pair<int, int>> kOne{{1, 1}}, kThree(3), kFive(5);

TEST(MaskRecordReader, CutsLines) {
    const struct {
        const char* fault;
        int lines;
        const char *file, *expected;
    } cases[] = {
        {"a cut last record is dropped or cleared", 3, "1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n",
         "1|2|3\n4|5|6\n7|5|6 uneven\n"},
        {"a CR does not end a line", 1, "a\rb\r", "a\nb\n"},
        {"a lone LF ends a line", 1, "a\nb\r\nc", "a\nb\nc\n"},
        {"an empty line is no record", 1, "a\r\n\r\nb\r\n", "a\n\nb\n"},
        {"the last line needs an end", 1, "a\r\nb", "a\nb\n"},
        {"blanks and NUL belong to the text", 1, " a \r\n", "a\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(
            read(maskOf('F', c.lines, std::vector<std::pair<int, int>>(static_cast<std::size_t>(c.lines))), c.file),
            c.expected);
    }
}

TEST(MaskRecordReader, CutsTabs) {
    const struct {
        const char* fault;
        int columns;
        const char *file, *expected;
    } cases[] = {
        {"a short line clears entries, or its last text is not the last entry", 5, "1\t2\t3\t4\t5\r\na\tb\r\n",
         "1|2|3|4|5\na|2|3|4|b uneven\n"},
        {"text behind too many tabs is not the last entry", 3, "a\tb\tc\td\r\n", "a|b|d uneven\n"},
        {"text behind far too many tabs", 3, "a\tb\tc\td\te\r\n", "a|b|e uneven\n"},
        {"a line without tab is the first entry", 3, "1\t2\t3\r\na\r\n", "1|2|3\n1|2|a uneven\n"},
        {"the key of an empty line is not the one before", 3, "1\t2\t3\r\n\r\n", "1|2|3\n1|2| uneven\n"},
        {"a tab at the end", 2, "a\t\r\n", "a|\n"},
        {"never read from a sample: the highest source counts", 0, "a\tb\tc\r\n", "a|b|c\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const auto entries = static_cast<std::size_t>(c.columns == 0 ? 3 : c.columns);
        EXPECT_EQ(read(maskOf('T', 0, std::vector<std::pair<int, int>>(entries), c.columns), c.file), c.expected);
    }
}

TEST(MaskRecordReader, CutsFixedRecords) {
    const std::vector<std::pair<int, int>> pieces{{1, 4}, {5, 2}};
    const struct {
        const char *fault, *file, *expected;
    } cases[] = {
        {"the separator is not dropped", "4711aa\n4712bb\n", "4711|aa\n4712|bb\n"},
        {"any character is a separator", "4711aaX4712bb", "4711|aa\n4712|bb\n"},
        {"CR LF does not drift", "4711aa\r\n4712bb\r\n", "4711|aa\n\n471|2b\n\r\n|\n"},
        {"a piece behind the end keeps the old text", "4711aa\n4712", "4711|aa\n4712| uneven\n"},
        {"a piece over the end is empty", "4711aa\n4712b", "4711|aa\n4712|b uneven\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(read(maskOf('P', 6, pieces), c.file), c.expected);
    }
    EXPECT_EQ(read(maskOf('P', 6, {{0, 4}, {5, 0}}), "4711aa\n"), "|\n") << "no start or no length is a piece";
}

TEST(MaskRecordReader, CountsBytesAndDecodesAfterwards) {
    EXPECT_EQ(read(maskOf('P', 4, {{1, 2}, {3, 2}}),
                   "\xE5\xE4"
                   "ab\n"),
              "åä|ab\n")
        << "positions count characters";
    EXPECT_EQ(read(maskOf('T', 0, kThree, 3, 'J'), "\x86\t\x84\t\x94"), "å|ä|ö\n") << "a DOS file is not converted";
    EXPECT_EQ(read(maskOf('T', 0, kThree, 3), "\xE5\t\xE4\t\xF6"), "å|ä|ö\n") << "a Windows file is not converted";
}

TEST(MaskRecordReader, KeepsNulAndSubstituteAsCharacters) {
    using namespace std::string_view_literals;
    EXPECT_EQ(read(maskOf('F', 1, kOne),
                   "\0a\x1A"
                   "b\0\r\nc\x1A"sv),
              "a\x1A"
              "b\nc\n");
}

TEST(LoadedMask, SizesThatCannotBe) {
    Mask mask;
    mask.AntalRader = "1E9";
    EXPECT_EQ(LoadedMask(mask, {}).entries, 9999) << "a list of that size";
    mask.AntalRader = "-5";
    EXPECT_TRUE(LoadedMask(mask, {}).emptyRecords());
    mask.AntalRader = "två";
    EXPECT_TRUE(LoadedMask(mask, {}).emptyRecords());
}

TEST(LoadedMask, TheLastRelationForAPurposeCounts) {
    Mask mask;
    const LoadedMask loaded(mask, {{.Källa = 1, .Mål = 1, .Division = 'S'},
                                   {.Källa = 2, .Mål = 4, .Division = 'S'},
                                   {.Källa = 3, .Mål = 21, .Division = '2'},
                                   {.Källa = 4, .Mål = 21, .Division = '1'}});
    EXPECT_EQ(loaded.keyTarget, 4);
    EXPECT_EQ(loaded.key.entry, 2);
    EXPECT_EQ(loaded.prices[0].entry, 4);
    EXPECT_EQ(loaded.prices[0].Division, '1');
}

}  // namespace
}  // namespace kolmera::test
