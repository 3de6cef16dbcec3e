#include "import/rejects/rejectfile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "definitions/joboptions.h"
#include "history/runfolder.h"
#include "tradeformats/tradeworld.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;
using Outcome = Rejects::Outcome;

class RejectWorld : public TradeWorld {
  public:
    explicit RejectWorld(const std::string& name, const std::optional<MaskSpec>& spec = std::nullopt)
        : TradeWorld(name) {
        keeping = keptInDataFolder(state);
        job.fromGroup = "1000";
        job.toGroup = "1999";
        if (!spec) return;
        job.mask = "Testmask";
        mask(*spec);
    }
    [[nodiscard]] RecordReader reader() const { return RecordReader(RunFolder(data()).file(keeping->id)); }
    [[nodiscard]] fs::path target() const { return data() / "rejects.txt"; }
    Outcome write() { return writeRejects(reader(), target()).outcome; }
    [[nodiscard]] std::string written() const {
        std::ifstream file(target(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// What the company holds, whatever the order in which it came there.
    [[nodiscard]] std::string holds() const {
        auto lines = split(rows("Produkt", "Nummer, Benämning, Inpris, 1Utpris, Leverantör, Prisändrdat, Grupp") +
                               rows("Levprislista", "Produktnr, Leverantör, Datum, Inpris"),
                           "\n");
        std::ranges::sort(lines);
        std::string text;
        for (const std::string& held : lines) text += held + "\n";
        return text;
    }
};

struct Error {
    std::string wrong, right;  ///< of each the first in the file
};

struct Case {
    const char* format;
    const char* job;
    std::optional<MaskSpec> mask;
    std::string correct;
    std::vector<Error> errors;
    std::string rejects;
};

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

MaskSpec maskOf(char structure) {
    MaskSpec mask{.structure = structure, .lines = 3, .length = 20};
    mask.relations = {{1, "Nummer", 'S', 'U', 1, 4}, {2, "Benämning", 'I', 'U', 5, 8}, {3, "Inpris", 'I', 'U', 13, 8}};
    return mask;
}

std::string finfo(std::string_view number, std::string_view price) {
    return line({{1, "AB"}, {29, number}, {116, "Kabel \x86"}, {246, price}, {264, "20260105"}, {329, "00020000"}});
}

std::vector<Case> cases() {
    const std::string article = "1 1871234Blandare \x94                 ST  0432\r\n";
    const std::string other = "1 1879999Kran                       ST  0432\r\n";
    const std::string eio = "101234567Kabel \xE5                    20260105\r\n";
    return {
        {"tabs, code page 1252",
         "T",
         maskOf('T'),
         "A\tPenna \xE5\t10,50\r\nB\tBok\t2,00\r\n\r\nC\tSax\t3,00\r\n",
         {{"1O,50", "10,50"}, {"Sax\t\r\n", "Sax\t3,00\r\n"}},
         "A\tPenna \xE5\t1O,50\r\nC\tSax\t\r\n"},
        {"lines, the last record cut",
         "F",
         maskOf('F'),
         "A\rPenna\r1,50\rB\rBok\r2,00\rC\rSax\r3,00\r",
         {{"1,5O", "1,50"}, {"Sax\r", "Sax\r3,00\r"}},
         "A\rPenna\r1,5O\rC\rSax\r"},
        {"fixed lengths, no separator at the end",
         "P",
         maskOf('P'),
         "A   Penna   00001,50\nB   Bok     00002,00\nC   Sax     00003,00",
         {{"00001,5O", "00001,50"}, {"0000 3,0", "00003,00"}},
         "A   Penna   00001,5O\nC   Sax     0000 3,0"},
        {"EIO: the price of one supplier of an article",
         "(EIO)",
         std::nullopt,
         "0head\r\n" + eio +
             "2AB00010000 R1  \r\n2CD00012000 R1  \r\n3XX00012000 R1  \r\n107654321Lampa                    "
             "20260105\r\n2AB00030000\r\n2CD00013000\r\n",
         {{"2CD000l2000", "2CD00012000"}, {"2Cd00013000", "2CD00013000"}},
         eio + "2CD000l2000 R1  \r\n107654321Lampa                    20260105\r\n2Cd00013000\r\n"},
        {"RSK: headers and articles come once, in the order of the file",
         "(RSK)",
         std::nullopt,
         "0260105\r\n" + article + "2AB00010000\r\n0260201\r\n2CD00011000\r\n2AB00012000\r\n0260301\r\n" + other +
             "2AB00013000\r\n2CD00014000\r\n",
         {{"2CDOOO11000", "2CD00011000"}, {"2ABOOO12000", "2AB00012000"}, {"2CDOOO14000", "2CD00014000"}},
         article + "0260201\r\n2CDOOO11000\r\n2ABOOO12000\r\n0260301\r\n" + other + "2CDOOO14000\r\n"},
        {"FINFO: lines outside the groups are no rejects",
         "(FINFO)",
         std::nullopt,
         finfo("15001", "00010000") + finfo("30001", "00010000") + finfo("15002", "00020000"),
         {{finfo("15002", "0002OOOO"), finfo("15002", "00020000")}},
         finfo("15002", "0002OOOO")},
    };
}

TEST(RejectFile, ARunAndItsCorrectedRejectsEqualARunOfTheCorrectFile) {
    for (Case& c : cases()) {
        SCOPED_TRACE(c.format);
        RejectWorld world(c.job, c.mask), correct(c.job, c.mask);
        std::string file = c.correct;
        for (const Error& error : c.errors) file = replaced(file, error.right, error.wrong);
        world.rawPriceFile(file + '\x1A');
        (void)world.run();
        ASSERT_EQ(world.write(), Outcome::Written);
        EXPECT_EQ(world.written(), c.rejects);
        std::string corrected = world.written();
        for (const Error& error : c.errors) corrected = replaced(corrected, error.wrong, error.right);
        world.rawPriceFile(corrected);
        (void)world.run();
        correct.rawPriceFile(c.correct);
        (void)correct.run();
        EXPECT_EQ(world.holds(), correct.holds());
        EXPECT_EQ(world.write(), Outcome::None) << "the corrected file has rejects";
        EXPECT_FALSE(fs::exists(world.target())) << "an older file stands for rejects of this run";
    }
}

TEST(RejectFile, OnlyTheFileThatWasReadIsCut) {
    const std::string file = "A\tPenna\tx\r\nB\tBok\t2\r\n";
    const struct {
        const char* fault;
        bool copied;
        std::string now;  ///< "-": removed
        Outcome expected;
    } cases[] = {
        {"another file is cut", false, "A\tPenna\ty\r\nB\tBok\t2\r\n", Outcome::Changed},
        {"the copy is not used", true, "-", Outcome::Written},
        {"the copy is not used for a changed file", true, "A\r\n", Outcome::Written},
        {"a file that is gone has no rejects", false, "-", Outcome::NoFile},
        {"a file written again is another", false, file, Outcome::Written},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        RejectWorld world("T", maskOf('T'));
        world.keeping->copiesPriceFile = c.copied;
        world.rawPriceFile(file);
        (void)world.run();
        if (c.now == "-") {
            fs::remove(world.data() / "pris.txt");
        } else {
            world.rawPriceFile(c.now);
        }
        std::ofstream(world.target()) << "older";
        EXPECT_EQ(world.write(), c.expected);
        EXPECT_EQ(world.written(), c.expected == Outcome::Written ? "A\tPenna\tx\r\n" : "older");
    }
}

TEST(RejectFile, HasTheRowsThatConversionCouldNotKeep) {
    RejectWorld world("T", maskOf('T'));
    SourceSettings source;
    source.format.headings = false;
    JobOptionsFile(world.data()).setSource(world.job.name, source);
    world.rawPriceFile("A;\u017B;1\nB;Bok;2\n");
    EXPECT_EQ(world.run().report.count(Remark::LackingCharacters), 1);
    EXPECT_EQ(world.write(), Outcome::Written) << "told that there is nothing to correct";
    EXPECT_EQ(world.written(), "A;\u017B;1\n");
}

TEST(RejectFile, ThePriceFileIsNeverWrittenOver) {
    RejectWorld world("T", maskOf('T'));
    world.rawPriceFile("A\tPenna\tx\r\n");
    (void)world.run();
    const fs::path file = world.data() / "pris.txt", link = world.data() / "link.txt";
    fs::create_symlink(file, link);
    for (const fs::path& target : {file, link, world.data() / "." / "pris.txt"}) {
        EXPECT_EQ(writeRejects(world.reader(), target).outcome, Outcome::PriceFile) << target;
    }
    EXPECT_EQ(fs::file_size(file), 11U);
    EXPECT_EQ(writeRejects(world.reader(), world.target(), [] { return false; }).outcome, Outcome::Written);
    EXPECT_TRUE(world.reader().place(1)) << "the place of a record with a remark is not known";
}

}  // namespace
}  // namespace kolmera::test
