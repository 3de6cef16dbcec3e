// libFuzzer's way into everything else that comes from outside. Which of these functions is FUZZED. A price file is
// read by a whole run, into a company that is made anew now and then; of files with a structure of their own (a
// company, the record of a run, the texts) the bytes are changes to a sound one.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "db/companyschema.h"
#include "db/serverregister.h"
#include "definitions/couplingfile.h"
#include "definitions/jobfile.h"
#include "definitions/joboptions.h"
#include "definitions/maskfile.h"
#include "discounts/letterexchange.h"
#include "history/changeblock.h"
#include "history/runfolder.h"
#include "lang/languagetexts.h"
#include "platform/engine/criteria.h"
#include "platform/engine/declaredtype.h"
#include "platform/engine/odbc/connectstring.h"
#include "platform/engine/selectstatement.h"
#include "platform/engine/sqlite/layoutstatement.h"
#include "platform/engine/statementtext.h"
#include "platform/error.h"
#include "platform/searchwords.h"
#include "platform/tsv.h"
#include "signin/userfile.h"
#include "startup/companylist.h"
#include "support/temporaryfolder.h"
#include "support/testcompany.h"
#include "support/world.h"
#include "tradeformats/tradeworld.h"

namespace kolmera::test::fuzz {

namespace fs = std::filesystem;

constexpr int kUsesOfACompany = 500;

std::uint8_t takeByte(std::string_view& bytes) {
    if (bytes.empty()) return 0;
    const auto first = static_cast<std::uint8_t>(bytes.front());
    bytes.remove_prefix(1);
    return first;
}

void writeFile(const fs::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

std::string fileOf(const fs::path& file) { return readWholeFile(file); }

/// Changes of a sound file: three bytes say where (beyond the end: where it is cut off), one what.
std::string changed(std::string sound, std::string_view changes) {
    while (changes.size() >= 4) {
        std::size_t place = takeByte(changes);
        place = place << 8 | takeByte(changes);
        place = place << 8 | takeByte(changes);
        const std::uint8_t byte = takeByte(changes);
        if (place < sound.size()) {
            sound[place] = static_cast<char>(byte);
        } else {
            sound.resize(sound.size() - place % (sound.size() + 1));
        }
    }
    return sound;
}

// Price files.

template <typename Make>
World& worldInUse(Make make) {
    static std::unique_ptr<World> world;
    static int uses = 0;
    if (uses++ % kUsesOfACompany == 0) world = make();
    world->port = ScriptedPort();
    return *world;
}

/// The first byte chooses structure, code page and locale.
void mask(std::string_view bytes) {
    const std::uint8_t choice = takeByte(bytes);
    World& world = worldInUse([]() noexcept {
        auto made = std::make_unique<World>();
        made->job.supplier = "1010";
        made->add("Leverantör", {{"Nummer", "1010"}, {"Söknamn", "Grossisten"}});
        return made;
    });
    world.state.locale = Locale((choice & 4) != 0 ? Locale::Kind::English : Locale::Kind::Swedish);
    MaskSpec spec{.structure = "FTP"[choice % 3],
                  .lines = 1 + choice / 64,
                  .length = 40,
                  .oem = (choice & 8) != 0,
                  .supplierPrices = (choice & 16) != 0};
    constexpr std::array<Link, 8> kLinks{{{.target = "Nummer", .Division = 'S', .TypKod = 'S'},
                                          {.target = "Benämning"},
                                          {.target = "Inpris", .Division = '2'},
                                          {.target = "1Utpris"},
                                          {.target = "Antal1"},
                                          {.target = "Prisändrdat"},
                                          {.target = "Alternativ 1"},
                                          {.target = "Leverantör"}}};
    for (int column = 0; const Link& link : kLinks) {
        Link its = link;
        its.source = ++column;
        its.FrånPos = 1 + 5 * (column - 1);
        its.Längd = 5;
        spec.relations.push_back(its);
    }
    world.mask(spec);
    world.rawPriceFile(bytes);
    world.run();
}

void trade(const char* job, std::string_view bytes) {
    World& world = worldInUse([job]() noexcept { return std::make_unique<TradeWorld>(job); });
    world.rawPriceFile(bytes);
    world.run();
}
void eio(std::string_view bytes) { trade("(EIO)", bytes); }
void finfo(std::string_view bytes) { trade("(FINFO)", bytes); }
/// As many bytes as the first one says, sixteen times, are RKOD.DAT.
void rsk(std::string_view bytes) {
    const std::size_t groups = std::min(std::size_t{takeByte(bytes)} * 16, bytes.size());
    World& world = worldInUse([]() noexcept { return std::make_unique<TradeWorld>("(RSK)"); });
    writeFile(world.data() / "RKOD.DAT", bytes.substr(0, groups));
    world.rawPriceFile(bytes.substr(groups));
    world.run();
}

/// The first byte chooses a text file or a workbook.
void letter(std::string_view bytes) {
    static std::unique_ptr<TestCompany> company;
    static int uses = 0;
    static const TemporaryFolder folder;
    if (uses++ % kUsesOfACompany == 0) company = std::make_unique<TestCompany>();
    const fs::path file = folder / ((takeByte(bytes) & 1) != 0 ? "letter.xls" : "letter.txt");
    writeFile(file, bytes);
    LetterExchange letters(company->sql, "1010", company->passedOver);
    if (letters.usableLines(file) > 0) letters.replaceFrom(file);
    company->passedOver.notes.clear();
}

// Files of the data folder.

/// The first byte chooses the file.
void definitions(std::string_view bytes) {
    static const TemporaryFolder folder;
    constexpr std::array kFiles{"KOLMERA.TXT",  "PRISMASK.TXT", "PRISMPOS.TXT", "PRISLEV.TXT",
                                "KOLMERA.JSON", "DORVIK.FTG",   "DVUser.dvl",   "DVSQLSvr.ini"};
    for (const char* file : kFiles) fs::remove(folder / file);
    writeFile(folder / kFiles[takeByte(bytes) % kFiles.size()], bytes);
    for (const Job& job : JobFile(folder.path()).all()) {
        static_cast<void>(JobOptionsFile(folder.path()).limits(job.name));
        static_cast<void>(JobOptionsFile(folder.path()).source(job.name));
        static_cast<void>(CouplingFile(folder.path()).ofJob(job.name));
    }
    const MaskFile masks(folder.path());
    for (const Mask& mask : masks.all()) static_cast<void>(masks.read(mask.number));
    readUsers(folder.path());
    registeredServers(folder.path());
}

void company(std::string_view bytes) {
    static const TemporaryFolder folder;
    static const std::vector<TableDef> tables = {{companySchema().front(), companySchema().back()}};
    static const std::string sound = []() noexcept {
        createFileDatabase(folder / "sound.mdb", tables);
        const auto database = openFileDatabase(folder / "sound.mdb", OpenOptions());
        for (const TableDef& table : tables) {
            const auto rows = database->open(table.name, RecordsetType::Dynaset);
            for (int row = 0; row < 40; ++row) {
                rows->addNew();
                for (const FieldDef& field : table.fields) {
                    if (field.type == FieldType::Text && field.size >= 4)
                        rows->set(field.name, "T" + std::to_string(row));
                }
                rows->update();
            }
        }
        return std::string();
    }() + fileOf(folder / "sound.mdb");
    const fs::path file = folder / "FTG1.mdb";
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        if (entry.path().filename() != "sound.mdb") fs::remove_all(entry.path());
    }
    writeFile(file, changed(sound, bytes));
    const OpenOptions options{.knownTables = [] { return tables; }};
    try {
        const auto database = openFileDatabase(file, options);
        for (const std::string& name : database->tableNames()) {
            const auto rows = database->open(name, RecordsetType::Snapshot);
            for (; !rows->eof(); rows->moveNext()) {
                for (std::size_t column = 0; column < rows->fields().size(); ++column) {
                    static_cast<void>(rows->value(static_cast<int>(column)));
                }
            }
        }
    } catch (const PlatformError&) {
        // Damaged: repaired below.
    }
    if (!isSound(file, options)) repairFileDatabase(file, options);
}

/// The first byte chooses a block of a record, or a whole record.
void record(std::string_view bytes) {
    if ((takeByte(bytes) & 1) == 0) {
        readPlaces(bytes, [](const RecordPlace&) { return true; });
        readRemarks(bytes, true, [](const RecordRemark&) { return true; });
        readRows(bytes, [](const RowChange&) { return true; });
        return;
    }
    static const TemporaryFolder folder;
    static const std::string sound = []() noexcept {
        TradeWorld world("(EIO)");
        world.keeping = RecordKeeping{.folder = folder.path(), .user = {}};
        world.rawPriceFile(line({{1, "1"}, {2, "12345678"}, {10, "Kabel"}, {35, "261123"}}) +
                           line({{1, "2"}, {2, "AB"}, {4, "00001250"}, {13, "A1"}}));
        world.run();
        return fileOf(RunFolder(folder.path()).file(world.keeping->id));
    }();
    const fs::path file = folder / "changed.kmr";
    writeFile(file, changed(sound, bytes));
    const RecordReader reader(file);
    reader.forEachChange([](const RowChange&) { return true; });
    reader.forEachRemark([](const RecordRemark&) { return true; });
    reader.forEachKey([](std::string_view) { return true; });
    reader.forEachCopied([](std::string_view) {});
    static_cast<void>(reader.place(1));
}

void language(std::string_view bytes) {
    static const TemporaryFolder folder;
    static const std::string sound = []() noexcept {
        writeFile(folder / "texts.tsv", "key\tSE\tEN\tname\nRES1\tEtt %1\tOne %1\ta\nKMR2\tTvå\tTwo\tb\n");
        buildLanguageDatabase(folder / "texts.tsv", folder / "DVLang.sys");
        return fileOf(folder / "DVLang.sys");
    }();
    writeFile(folder / "DVLang.sys", changed(sound, bytes));
    LanguageTexts texts;
    texts.ÖppnaSpråk(folder.path(), {});
    texts.InitSpråkOrd("SE");
    for (const char* key : {"RES1", "KMR2", "RES3"}) {
        static_cast<void>(texts.SpråkText(key));
        static_cast<void>(texts.storedText(key));
    }
}

// Texts.

/// The first byte chooses what the rest is.
void texts(std::string_view bytes) {
    static const std::vector<FieldDef> fields = companySchema().front().fields;
    const std::uint8_t choice = takeByte(bytes);
    const Locale locale((choice & 0x80) != 0 ? Locale::Kind::English : Locale::Kind::Swedish);
    switch (choice % 10) {
        case 0:
            if (const auto number = locale.parseNumber(bytes)) static_cast<void>(locale.formatNumber(*number));
            leadingNumber(bytes);
            break;
        case 1:
            static_cast<void>(locale.parseDate(bytes));
            if (const auto date = Date::fromIso(bytes); date && date->iso() != bytes) std::abort();
            break;
        case 2:
            Criteria::parse(bytes, fields, locale);
            break;
        case 3:
            parseSingleTableSelect(bytes);
            translated(bytes, locale, [](std::string_view) { return std::nullopt; });
            break;
        case 4:
            parseTableStatement(bytes);
            parseIndexStatement(bytes);
            break;
        case 5:
            fieldOfDeclaredType("Nummer", bytes, false);
            break;
        case 6:
            Tsv::parse(bytes);
            break;
        case 7:
            static_cast<void>(LanguageTexts::AvkodaPlatshållare(bytes));
            break;
        case 8:
            static_cast<void>(SearchWords(bytes).in(bytes));
            forEachPart(bytes, [](std::string_view, std::string_view) {});
            break;
        default:
            static_cast<void>(companyOfRow(bytes));
            break;
    }
}

}  // namespace kolmera::test::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        kolmera::test::fuzz::FUZZED({reinterpret_cast<const char*>(data), size});
    } catch (const kolmera::PlatformError&) {
        // A clear message is what a damaged file is to end with.
    }
    return 0;
}
