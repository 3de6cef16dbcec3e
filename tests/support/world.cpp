#include "support/world.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "db/companyschema.h"
#include "db/conversions.h"
#include "db/serverregister.h"
#include "definitions/couplingfile.h"
#include "definitions/datafolder.h"
#include "definitions/targetcodes.h"
#include "import/dispatcher.h"
#include "import/preview/limitedrun.h"
#include "platform/encodings.h"
#include "startup/newcompany.h"
#include "support/testserver.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kMask = "Testmask";

const std::vector<TableDef>& schema() {
    static const std::vector<TableDef> tables = companySchema();
    return tables;
}

int ordinalOf(std::string_view table, std::string_view column) {
    for (const TableDef& candidate : schema()) {
        if (candidate.name == table) return candidate.ordinal(column);
    }
    return -1;
}

int targetCode(std::string_view target) {
    if (target.starts_with("Alternativ ")) return targetOfHeading(std::atoi(target.substr(11).data()));
    if (!target.empty() && target.find_first_not_of("0123456789") == std::string_view::npos) {
        return std::atoi(std::string(target).c_str());
    }
    const int ordinal = ordinalOf("Produkt", target);
    EXPECT_GT(ordinal, 0) << target;
    return targetOfColumn(ordinal);
}

/// The language database is the same for all worlds, and made once.
const fs::path& languageFolder() {
    static const TemporaryFolder folder;
    static const fs::path path = [] {
        buildLanguageDatabase(fs::path(KOLMERA_SOURCE_DIR) / "data/lang/texts.tsv", folder / "DVLang.sys");
        return folder.path();
    }();
    return path;
}

/// An empty company is copied, which is quicker than to make it again.
void copyCompany(const fs::path& target) {
    static const TemporaryFolder folder;
    static const bool made = [] {
        createCompany(folder.path(), "FTG1.mdb", "Testbolaget");
        return true;
    }();
    EXPECT_TRUE(made);
    fs::copy_file(folder / "FTG1.mdb", target);
}

std::string shown(const Value& value) {
    if (isNull(value)) return "-";
    if (const auto* date = std::get_if<Date>(&value)) return date->iso();
    return TillText(value, Locale(Locale::Kind::English));
}

}  // namespace

World::World(Locale::Kind locale)
    : state(SettingsStore(folder_ / "settings.ini"), Locale(locale)), server_(TestServer::named()) {
    fs::create_directories(program());
    createDataFolder(data());
    state.ProgramMapp = (program() / "").string();
    state.DataMapp = (data() / "").string();
    texts_.ÖppnaSpråk(languageFolder(), {});
    texts_.InitSpråkOrd("SE");
    job.name = "Test";
    job.priceFile = "pris.txt";
    job.mask = kMask;
    if (server_) {
        TestServer::ofProcess().reset();
        job.company = "SQL;TEST";
        registerServer(data(), {job.company, "Testbolaget", TestServer::ofProcess().connectString()});
    } else {
        copyCompany(company());
        job.company = "FTG1.MDB";
    }
}

std::unique_ptr<Database> World::open() const {
    if (server_) return TestServer::ofProcess().open(state.locale);
    return openFileDatabase(company(), {.locale = state.locale, .password = {}, .wait = {}});
}

Database& World::session() const {
    if (server_) return TestServer::ofProcess().session(state.locale);
    if (!database_) database_ = open();
    return *database_;
}

void World::add(std::string_view table, const Row& row) {
    const auto records = session().open(table, RecordsetType::Dynaset);
    records->addNew();
    for (const auto& [column, value] : row) records->set(column, value);
    records->update();
}

void World::setting(std::string_view column, const Value& value) {
    const std::string_view table = ordinalOf("Syinställningar", column) >= 0 ? "Syinställningar" : "Syinställningar2";
    const auto records = session().open(table, RecordsetType::Dynaset);
    records->edit();
    records->set(column, value);
    records->update();
}

void World::mask(const MaskSpec& spec) {
    Mask mask;
    mask.Namn = kMask;
    mask.FilTyp = spec.structure;
    mask.Tecken = spec.oem ? 'J' : 'N';
    mask.SkapaNya = spec.createNew ? 'J' : 'N';
    mask.UppdatLev = spec.supplierPrices ? 'J' : 'N';
    mask.AntalRader = std::to_string(spec.lines);
    mask.Postlängd = std::to_string(spec.length);
    mask.AntalKolumner = spec.columns;
    std::vector<Relation> relations;
    for (const Link& link : spec.relations) {
        relations.push_back({.Källa = link.source,
                             .Mål = targetCode(link.target),
                             .FrånPos = link.FrånPos,
                             .Längd = link.Längd,
                             .TypKod = link.TypKod,
                             .Division = link.Division});
    }
    MaskFile(data()).save(mask, relations);
}

void World::priceFile(std::string_view text, CodePage page) { rawPriceFile(fromUtf8(text, page)); }

void World::rawPriceFile(std::string_view bytes) { std::ofstream(data() / "pris.txt", std::ios::binary) << bytes; }

void World::coupling(const std::string& code, const std::string& supplier, bool main) {
    CouplingFile(data()).save({.job = job.name, .code = code, .supplier = supplier, .mainSupplier = main});
}

void World::refuse(const std::string& table, const std::string& column, const std::string& texts) {
    if (server_) {
        TestServer::ofProcess().changeTables("ALTER TABLE \"" + table + "\" ADD CONSTRAINT \"refuse" + table +
                                             "\" CHECK (\"" + column + "\" NOT IN (" + texts + "))");
    } else {
        for (const char* statement : {"INSERT", "UPDATE"}) {
            open()->execute(
                fmt::format("CREATE TRIGGER refuse{1}{0} BEFORE {1} ON {0} WHEN NEW.{2} IN ({3}) BEGIN SELECT "
                            "RAISE(ABORT, 'refused'); END",
                            table, statement, column, texts));
        }
    }
}

void World::dropTable(const std::string& table) {
    if (server_) {
        TestServer::ofProcess().changeTables("DROP TABLE \"" + table + "\"");
    } else {
        open()->execute("DROP TABLE " + table);
    }
}

void World::moveToServer() {
    job.company = "SQL;TEST";
    std::string record = job.company;
    record.resize(400, ' ');
    std::ofstream(data() / "DVSQLSvr.ini", std::ios::binary) << record;
    state.sql.openServerDatabase = [this](const std::string&, const ServerOptions&) { return open(); };
}

void World::carryOut(const std::function<void(ImportContext&)>& work) {
    database_.reset();
    JobFile jobs(data());
    const auto existing = jobs.find(job.name);
    job.number = existing ? existing->number : 0;
    job.number = jobs.save(job);
    MessageBoxes boxes(port, {});
    CompanyRegister companies(state, texts_, boxes);
    ImportContext context{state, texts_, boxes, companies, port, Idag, job.number};
    context.record = keeping ? &*keeping : nullptr;
    work(context);
    EXPECT_FALSE(port.inRunMode);
    EXPECT_FALSE(port.hourglassShown);
    EXPECT_EQ(state.sql.FtgDB, nullptr) << "the run has left the company open";
}

Preview World::preview(const PreviewOptions& options) {
    Preview preview;
    carryOut([&](ImportContext& context) { preview = previewRun(context, job.name, options); });
    return preview;
}

RunSummary World::run() {
    RunSummary summary;
    carryOut([&](ImportContext& context) { summary = Utför(context, job.name); });
    notePassedOver(summary);
    return summary;
}

RunSummary World::runWithinLimits() {
    RunSummary summary;
    carryOut([&](ImportContext& context) { summary = kolmera::runWithinLimits(context, job.name); });
    notePassedOver(summary);
    return summary;
}

void World::notePassedOver(const RunSummary& summary) {
    for (const RunReport::Failure& failure : summary.report.failures()) {
        const std::string statement = failure.statement + ": " + std::to_string(failure.error.number());
        port.passedOver.insert(port.passedOver.end(), static_cast<std::size_t>(failure.count), statement);
    }
}

std::string World::rows(std::string_view table, std::string_view columns) const {
    const auto records = session().open("SELECT * FROM " + std::string(table) + " ORDER BY ID", RecordsetType::Snapshot,
                                        options::kReadOnly);
    std::vector<int> ordinals;
    for (const std::string& column : split(columns, ", ")) ordinals.push_back(records->ordinal(column));
    std::string text;
    for (; !records->eof(); records->moveNext()) {
        std::string_view separator;
        for (const int ordinal : ordinals) {
            text += separator;
            text += shown(records->value(ordinal));
            separator = " ";
        }
        text += '\n';
    }
    return text;
}

}  // namespace kolmera::test
