#include "startup/accessimport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/error.h"
#include "platform/jet/jetmessages.h"
#include "platform/jet/jetreader.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

namespace fs = std::filesystem;
using jet::Column;
using jet::ColumnType;
using Kind = AccessRemark::Kind;

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A folder for companies, and a reader that says what the test has it say.
class AccessWorld {
  public:
    AccessWorld() { write("file.mdb", "not looked at"); }

    void write(const std::string& name, const std::string& content) const { folder_.write(name, content); }
    void readerSays(const std::string& messages, const std::string& afterwards = "") {
        write("said", messages);
        write("reader", "#!/bin/sh\n/bin/cat '" + path("said").string() + "'\n" + afterwards + "\n");
        fs::permissions(path("reader"), fs::perms::owner_all);
    }
    AccessResult import(bool replace = false, const fs::path& reader = {}, const fs::path& file = {}) {
        const AccessImport import{.reader = reader.empty() ? path("reader") : reader,
                                  .file = file.empty() ? path("file.mdb") : file,
                                  .company = path("FTG7.mdb"),
                                  .companyName = "Provbolaget",
                                  .replace = replace,
                                  .options = {}};
        return importAccessFile(import, [this](const AccessProgress&) { return goOn; });
    }
    int errorOf(bool replace = false) {
        try {
            import(replace);
        } catch (const PlatformError& error) {
            return error.number();
        }
        return 0;
    }
    [[nodiscard]] std::string rows(const std::string& select) const {
        const auto company = openFileDatabase(path("FTG7.mdb"), {});
        const auto records = company->open(select, RecordsetType::Snapshot);
        std::string text;
        for (; !records->eof(); records->moveNext()) {
            for (std::size_t i = 0; i < records->fields().size(); ++i) {
                if (i > 0) text += ' ';
                text += shown(records->value(static_cast<int>(i)));
            }
            text += '\n';
        }
        return text;
    }
    [[nodiscard]] fs::path path(const std::string& name) const { return folder_ / name; }
    /// Whether nothing of a company is in the folder.
    [[nodiscard]] bool isBare() const {
        return std::ranges::none_of(fs::directory_iterator(folder_.path()), [](const fs::directory_entry& entry) {
            return entry.path().filename().string().starts_with("FTG");
        });
    }
    bool goOn = true;

  private:
    static std::string shown(const Value& value) {
        if (isNull(value)) return "-";
        if (const auto* yes = std::get_if<bool>(&value)) return *yes ? "yes" : "no";
        if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
        if (const auto* number = std::get_if<double>(&value)) return fmt::format("{}", *number);
        if (const auto* date = std::get_if<Date>(&value)) return date->iso();
        return std::get<std::string>(value);
    }
    test::TemporaryFolder folder_;
};

std::string remarksOf(const AccessResult& result) {
    std::string text;
    for (const AccessRemark& remark : result.remarks) {
        if (remark.kind == Kind::TableMissing || remark.kind == Kind::ColumnMissing) continue;
        text += fmt::format("{}:{}={} ", static_cast<int>(remark.kind), remark.place, remark.count);
    }
    return text;
}

Column column(const char* name, ColumnType type, std::uint32_t size = 0, bool counter = false) {
    return {.name = name, .type = type, .size = size, .counter = counter};
}

const jet::Table kProducts = {
    .name = "produkt",
    .rows = 4,
    .columns = {column("ID", ColumnType::Long, 4, true), column("Utpris1", ColumnType::Currency),
                column("Nummer", ColumnType::Text, 25), column("Bild2", ColumnType::Ole),
                column("Prisändrdat", ColumnType::Moment), column("Inaktiv", ColumnType::Boolean),
                column("Vikt", ColumnType::Text, 5), column("Eget", ColumnType::Decimal)},
    .indexes = {{.name = "Nummer", .unique = true, .columns = {{2, false}}},
                {.name = "Bilder", .unique = false, .columns = {{3, false}}}}};
const jet::Table kOwn = {.name = "Egen tabell",
                         .rows = 1,
                         .columns = {column("Löpnr", ColumnType::Long, 4, true), column("Not", ColumnType::Memo)},
                         .indexes = {}};

std::string product(std::int64_t id, jet::TenThousandths price, const char* number, jet::Moment day, const char* vat) {
    return jet::rowMessage(
        {id, price, std::string(number), jet::BinaryValue{}, day, id == 7, std::string(vat), std::string("12.50")});
}

TEST(AccessImport, MakesACompanyOfWhatTheReaderTells) {
    AccessWorld world;
    world.readerSays(jet::tableMessage(kProducts) + jet::otherMessage(jet::OtherObject::LinkedTable, "Order") +
                     jet::tableMessage(kOwn) + jet::otherMessage(jet::OtherObject::Query, "Fråga") +
                     jet::beginningMessage(0) + product(7, {123450001}, "ÅÄÖ 2345678901234567890", {45000.5}, "1") +
                     product(9, {9007199254740993}, "B", {-1.25}, "x") + product(12, {-5}, "b", {1}, "2") +
                     jet::beginningMessage(1) + jet::rowMessage({std::int64_t{3}, jet::DamagedText{"a\xEF\xBF\xBD"}}) +
                     jet::endMessage());
    const AccessResult result = world.import();
    EXPECT_EQ(world.rows("SELECT ID, Utpris1, Nummer, Prisändrdat, Inaktiv, Vikt, Eget FROM Produkt"),
              "7 12345.0001 ÅÄÖ 2345678901234567890 2023-03-15 yes 1 12.50\n"
              "9 900719925474.0992 B 1899-12-29 no - 12.50\n");
    EXPECT_EQ(world.rows("SELECT * FROM [Egen tabell]"), "3 a\xEF\xBF\xBD\n");
    EXPECT_EQ(world.rows("SELECT Företagsnamn FROM Syinställningar"), "Provbolaget\n") << "a table that was missing";
    EXPECT_EQ(world.rows("SELECT PDecUtpris FROM Syinställningar2"), "2\n");
    EXPECT_EQ(openFileDatabase(world.path("FTG7.mdb"), {})->table("Produkt").fields[1].name, "Nummer")
        << "columns are known by their places";
    const std::string remarks = remarksOf(result);
    const auto place = [](Kind kind, const char* what) { return fmt::format("{}:{} ", static_cast<int>(kind), what); };
    for (const std::string& remark :
         {place(Kind::AsText, "produkt.Eget=0"), place(Kind::OtherType, "produkt.Vikt=0"),
          place(Kind::IndexLeftOut, "produkt.Bilder=0"), place(Kind::LinkLeftOut, "Order=0"),
          place(Kind::RowsLost, "produkt=1"), place(Kind::RowsRefused, "produkt=1"),
          place(Kind::QueryLeftOut, "Fråga=0"), place(Kind::BinaryLeftOut, "produkt.Bild2=3"),
          place(Kind::TimeCut, "produkt.Prisändrdat=2"), place(Kind::DigitsRounded, "produkt.Utpris1=1"),
          place(Kind::NotFitting, "produkt.Vikt=1"), place(Kind::CharactersDamaged, "Egen tabell.Not=1")}) {
        EXPECT_THAT(remarks, testing::HasSubstr(remark));
    }
    EXPECT_EQ(std::ranges::count(remarks, '='), 12) << remarks;
}

TEST(AccessImport, TellsWhatTablesLoseBesidesTheirRows) {
    jet::Table table{.name = "Produkt", .rows = 0, .columns = {}, .indexes = {}, .rule = "[Vikt]>0", .properties = ""};
    Column number = column("Nummer", ColumnType::Text, 25), counted = column("Extra", ColumnType::Long, 4, true),
           weight = column("Vikt", ColumnType::Double), guid = column("Nyckel", ColumnType::Guid, 16, true),
           price = column("Utpris1", ColumnType::Currency);
    number.standard = "\"A\"";
    number.rule = "Is Not Null";
    weight.required = true;
    price.standard = "0";
    guid.properties = "Caption, Format";
    Column id = column("ID", ColumnType::Long, 4, true);
    id.required = true;
    table.columns = {id, number, counted, weight, guid, price};
    AccessWorld world;
    world.readerSays(jet::tableMessage(table) + jet::otherMessage(jet::OtherObject::Relationship, "A.B = C.D") +
                     jet::otherMessage(jet::OtherObject::Other, "Formulär") + jet::beginningMessage(0) +
                     jet::endMessage());
    const std::string remarks = remarksOf(world.import());
    const std::pair<Kind, const char*> lost[] = {{Kind::StandardLeftOut, "Produkt.Nummer (\"A\")"},
                                                 {Kind::RuleLeftOut, "Produkt.Nummer (Is Not Null)"},
                                                 {Kind::RuleLeftOut, "Produkt ([Vikt]>0)"},
                                                 {Kind::CounterLeftOut, "Produkt.Extra"},
                                                 {Kind::CounterLeftOut, "Produkt.Nyckel"},
                                                 {Kind::AsText, "Produkt.Nyckel"},
                                                 {Kind::RequiredLeftOut, "Produkt.Vikt"},
                                                 {Kind::PropertiesLeftOut, "Produkt.Nyckel (Caption, Format)"},
                                                 {Kind::RelationLeftOut, "A.B = C.D"},
                                                 {Kind::ObjectLeftOut, "Formulär"}};
    for (const auto& [kind, what] : lost) {
        EXPECT_THAT(remarks, testing::HasSubstr(fmt::format("{}:{}=0 ", static_cast<int>(kind), what)));
    }
    EXPECT_EQ(std::ranges::count(remarks, ':'), static_cast<std::ptrdiff_t>(std::size(lost))) << remarks;
}

TEST(AccessImport, TakesNamesAndNumbersOfColumnsAsTheyCome) {
    jet::Table table{.name = "a]b \"c' [d];--", .rows = 1, .columns = {}, .indexes = {}};
    jet::Row row;
    for (int i = 0; i < 255; ++i) {
        table.columns.push_back(column("", ColumnType::Long));
        table.columns.back().name = fmt::format("{} {}", i % 2 == 0 ? "x]\"'" : "[select", i);
        row.emplace_back(std::int64_t{i});
    }
    table.indexes = {{"and; \"or\"", true, {{0, false}, {1, true}}}};
    AccessWorld world;
    world.readerSays(jet::tableMessage(table) + jet::otherMessage(jet::OtherObject::Password, "") +
                     jet::beginningMessage(0) + jet::rowMessage(row) + jet::endMessage());
    const AccessResult result = world.import();
    EXPECT_EQ(remarksOf(result), fmt::format("{}:=0 ", static_cast<int>(Kind::PasswordLeftOut)));
    const auto company = openFileDatabase(world.path("FTG7.mdb"), {});
    const auto records = company->open(table.name, RecordsetType::Table);
    ASSERT_FALSE(records->eof());
    ASSERT_EQ(records->fields().size(), row.size());
    EXPECT_EQ(records->value(254), Value(std::int64_t{254}));
    EXPECT_EQ(records->fields()[253].name, "[select 253");
}

TEST(AccessImport, TakesAnyMisbehavingOfTheReaderForDamage) {
    const std::string table = jet::tableMessage(kOwn);
    const std::string begun = table + jet::beginningMessage(0);
    const std::string row = jet::rowMessage({std::int64_t{3}, std::string("a")});
    const struct {
        const char* fault;
        std::string said;
        const char* afterwards;
    } cases[] = {
        {"it says nothing", "", ""},
        {"it crashes behind the last message", begun + row + jet::endMessage(), "kill -SEGV $$"},
        {"it crashes in the middle", begun + row, "kill -SEGV $$"},
        {"it ends without saying so", begun + row, ""},
        {"it says that it failed", jet::failureMessage(jet::Failure::Damaged), ""},
        {"it fails when a company is begun", begun + row + jet::failureMessage(jet::Failure::Damaged), ""},
        {"garbage", "Segmentation fault (core dumped)", ""},
        {"a message longer than any", std::string("r\xFF\xFF\xFF\xFF", 5), ""},
        {"a message that is cut", begun + row.substr(0, row.size() - 1), ""},
        {"a row of a table that has not begun", table + row, ""},
        {"a row with too many cells", begun + jet::rowMessage({true, true, true}) + jet::endMessage(), ""},
        {"a row with too few cells", begun + jet::rowMessage({true}) + jet::endMessage(), ""},
        {"an unknown cell", begun + std::string("r\x02\0\0\0-!", 7) + jet::endMessage(), ""},
        {"a text that is no UTF-8", begun + jet::rowMessage({true, std::string("\xE5")}) + jet::endMessage(), ""},
        {"a text that goes beyond its message", begun + std::string("r\x07\0\0\0-t\xFF\0\0\0a", 12), ""},
        {"a table that does not exist", table + jet::beginningMessage(1) + jet::endMessage(), ""},
        {"rows of a table twice", begun + jet::beginningMessage(0) + jet::endMessage(), ""},
        {"a table without its rows", table + jet::endMessage(), ""},
        {"a table behind the first rows", begun + table + jet::endMessage(), ""},
        {"something behind the end", begun + jet::endMessage() + row, ""},
        {"an index of an unknown column",
         jet::tableMessage({"T", 0, {column("A", ColumnType::Long)}, {{"I", false, {{1, false}}}}}), ""},
        {"a name with a zero", jet::tableMessage({std::string("T\0x", 3), 0, {}, {}}), ""},
    };
    AccessWorld world;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        world.readerSays(c.said, c.afterwards);
        EXPECT_EQ(world.errorOf(), errors::kDamaged);
        EXPECT_TRUE(world.isBare());
    }
    world.goOn = false;
    world.readerSays(begun, "exec sleep 1000");
    EXPECT_TRUE(world.import().cancelled);
    EXPECT_TRUE(world.isBare());
}

TEST(AccessImport, ReplacesOnlyWhatItMayAndWhenItIsWhole) {
    AccessWorld world;
    const std::string begun = jet::tableMessage(kOwn) + jet::beginningMessage(0);
    const auto says = [&](std::int64_t id) {
        world.readerSays(begun + jet::rowMessage({id, std::string("a")}) + jet::endMessage());
    };
    says(1);
    world.import();
    const std::string ids = "SELECT Löpnr FROM [Egen tabell]";
    says(2);
    EXPECT_NE(world.errorOf(), 0);
    EXPECT_EQ(world.rows(ids), "1\n") << "replaced unasked";
    world.readerSays(begun, "kill -SEGV $$");
    EXPECT_EQ(world.errorOf(true), errors::kDamaged);
    EXPECT_EQ(world.rows(ids), "1\n") << "lost to a file that is damaged";
    says(2);
    world.import(true);
    EXPECT_EQ(world.rows(ids), "2\n");
    world.write("FTG7.mdb", "something else");
    EXPECT_EQ(world.errorOf(true), errors::kNotADatabase);
    EXPECT_EQ(contentOf(world.path("FTG7.mdb")), "something else");
}

/// Files of other makers, which are no part of the project: where KOLMERA_SAMPLES says, or in a folder beside it.
fs::path samples() {
    const char* folder = std::getenv("KOLMERA_SAMPLES");
    if (folder != nullptr) return folder;
    std::error_code unreadable;
    for (const auto& beside : fs::directory_iterator(fs::path(KOLMERA_SOURCE_DIR).parent_path(), unreadable)) {
        if (fs::exists(beside.path() / "samples" / "orders.mdb", unreadable)) return beside.path() / "samples";
    }
    return "samples";
}

const fs::path kReader = fs::path(KOLMERA_BIN_DIR) / jet::kReaderProgram;

TEST(AccessSamples, AreReadWholeAndLeftAsTheyAre) {
    const fs::path sample = samples() / "orders.mdb";
    if (!fs::exists(sample)) GTEST_SKIP() << "no sample files in " << samples() << " (KOLMERA_SAMPLES)";
    AccessWorld world;
    const std::string before = contentOf(sample);
    const auto changed = fs::last_write_time(sample);
    const AccessResult result = world.import(false, kReader, sample);
    EXPECT_EQ(contentOf(sample), before);
    EXPECT_EQ(fs::last_write_time(sample), changed);
    EXPECT_EQ(world.rows("SELECT COUNT(*), ROUND(SUM(UnitPrice), 2), SUM(Quantity) FROM [Order Details]"),
              "2155 56500.91 51317\n");
    EXPECT_EQ(world.rows("SELECT ShipAddress FROM Orders WHERE OrderID = 10330"),
              "Carrera 52 con Ave. Bolívar #65-98 Llano Largo\n");
    EXPECT_EQ(world.rows("SELECT COUNT(*) FROM Umsätze"), "830\n");
    EXPECT_EQ(world.rows("SELECT COUNT(*) FROM Products WHERE Discontinued = 1"), "8\n");
    const std::string remarks = remarksOf(result);
    for (const char* lost : {"Orders.CustomerID = Customers.CustomerID=0", "Shippers.CompanyName=0",
                             "Shippers.CompanyName (Caption, Description, AllowZeroLength)=0"}) {
        EXPECT_THAT(remarks, testing::HasSubstr(lost));
    }
}

TEST(AccessSamples, DamagedOnesNeverHarmTheProgram) {
    const fs::path sample = samples() / "orders.mdb";
    if (!fs::exists(sample)) GTEST_SKIP() << "no sample files in " << samples() << " (KOLMERA_SAMPLES)";
    AccessWorld world;
    const std::string whole = contentOf(sample);
    std::uint32_t state = 20261123;
    const auto random = [&state](std::size_t below) {
        state = state * 1664525U + 1013904223U;
        return static_cast<std::size_t>(state >> 8) % below;
    };
    for (int i = 0; i < 12; ++i) {
        SCOPED_TRACE(i);
        std::string damaged = whole;
        if (i % 4 == 0) damaged.resize(random(whole.size()));
        // The first pages name all others.
        for (int j = 0; j < 300 && !damaged.empty(); ++j) {
            damaged[random(i % 2 == 0 ? damaged.size() : std::min<std::size_t>(damaged.size(), 65536))] =
                static_cast<char>(random(256));
        }
        world.write("damaged.mdb", damaged);
        try {
            const AccessResult result = world.import(false, kReader, world.path("damaged.mdb"));
            EXPECT_FALSE(result.remarks.empty());
            fs::remove(world.path("FTG7.mdb"));
        } catch (const PlatformError& error) {
            EXPECT_TRUE(error.number() == errors::kDamaged) << error.description();
        }
        EXPECT_TRUE(world.isBare());
    }
}

}  // namespace
}  // namespace kolmera
