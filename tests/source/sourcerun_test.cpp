#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "definitions/joboptions.h"
#include "history/recordreader.h"
#include "history/runfolder.h"
#include "import/run/runcounts.h"
#include "lang/keys/run.h"
#include "lang/keys/source.h"
#include "platform/sha256.h"
#include "platform/tsv.h"
#include "source/conversion/sourceconverter.h"
#include "spreadsheet/workbookparts.h"
#include "support/companyrows.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

/// A world whose mask reads number, name, price and date, from tab columns, pieces or lines.
class SourceWorld : public World {
  public:
    explicit SourceWorld(char structure = 'T', bool oem = false) {
        mask({.structure = structure,
              .lines = 4,
              .length = 45,
              .columns = 4,
              .oem = oem,
              .relations = {{1, "Nummer", 'S', 'U', 1, 5},
                            {2, "Benämning", 'I', 'U', 6, 20},
                            {3, "Inpris", 'I', 'U', 26, 10},
                            {4, "Prisändrdat", 'I', 'U', 36, 8}}});
    }
    void source(const SourceSettings& settings) { JobOptionsFile(data()).setSource(job.name, settings); }
    std::string products() { return rows("Produkt", "Nummer, Benämning, Inpris, Prisändrdat"); }
};

constexpr const char* kExpected =
    "00471 Skruv; rostfri 1250.5 2026-04-03\n00472 Bult å \"M6\" -12 2026-11-23\n00473 Ärtsoppa 0.5 2026-01-02\n";

SourceSettings swedish(SourceKind kind) {
    SourceSettings settings;
    settings.format.kind = kind;
    settings.format.headings = true;
    settings.format.decimalSign = ',';
    settings.format.thousandsSign = " ";
    settings.format.dateOrder = DateOrder::DayMonthYear;
    settings.headings = {"Artikelnr", "Benämning", "Bruttopris", "Gäller från"};
    for (int column = 1; column <= 4; ++column)
        settings.columns.push_back(
            {.column = column, .from = {settings.headings[static_cast<std::size_t>(column - 1)], column}});
    return settings;
}

constexpr const char* kDelimited =
    "Artikelnr;Ny;Benämning;Gäller från;Bruttopris\n"
    "00471;x;\"Skruv; rostfri\";3.4.2026;1 250,50 kr\n"
    ";;\n"
    "00472;;\"Bult å \"\"M6\"\"\";23/11 2026;12,00-\n"
    "00473;;Ärtsoppa;2.1.26;,50\n"
    "Summa;;;;1 239,00\n";

constexpr const char* kXml =
    "<?xml version=\"1.0\"?><Lista><Vara><Artikelnr>00471</Artikelnr><Benämning>Skruv; rostfri</Benämning>"
    "<Bruttopris>1250,50</Bruttopris><Datum>3.4.2026</Datum></Vara>"
    "<Vara><Artikelnr>00472</Artikelnr><Benämning>Bult å \"M6\"</Benämning><Bruttopris>-12,00</Bruttopris>"
    "<Datum>2026-11-23</Datum></Vara>"
    "<Vara><Artikelnr>00473</Artikelnr><Benämning>Ärtsoppa</Benämning><Bruttopris>,5</Bruttopris><Datum>2/1/2026</"
    "Datum></Vara></Lista>";

std::string zipped(const Parts& parts) {
    const TemporaryFolder folder;
    writeZip(folder / "zip", parts);
    return folder.read("zip");
}

/// A sheet with a title above, numbers and dates as such, and a sum below.
std::string odsSheet() {
    const auto text = [](std::string_view value) {
        return fmt::format("<table:table-cell office:value-type=\"string\"><text:p>{}</text:p></table:table-cell>",
                           value);
    };
    const auto number = [](std::string_view value) {
        return fmt::format("<table:table-cell office:value-type=\"float\" office:value=\"{}\"/>", value);
    };
    const auto date = [](std::string_view value) {
        return fmt::format("<table:table-cell office:value-type=\"date\" office:date-value=\"{}\"/>", value);
    };
    const auto row = [](const std::string& cells) {
        return fmt::format("<table:table-row>{}</table:table-row>", cells);
    };
    const std::string empty = "<table:table-cell/>";
    return row(text("Prislista 2026")) +
           row(text("Bruttopris") + text("Gäller från") + text("Artikelnr") + text("Benämning")) +
           row(number("1250.5") + date("2026-04-03") + text("00471") + text("Skruv; rostfri")) +
           row(number("-12") + date("2026-11-23") + text("00472") + text("Bult å \"M6\"")) +
           row(number("0.5") + date("2026-01-02") + text("00473") + text("Ärtsoppa")) +
           row(number("1239") + empty + text("SUMMA"));
}

std::string ods() {
    return zipped({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
                   {"content.xml",
                    "<office:document-content xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
                    "xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\" "
                    "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"><office:body><office:spreadsheet>"
                    "<table:table table:name=\"Blad1\">" +
                        odsSheet() + "</table:table></office:spreadsheet></office:body></office:document-content>"}});
}

struct Kind {
    const char* name;
    std::string bytes;
    SourceSettings settings;
};

std::vector<Kind> kinds() {
    SourceSettings delimited = swedish(SourceKind::Delimited);
    delimited.leaveOut = {{.column = {"Artikelnr", 1}, .pattern = "summa*"}};
    delimited.columns[3].rule.replace = {{"23/11 2026", "23.11.2026"}};
    SourceSettings marked = delimited;
    SourceSettings sheet = swedish(SourceKind::Ods);
    sheet.leaveOut = delimited.leaveOut;
    sheet.format.skip = 1;
    SourceSettings xml = swedish(SourceKind::Xml);
    xml.format.record = "Vara";
    xml.format.fields = {"Artikelnr", "Benämning", "Bruttopris", "Datum"};
    xml.columns[3].from.heading = "Datum";
    SourceSettings packed = delimited;
    packed.format.member = "*.csv";
    packed.format.characters = CharacterSet::Windows1252;
    return {{"semicolons, UTF-8, LF", kDelimited, delimited},
            {"with a mark", std::string("\xEF\xBB\xBF") + kDelimited, marked},
            {"semicolons in a zip, Windows-1252",
             zipped({{"läs.txt", "x"}, {"p.csv", fromUtf8(kDelimited, CodePage::Windows1252)}}), packed},
            {"ods", ods(), sheet},
            {"xml", kXml, xml}};
}

TEST(SourceRun, EveryKindReadsAsTheSameRowsInTabColumns) {
    const auto check = [](char structure, bool oem, const Kind& kind) {
        SCOPED_TRACE(fmt::format("{} {} {}", structure, oem ? "DOS" : "Windows", kind.name));
        SourceWorld world(structure, oem);
        world.source(kind.settings);
        world.rawPriceFile(kind.bytes);
        const RunSummary summary = world.run();
        EXPECT_EQ(world.products(), kExpected);
        EXPECT_EQ(summary.records, 3);
        EXPECT_FALSE(summary.report.hasFaults());
    };
    for (const Kind& kind : kinds()) check('T', false, kind);
    check('T', true, kinds().front());
    check('P', true, kinds().front());
    check('F', false, kinds().front());
}

TEST(SourceRun, LinesAreTakenAsTheyAreWhereTheTextHasNoColumns) {
    SourceSettings settings;
    settings.format.delimiter = '\0';  // where there are no cells, quotes are letters
    SourceWorld lines('F', true);
    lines.source(settings);
    lines.rawPriceFile("00471\nSkruv; rostfri\n1250,5\n\n00472\n\"Bult å\n12\n20261123\n");
    lines.run();
    EXPECT_EQ(lines.products(), "00471 Skruv; rostfri 1250.5 -\n00472 \"Bult å 12 2026-11-23\n");
    SourceWorld pieces('P');
    pieces.source(settings);
    pieces.rawPriceFile("00471Skruv å             1250,5    20260403\n");
    pieces.run();
    EXPECT_EQ(pieces.products(), "00471 Skruv å 1250.5 2026-04-03\n");
}

TEST(SourceRun, HeadingsThatAreGoneOrDoubledStopIt) {
    const auto told = [](SourceWorld& world, ModuleKey text, const std::string& headings) {
        return world.texts().ModulTextMed(text, headings);
    };
    const struct {
        const char* fault;
        const char* headings;
        ModuleKey text;
        const char* told;
    } cases[] = {{"gone", "Artikelnr;Ny;Namn;Gäller från;Bruttopris", text::source::kHeadingsMissing, "\"Benämning\""},
                 {"doubled", "Artikelnr;BENÄMNING ;Benämning;Gäller från;Bruttopris", text::source::kHeadingsDoubled,
                  "\"Benämning\""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        SourceWorld world;
        const Kind kind = kinds().front();
        world.source(kind.settings);
        world.rawPriceFile(c.headings + kind.bytes.substr(kind.bytes.find('\n')));
        world.port.expectBeginning(told(world, c.text, c.told), world.texts().ModulText(text::source::kHeadingsTitle));
        EXPECT_FALSE(world.run().completed);
        EXPECT_EQ(world.products(), "");
    }
}

TEST(SourceRun, WhatDoesNotFitIsToldByTheRowThatTheUserSees) {
    SourceWorld world;
    SourceSettings settings = kinds().front().settings;
    world.source(settings);
    world.rawPriceFile(
        "Artikelnr;Benämning;Gäller \t från;Bruttopris\n"
        "1;\"två\nrader\";;5\n"
        "2;\u017Bó\u0142w;;5\n"
        "3;c;32.1.2026;5\n"
        "\n"
        "4;d;;1.50\n"
        "5;e\n"
        "Summa;;;5\n");
    const RunSummary summary = world.run();
    EXPECT_EQ(world.products(), "1 två rader 5 -\n2 ?ó?w 5 -\n3 c 5 -\n4 d 0 -\n5 e 0 -\n");
    const auto first = [&](Remark remark) {
        const RunReport::Tally& tally = summary.report.tally(remark);
        if (tally.examples.empty()) return std::string("none");
        const RunReport::Example& example = tally.examples.front();
        return fmt::format("{} {} {} {} {}", tally.count, example.record, example.product, example.column,
                           example.text);
    };
    EXPECT_EQ(first(Remark::BreakInValue), "1 2 1 Benämning två\\x0Arader");
    EXPECT_EQ(first(Remark::LackingCharacters), "1 4 2 Benämning \u017B\u0142");
    EXPECT_EQ(first(Remark::UnfitValue), "1 5 3 Gäller \t från 32.1.2026");
    EXPECT_EQ(first(Remark::NotNumber), "1 7 4 Produkt.Inpris ?1.50");
    EXPECT_EQ(first(Remark::UnevenRecord), "1 8 5  ");
    EXPECT_EQ(first(Remark::LeftOutRow), "1 9   summa*");
}

TEST(SourceRun, WhatCannotBeReadStopsItBeforeAnythingIsWritten) {
    const struct {
        const char* fault;
        std::string options, file;
        ModuleKey title;
    } cases[] = {
        {"settings that cannot be understood", R"({"jobs": {"Test": {"source": {"format": {"kind": "cvs"}}}}})",
         kDelimited, text::run::kCannotRunTitle},
        {"options that are no JSON", "{", kDelimited, text::run::kCannotRunTitle},
        {"no workbook", R"({"jobs": {"Test": {"source": {"format": {"kind": "xlsx"}}}}})", kDelimited,
         text::source::kUnreadableTitle}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        SourceWorld world;
        std::ofstream(world.data() / "KOLMERA.JSON") << c.options;
        world.rawPriceFile(c.file);
        world.port.expectBeginning("", world.texts().ModulText(c.title));
        EXPECT_FALSE(world.run().completed);
        EXPECT_EQ(world.products(), "");
    }
}

TEST(SourceRun, ItsRecordHasTheOriginalAndItsPreviewTheSameChanges) {
    SourceWorld world;
    const Kind kind = kinds().front();
    world.source(kind.settings);
    world.rawPriceFile(kind.bytes);
    JobOptionsFile(world.data()).setLimits(world.job.name, {.fewestRecords = 2});
    world.keeping.emplace(RecordKeeping{.folder = world.data() / "records", .user = "x", .copiesPriceFile = true});
    const auto changes = [](const RecordReader& record) {
        std::string lines;
        record.forEachChange([&](const RowChange& change) {
            lines += fmt::format("{} {} {}\n", change.record, change.table, change.cells.size());
            return true;
        });
        return lines;
    };
    const std::string previewed = changes(*world.preview().record);
    EXPECT_TRUE(world.runWithinLimits().completed);
    const RecordReader record(RunFolder::at(world.keeping->folder).file(world.keeping->id));
    EXPECT_EQ(changes(record), previewed);
    EXPECT_EQ(changes(record).substr(0, 10), "2 Produkt ");
    EXPECT_EQ(record.header().priceFile.size, static_cast<std::int64_t>(kind.bytes.size()));
    Sha256 digest;
    digest.add(kind.bytes);
    EXPECT_EQ(record.header().priceFile.sha256, digest.hexadecimal());
    std::string copy;
    record.forEachCopied([&](std::string_view bytes) { copy += bytes; });
    EXPECT_EQ(copy, kind.bytes);
}

TEST(SourceRun, OfATradeFormatGivesTheSameCompanyFromEveryCopyOfItsFile) {
    using enum CharacterSet;
    const auto utf16 = [](const std::string& text) {
        std::string bytes;
        for (std::string_view rest = text; !rest.empty();) {
            const FirstCharacter first = firstCharacter(rest);
            bytes.append({static_cast<char>(*first.character & 0xFF), static_cast<char>(*first.character >> 8)});
            rest.remove_prefix(first.length);
        }
        return bytes;
    };
    const struct {
        const char* copy;
        CharacterSet characters;
        const char* lineEnd;
        std::function<std::string(const std::string&)> stored;
    } copies[] = {
        {"UTF-8, LF", Utf8, "\n", [](const std::string& text) { return text; }},
        {"UTF-8 with a mark, in a zip", Utf8, "\r\n",
         [](const std::string& text) {
             return zipped({{"p.txt", "\xEF\xBB\xBF" + text}});
         }},
        {"UTF-16, CR", Utf16Le, "\r", utf16},
        {"Windows-1252, LF, in a zip", Windows1252, "\n",
         [](const std::string& text) {
             return zipped({{"p.txt", fromUtf8(text, CodePage::Windows1252)}});
         }},
        {"code page 850, CR", Oem850, "\r", [](const std::string& text) { return fromUtf8(text, CodePage::Oem850); }},
    };
    const struct {
        const char *job, *file, *codes[2];
        CodePage page;
    } formats[] = {{"(EIO)", "EIO.TXT", {"GR", "LY"}, CodePage::Windows1252},
                   {"(RSK)", "RSK.TXT", {"RV", "DR"}, CodePage::Oem850},
                   {"(FINFO)", "FINFO.TXT", {"TASSBY", "PARMNAS"}, CodePage::Oem850}};
    for (const auto& format : formats) {
        const auto outcome = [&](const std::string& bytes, const std::optional<SourceSettings>& source) {
            World world;
            world.job.name = format.job;
            world.job.mask.clear();
            world.job.fromGroup = "0";
            world.job.toGroup = "9";
            for (const char* number : {"1010", "1020"})
                world.add("Leverantör", {{"Nummer", std::string(number)}, {"Söknamn", std::string(number)}});
            world.coupling(format.codes[0], "1010", true);
            world.coupling(format.codes[1], "1020");
            world.rawPriceFile(bytes);
            JobOptionsFile(world.data()).setSource(world.job.name, source);
            const RunSummary summary = world.run();
            EXPECT_GT(summary.newProducts, 20);
            return countsJson(summary).dump() + "\n" + companyRowsWithIds(*world.open());
        };
        std::string bytes = readWholeFile(std::string(KOLMERA_SOURCE_DIR) + "/data/demo/prisfiler/" + format.file);
        const std::string plain = outcome(bytes, std::nullopt);
        if (bytes.ends_with('\x1A')) bytes.pop_back();
        for (const auto& copy : copies) {
            SCOPED_TRACE(std::string(format.job) + " " + copy.copy);
            SourceSettings source;
            source.format.characters = copy.characters;
            source.format.delimiter = source.format.quote = '\0';
            const std::string text = replaceAll(toUtf8(bytes, format.page), "\r\n", copy.lineEnd);
            EXPECT_EQ(firstDifference(outcome(copy.stored(text), source), plain), "");
        }
    }
}

TEST(SourceRun, OfATradeFormatItsLinesAreTakenAsTheyAre) {
    // See tests/tradeformats for what the lines mean.
    SourceWorld world;
    SourceSettings settings;
    settings.format.delimiter = '\0';
    settings.format.quote = '\0';
    settings.format.member = "*.txt";
    const TargetLayout layout{.page = CodePage::Oem850, .columns = {}};
    std::string bytes;
    const TemporaryFolder folder;
    folder.write("p.zip", zipped({{"rsk.txt", "0 å\n\n  1 \"b;c\" \n"}}));
    SourceConverter converter(openRows(folder / "p.zip", settings.format), settings, layout);
    while (converter.next(bytes)) {
    }
    EXPECT_EQ(bytes, "0 \x86\r\n\r\n  1 \"b;c\" \r\n");
}

}  // namespace
}  // namespace kolmera::test
