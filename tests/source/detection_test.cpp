#include "source/detection/detection.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <nlohmann/json.hpp>

#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "source/detection/recordlength.h"
#include "source/sourcejson.h"
#include "spreadsheet/workbookparts.h"
#include "support/errorof.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

using namespace std::string_view_literals;
using enum CharacterSet;

std::string encoded(std::string_view text, CharacterSet characters) {
    const auto page = [&](CodePage codePage) { return fromUtf8(text, codePage); };
    switch (characters) {
        case Windows1252:
            return page(CodePage::Windows1252);
        case Latin1:
            return page(CodePage::Latin1);
        case Latin9:
            return page(CodePage::Latin9);
        case Oem850:
            return page(CodePage::Oem850);
        case Utf8:
            return std::string(text);
        case Utf16Le:
        case Utf16Be:
            break;
    }
    std::string bytes;
    while (!text.empty()) {
        const FirstCharacter first = firstCharacter(text);
        const char high = static_cast<char>(*first.character >> 8);
        const char low = static_cast<char>(*first.character & 0xFF);
        bytes += characters == Utf16Le ? low : high;
        bytes += characters == Utf16Le ? high : low;
        text.remove_prefix(first.length);
    }
    return bytes;
}

/// What a file is expected to be. A sign of '?' is not looked at: the file does not tell.
struct Expected {
    CharacterSet characters = Utf8;
    char delimiter = ';';
    bool headings = true;
    std::uint64_t skip = 0;
    char decimal = ',';
    std::string thousands = {};
    DateOrder dates = DateOrder::Unknown;
    char quote = '"';
};

struct TextFile {
    const char* oddity;
    std::string text;  ///< UTF-8; written in the expected character set
    Expected expected;
    const char* missed = "";  ///< the properties that are known to be guessed wrong
};

/// The hits of each property over all files.
class Hits {
  public:
    template <class Value>
    void look(const char* oddity, std::string_view missed, const char* property, const Value& found,
              const Value& expected) {
        auto& [hits, all] = counts_[property];
        ++all;
        if (found == expected) ++hits;
        const bool isKnown = missed.find(property) != std::string_view::npos;
        EXPECT_EQ(found == expected, !isKnown) << oddity << ": " << property;
    }
    void print() const {
        for (const auto& [property, count] : counts_)
            fmt::print("{:12} {} of {}\n", property, count.first, count.second);
    }

  private:
    std::map<std::string, std::pair<int, int>> counts_;
};

constexpr auto kDmy = DateOrder::DayMonthYear;
constexpr auto kYmd = DateOrder::YearMonthDay;
constexpr auto kMdy = DateOrder::MonthDayYear;

std::vector<TextFile> textFiles() {
    const std::string plain =
        "Artikelnr;Benämning;Pris\n4711;Rör å böj;12,50\n4712;Ändhylsa;8,00\n4713;Övergång;103,25\n";
    return {
        {"semicolons in UTF-8", plain, {}},
        {"UTF-8 with a mark", "\xEF\xBB\xBF" + plain, {}},
        {"CR alone ends lines", replaceAll(plain, "\n", "\r"), {}},
        {"Windows-1252", plain, {.characters = Windows1252}},
        {"code page 850", replaceAll(plain, "\n", "\r\n"), {.characters = Oem850}},
        {"code page 850, capitals only",
         "ARTNR;BENÄMNING;PRIS\n1;RÖR I MÄSSING;1,50\n2;LÅS;2,50\n",
         {.characters = Oem850}},
        {"a single letter above ASCII",
         "Artnr;Namn;Pris\n1;Bult;1,50\n2;Mutter;2,50\n3;Rör;3,50\n",
         {.characters = Windows1252}},
        {"a single letter of code page 850",
         "Artnr;Namn;Pris\n1;Bult;1,50\n2;Mutter;2,50\n3;Rör;3,50\n",
         {.characters = Oem850}},
        {"the euro of ISO 8859-15",
         "Artnr;Namn;Pris\n1;Bult;1,50 €\n2;Rör;2,50 €\n3;Lås;3,00 €\n",
         {.characters = Latin9}},
        {"the euro of Windows-1252",
         "Artnr;Namn;Pris\n1;Bult;1,50 €\n2;Rör;2,50 €\n3;Lås;3,00 €\n",
         {.characters = Windows1252}},
        {"halves and degrees instead of letters",
         "Nr;Text;Pris\n1;Pipe ½ 90°;1,50\n2;Pipe ¾ 45°;2,50\n",
         {.characters = Windows1252}},
        {"UTF-16 with a mark", "\uFEFF" + plain, {.characters = Utf16Le}},
        {"UTF-16 without one", plain, {.characters = Utf16Be}},
        {"nothing above ASCII", "Art;Pris\n1;1,50\n2;2,50\n", {}},
        {"tabs, with semicolons in texts", "Artnr\tText\tPris\n1\ta; b; c\t1,50\n2\td; e\t2,50\n", {.delimiter = '\t'}},
        {"commas, with points in numbers",
         "item,description,price\n1,Bolt,1.50\n2,Nut,2.50\n3,Pipe,1000.25\n",
         {.delimiter = ',', .decimal = '.'}},
        {"commas within quotes",
         "item,description,price\n1,\"Bolt, long\",1.50\n2,\"Nut, small\",2.50\n",
         {.delimiter = ',', .decimal = '.'}},
        {"commas in semicolon cells more even than semicolons",
         "Nr;Text;Pris\n1;a, b;1,50\n2;c, d;2,50\n3;e, f;3,50\n",
         {}},
        {"bars", "Artnr|Text|Pris\n1|Bult|1,50\n2|Mutter|2,50\n", {.delimiter = '|', .decimal = ','}},
        {"inches begin cells", "Artnr;Text;Pris\n1;\"3/4 rör;1,50\n2;\"1/2 rör;2,50\n3;x;3,50\n", {.quote = '\0'}},
        {"inches within quotes",
         "\"Artnr\";\"Text\";\"Pris\"\n\"1\";\"3/4\" rör\";\"1,50\"\n\"2\";\"x\";\"2,50\"\n",
         {}},
        {"line breaks within quotes", "Artnr;Text;Pris\n1;\"a\nb\";1,50\n2;\"c\nd\";2,50\n", {}},
        {"letterhead above the headings",
         "Rörgrossisten AB\nPrislista 2026\n\nArtikelnr;Benämning;Pris\n1;Rör;1,50\n2;Böj;2,50\n",
         {.skip = 3}},
        {"letterhead filled up with delimiters",
         "Rörgrossisten AB;;;\nGäller "
         "från;2026-01-01;;\nArtikelnr;Benämning;Enhet;Pris\n1;Rör;ST;1,50\n2;Böj;ST;2,50\n",
         {.skip = 2}},
        {"no headings", "4711;Rör;1,50\n4712;Böj;2,50\n4713;Lås;12,00\n", {.headings = false}},
        {"no headings, letterhead",
         "Rörgrossisten AB\n4711;Rör;1,50\n4712;Böj;2,50\n4713;Lås;12,00\n",
         {.headings = false, .skip = 1}},
        {"headings without a word of the trade", "Ref;Klass;Belopp\nA1;x;1,50\nA2;y;2,50\n", {}},
        {"a year among the headings", "Artikelnr;Benämning;2026\n1;Rör;1,50\n2;Böj;2,50\n", {}},
        {"only texts", "Artikel;Namn\nA;Bult\nB;Mutter\nC;Bricka\n", {.decimal = '?'}},
        {"headings of two lines",
         "Artikel;;Priser;\nNr;Namn;Brutto;Netto\n1;Rör;1,50;1,20\n2;Böj;2,50;2,00\n",
         {.skip = 1}},
        {"empty cells in most rows", "Artnr;Text;Pris;Anm;EAN\n1;Rör;1,50;;\n2;Böj;2,50;;\n3;Lås;3,50;utgår;\n", {}},
        {"groups between the rows", "Artnr;Text;Pris\nRÖR;;\n1;Rör;1,50\nBÖJAR;;\n2;Böj;2,50\n3;Böj;3,50\n", {}},
        {"points between thousands", "Nr;Text;Pris\n1;Rör;1.250,00\n2;Böj;980,50\n", {.thousands = "."}},
        {"commas between thousands",
         "item;text;price\n1;Pipe;1,250.00\n2;Bend;980.50\n",
         {.decimal = '.', .thousands = ","}},
        {"blanks between thousands", "Nr;Text;Pris\n1;Rör;1 250,00\n2;Böj;980,50\n", {.thousands = " "}},
        {"hard blanks between thousands",
         "Nr;Text;Pris\n1;Rör;1\u00A0250,00\n2;Böj;2\u00A0980,50\n",
         {.thousands = "\u00A0"}},
        {"Swiss thousands",
         "Nr;Text;Preis Pris\n1;Rohr;1'250.00\n2;Bogen;980.50\n",
         {.decimal = '.', .thousands = "'"}},
        {"points and commas in other rows",
         "Nr;Text;Pris\n1;Rör;1.250\n2;Böj;2.980\n3;Lås;12,50\n4;x;1.000.000\n",
         {.thousands = "."}},
        {"three decimals", "Nr;Text;Pris\n1;Rör;0,125\n2;Böj;12,500\n3;x;1250,750\n", {}},
        {"currencies around numbers",
         "Nr;Text;Pris\n1;Rör;SEK 1.250,00\n2;Böj;12,50 kr\n3;x;9,00 kr\n",
         {.thousands = "."}},
        {"days first", "Nr;Datum;Pris\n1;01.02.2026;1,50\n2;23.11.2026;2,50\n", {.dates = kDmy}},
        {"days first, by slashes", "Nr;Datum;Pris\n1;01/02/2026;1,50\n2;23/11/2026;2,50\n", {.dates = kDmy}},
        {"months first", "item;date;price\n1;02/01/2026;1.50\n2;11/23/2026;2.50\n", {.decimal = '.', .dates = kMdy}},
        {"years first", "Nr;Datum;Pris\n1;2026-02-01;1,50\n2;2026-11-23;2,50\n", {.dates = kYmd}},
        {"years of two digits", "Nr;Datum;Pris\n1;26-02-01;1,50\n2;26-11-23;2,50\n", {.dates = kYmd}},
        {"dates without signs", "Nr;Datum;Pris\n1;20260201;1,50\n2;20261123;2,50\n", {.dates = kYmd}},
        {"article numbers like dates", "Nr;Text;Pris\n20260101;Rör;1,50\n45129988;Böj;2,50\n99887766;x;3,50\n", {}},
        {"two dates that tell nothing", "Nr;Datum;Pris\n1;01/02/2026;1,50\n2;03/04/2026;2,50\n", {.dates = kDmy}},
        {"delimiter at the end of every line", "Nr;Text;Pris;\n1;Rör;1,50;\n2;Böj;2,50;\n", {}},
        {"rows without their last cells", "Nr;Text;Pris;Anm;Mer\n1;Rör;1,50\n2;Böj;2,50;x\n3;Lås;3,50\n", {}},
        {"sums below the table", "Nr;Text;Pris\n1;Rör;1,50\n2;Böj;2,50\n;Summa;4,00\nSlut\n", {}},
        {"a single row", "Artikelnr;Benämning;Pris\n1;Rör;12,50\n", {}},
        {"the delimiter is told by a first line", "sep=;\nNr;Text;Pris\n1;Rör;1,50\n2;Böj;2,50\n", {.skip = 1}},
        {"units below the headings", "Artikelnr;Enhet;Pris\n;st/m;kr\n1;ST;1,50\n2;M;2,50\n", {}},
        {"commas in quotes as decimal signs", "nr,text,pris\n1,Rör,\"12,50\"\n2,Böj,\"8,00\"\n", {.delimiter = ','}},
        {"minus behind numbers, percents", "Nr;Pris;Rabatt\n1;12,50-;25 %\n2;8,25;12,5 %\n", {}},
        {"times behind dates",
         "Nr;Ändrad datum;Pris\n1;2026-11-23 10:15;1,50\n2;2026-01-02 00:00;2,50\n",
         {.dates = kYmd}},
        {"headings alone", "Artikelnr;Benämning;Pris\n", {.decimal = '?'}},
        {"all kinds of line ends", "Nr;Text;Pris\r\n1;Rör;1,50\n2;Böj;2,50\r3;Lås;3,50\r\n", {}},
        {"capitals in Windows-1252", "NR;BENÄMNING;PRIS\n1;RÖR;1,50\n2;LÅS;2,50\n", {.characters = Windows1252}},
        {"Danish in code page 850", "Nr;Tekst;Pris\n1;Rør på mål;1,50\n2;Lås, sæt;2,50\n", {.characters = Oem850}},
        {"Finnish in ISO 8859-1", "Nr;Text;Pris\n1;Sähköjohto;1,50\n2;Käämi;2,50\n", {.characters = Windows1252}},
        {"long texts with commas and points",
         "Nr;Text;Pris\n1;Rör, 3.5 m, svart. Lev. i kartong;1,50\n2;Böj, 2.5 m;2,50\n",
         {}},
        {"prices without decimals", "Nr;Text;Pris\n1;Rör;1250\n2;Böj;980\n", {.decimal = '?'}},
        {"tabs at the ends of lines", "Nr\tText\tPris\t\t\n1\tRör\t1,50\t\t\n2\tBöj\t2,50\t\t\n", {.delimiter = '\t'}},
        {"a column of prices and one of article numbers with points",
         "Artikel;Text;Pris\n12.345;Rör;1,50\n12.346;Böj;2,50\n",
         {}},
        {"letters of other languages",
         "Nr;Text;Pris\n1;Côté près;1,50\n2;Überwurf Größe;2,50\n3;Ærø;3,50\n",
         {.characters = Windows1252}},
    };
}

TEST(Detection, HitsWhatTextsAre) {
    Hits hits;
    const TemporaryFolder folder;
    for (const TextFile& file : textFiles()) {
        folder.write("prices", encoded(file.text, file.expected.characters));
        const SourceFormat found = detectSource(folder / "prices").format;
        const auto look = [&](const char* property, const auto& value, const auto& expected) {
            hits.look(file.oddity, file.missed, property, value, expected);
        };
        look("kind", nameOf(found.kind), "delimited"sv);
        look("characters", nameOf(found.characters), nameOf(file.expected.characters));
        look("delimiter", found.delimiter, file.expected.delimiter);
        look("quote", found.quote, file.expected.quote);
        look("headings", found.headings, file.expected.headings);
        look("skip", found.skip, file.expected.skip);
        if (file.expected.decimal != '?') look("decimal", found.decimalSign, file.expected.decimal);
        look("thousands", found.thousandsSign, file.expected.thousands);
        look("dates", nameOf(found.dateOrder), nameOf(file.expected.dates));
    }
    hits.print();
}

TEST(Detection, KnowsOtherKindsOfFiles) {
    const std::string rows =
        R"(<row r="1"><c t="inlineStr"><is><t>Prislista</t></is></c></row>)"
        R"(<row r="3"><c t="inlineStr"><is><t>Artikelnr</t></is></c><c t="inlineStr"><is><t>Pris</t></is></c></row>)"
        R"(<row r="4"><c><v>1</v></c><c><v>1.5</v></c></row><row r="5"><c><v>2</v></c><c><v>2.5</v></c></row>)";
    const TemporaryFolder folder;
    writeZip(folder / "xlsx", workbookOf(rows));
    writeZip(folder / "packed", {{"Prislista.xlsx", folder.read("xlsx")}, {"Läs mig.txt", "x"}, {"bild.png", "x"}});
    writeZip(folder / "one", {{"a.csv", "Nr;Pris\n1;1,5\n"}});
    folder.write("letter.xls", savedBytes("letter.xls"));
    folder.write("fixed",
                 "4711      Rör 12 mm            12,50\n4712-1    Böj                   8,00\n"
                 "47        Lång hylsa i stål  1103,25\n4713      Lås                  10,00\n"
                 "4714      Bult                 2,00\n");
    folder.write("xml",
                 "<Lista><Huvud><Fil>a</Fil></Huvud><Grupp namn=\"A\"><Artikel nr=\"1\"><Namn>Rör</Namn><Pris>1</Pris>"
                 "</Artikel><Artikel nr=\"2\"><Namn>Böj</Namn><Pris>2</Pris></Artikel></Grupp><Grupp namn=\"B\">"
                 "<Artikel nr=\"3\"><Namn>x</Namn><Pris>3</Pris><Mått/></Artikel></Grupp></Lista>");
    std::string box =
        "┌────────┬───────────────┬──────────┐\n│ Varenr │ Betegnelse    │ "
        "Nettopris│\n├────────┼───────────────┼──────────┤\n";
    std::string pages;
    std::string joined;
    for (int i = 0; i < 60; ++i) {
        const char* name =
            std::array{"Rør", "Låsemøtrik M8", "Slange, grøn"}[static_cast<std::size_t>(i * 7919 / 13 % 3)];
        const std::string price = fmt::format("{},{:02}", i * 37, i);
        const auto blanks = 14 - static_cast<int>(characterCount(name));
        box += fmt::format("│ {:6} │ {}{:{}}│{:>9} │\n", 4000 + i, name, "", blanks, price);
        if (i % 20 == 0)
            pages +=
                fmt::format("\fAB Grossisten     PRISLISTA      SIDA {}\nARTNR    TEXT                 PRIS\n{:-<34}\n",
                            i / 20 + 1, "");
        pages += fmt::format("{:<9}{}{:{}}{:>11}\n", 300'000 + i, name, "", blanks, price);
        joined += fmt::format("{:06}{}{:{}}{:08}", 4000 + i, name, "", blanks, i * 3700 + i);
    }
    folder.write("box", encoded(box, Oem850));
    folder.write("pages", encoded(pages, Oem850));
    folder.write("joined", encoded(joined, Windows1252));
    const struct {
        const char* file;
        const char* format;
    } cases[] = {
        {"box", R"({"kind":"fixed","characters":"cp850","starts":[0,11,28],"headings":true,"decimal-sign":","})"},
        {"pages",
         R"({"kind":"fixed","characters":"cp850","starts":[0,9,27],"skip":1,"headings":true,"decimal-sign":","})"},
        {"joined", R"({"kind":"fixed","characters":"windows-1252","starts":[0,20],"length":28,"decimal-sign":","})"},
        {"xlsx", R"({"kind":"xlsx","skip":2,"headings":true})"},
        {"packed", R"({"kind":"xlsx","member":"Prislista.xlsx","skip":2,"headings":true})"},
        {"one", R"({"kind":"delimited","headings":true,"decimal-sign":","})"},
        {"letter.xls", R"({"kind":"xls","headings":true})"},
        {"fixed", R"({"kind":"fixed","starts":[0,10,29],"decimal-sign":","})"},
        {"xml", R"({"kind":"xml","record":"Lista/Grupp/Artikel","fields":["@nr","Namn","Pris","Mått"]})"},
    };
    for (const auto& c : cases) EXPECT_EQ(toJson(detectSource(folder / c.file).format).dump(), c.format) << c.file;
    EXPECT_EQ(detectSource(folder / "packed").members.size(), 3U);
}

/// Records as programs write them: number, text, number, with what stands between two of them.
std::string records(int count, int number, int text, int price, std::string_view between, bool isPadded) {
    constexpr std::array<std::string_view, 5> kTexts = {"SKRUV M6X20", "Mutter", "Lang hylsa 3/4", "BRICKA", "Ror"};
    std::string bytes;
    for (int i = 0; i < count; ++i) {
        const std::string_view name =
            kTexts.at(static_cast<std::size_t>(i * 7919 / 13 % 5)).substr(0, static_cast<std::size_t>(text));
        bytes += fmt::format("{:0{}}{:{}}", 1000 + i * 7, number, name, text);
        bytes += isPadded ? fmt::format("{:{}}", i * 379 % 9000, price) : fmt::format("{:0{}}", i * 379 % 9000, price);
        bytes += between;
    }
    return bytes;
}

TEST(Detection, TellsHowLongRecordsAre) {
    const struct {
        const char* kind;
        std::string text;
        std::size_t length;
    } cases[] = {
        {"nothing between", records(200, 8, 20, 10, "", false), 38},
        {"blanks before numbers", records(200, 8, 20, 10, "", true), 38},
        {"CR LF between", records(200, 8, 20, 10, "\r\n", false), 40},
        {"LF between", records(200, 8, 20, 10, "\n", true), 39},
        {"a last record without its end", records(200, 6, 30, 8, "", false).substr(0, 199 * 44 + 42), 44},
        {"few", records(5, 13, 30, 9, "", false), 52},
        {"three", records(3, 13, 30, 9, "", false), 52},
        {"long ones, mostly blank", records(100, 13, 350, 9, "", false), 372},
        {"digits only", records(300, 13, 0, 9, "", true), 22},
        {"short ones", records(300, 4, 6, 5, "", true), 15},
        {"a period that is half of the record", records(100, 8, 12, 8, records(1, 8, 12, 8, "", true), true), 56},
        {"a text of sentences",
         "Hej! Har kommer var nya prislista. Priserna galler fran mars och ar utan moms och frakt.", 0},
        {"one kind of character", std::string(500, 'x'), 0},
        {"too short", "4711 Skruv 12,50", 0},
        {"semicolons", "1;Skruv;12,50;st;4711;Mutter, lang;8,00;st;12;x;103,25;kg;99;Bricka M6;1,00;st;77;Bult;2,50;st",
         0},
    };
    for (const auto& c : cases) EXPECT_EQ(repeatedLength(c.text, true), c.length) << c.kind;
}

TEST(Detection, AsksWhereItIsNotSure) {
    const TemporaryFolder folder;
    folder.write("prices", "Nr;Text;Pris\n1;1\xBD;1,50\n2;\x94l;2,50\n");
    const Detection found = detectSource(folder / "prices");
    EXPECT_LT(found.confidence.characters, kSureEnough);
    EXPECT_EQ(found.characterSets.size(), 3U);
    // What the user says goes, and the rest is found under it.
    KnownOfSource known;
    known.delimiter = ',';
    known.characters = CharacterSet::Oem850;
    const Detection corrected = detectSource(folder / "prices", known);
    EXPECT_EQ(corrected.format.delimiter, ',');
    EXPECT_EQ(corrected.format.characters, CharacterSet::Oem850);
    EXPECT_EQ(corrected.confidence.delimiter, 1);
}

TEST(Detection, RefusesWhatIsNoTable) {
    const TemporaryFolder folder;
    const struct {
        const char* fault;
        std::string_view bytes;
        int error;
    } cases[] = {
        {"an empty file", "", errors::kUnknownSource},
        {"a PDF file", "%PDF-1.4 xxxx", errors::kUnknownSource},
        {"a page of the web", "<!DOCTYPE html><html>", errors::kUnknownSource},
        {"bytes of a program",
         "\x7F"
         "ELF\0\0\0\0\1\0\0\0\0\0\0\0\0\2"sv,
         errors::kUnknownSource},
        {"a zip that is cut short", "PK\3\4xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", errors::kUnreadableArchive},
    };
    for (const auto& c : cases) {
        folder.write("file", c.bytes);
        EXPECT_EQ(errorOf([&] { detectSource(folder / "file"); }), c.error) << c.fault;
    }
    EXPECT_EQ(errorOf([&] { detectSource(folder / "none"); }), errors::kFileNotFound);
    EXPECT_EQ(errorOf([&] { detectSource(folder.path()); }), errors::kUnknownSource);
}

}  // namespace
}  // namespace kolmera::test
