#include "import/tradeformats/traderun.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "db/batchtransaction.h"
#include "definitions/couplingfile.h"
#include "import/run/runmachinery.h"
#include "import/tradeformats/eio.h"
#include "import/tradeformats/finfo.h"
#include "import/tradeformats/rsk.h"
#include "import/tradeformats/rskgroups.h"
#include "import/tradeformats/tradelook.h"
#include "lang/keys/prismain.h"
#include "lang/keys/prisutfa.h"

namespace kolmera {
namespace {

template <typename Format>
std::unique_ptr<TradeFormat> make(const TradeFormatParts& parts) {
    return std::make_unique<Format>(parts);
}

/// The job of a trade format, and where its run differs from the others'.
struct TradeJob {
    std::string_view name;
    CodePage page;
    bool readsGroups;
    bool writesAlternatives;
    std::unique_ptr<TradeFormat> (*format)(const TradeFormatParts& parts);
    const TradeLook& look;
};

constexpr TradeJob kEio{"(EIO)", CodePage::Windows1252, false, false, make<Eio>, kEioLook};
constexpr TradeJob kRsk{"(RSK)", CodePage::Oem850, true, false, make<Rsk>, kRskLook};
constexpr TradeJob kFinfoJob{"(FINFO)", CodePage::Oem850, false, true, make<Finfo>, kFinfoLook};

std::unique_ptr<Recordset> openSettings(SqlLayer& sql, std::string_view table) {
    return sql.SQLÖppnaRs(table, RecordsetType::Dynaset, options::kReadOnly);
}

/// What is open before the user is asked.
struct CompanyTables {
    explicit CompanyTables(RunMachinery& run)
        : settings(openSettings(run.sql(), "Syinställningar")),
          settings2(openSettings(run.sql(), "Syinställningar2")) {}

    std::unique_ptr<Recordset> settings, settings2;
};

void warnNoCoupling(RunMachinery& run, std::string_view heading) {
    run.warn(run.texts().FormulärSträngMed2(text::prismain::kNoSupplierCoupled, heading, run.jobText()),
             run.texts().FormulärSträng(text::prismain::kNoCouplingTitle));
}

/// Empties the tables that the run writes. False when cancelled.
bool emptyTables(RunMachinery& run, ProductRows& products, SupplierPriceRows& supplierPrices,
                 std::optional<AlternativeRows>& alternatives) {
    if (alternatives) return run.TömTabeller(products.row.rows(), supplierPrices.row.rows(), alternatives->row.rows());
    AlternativeRows opened(run.sql(), run.report());
    return run.TömTabeller(products.row.rows(), supplierPrices.row.rows(), opened.row.rows());
}

/// Whether the run goes on behind a line.
bool goesOn(RunMachinery& run, std::int64_t lines) {
    constexpr std::int64_t kLinesPerStatus = 50;
    if (lines % kLinesPerStatus == 0) return run.progress(lines);
    // Cancel is heard behind every line: over a slow line to a server, fifty of them take long.
    if (!run.port().cancelled()) return true;
    run.summary().cancelled = true;
    return false;
}

std::int64_t rowsWritten(const RunSummary& summary) { return summary.saved + summary.priceList + summary.alternatives; }

void readLines(RunMachinery& run, TradeFormat& format) {
    constexpr std::int64_t kRecordsPerBatch = 25;
    RunSummary& summary = run.summary();
    PriceFile& file = run.priceFile();
    BatchTransaction transaction(*run.sql().FtgDB);
    std::int64_t written = 0;
    while (!file.atEnd()) {
        const std::int64_t before = rowsWritten(summary);
        const std::int64_t number = run.numberOf(++summary.records);
        summary.report.at(number);
        if (PriceTrace* trace = run.context().trace) trace->record(number);
        const auto offset = static_cast<std::int64_t>(file.position());
        const std::string_view line = file.line();
        run.at({.record = number, .offset = offset, .length = static_cast<std::int64_t>(file.position()) - offset});
        if (format.takeLine(line) == LineUse::Written) {
            if (rowsWritten(summary) > before) {
                ++summary.used;
            } else {
                summary.report.remark(Remark::NotSaved);
            }
            if (++written % kRecordsPerBatch == 0) {
                transaction.next();
                run.noteKept(number);
            }
        }
        if (!goesOn(run, summary.records)) break;
    }
    transaction.end();
}

/// The part of the run that shows itself in run mode. Left early when cancelled.
void readPriceFile(RunMachinery& run, const TradeJob& job, ProductRows& products, CompanyTables& company,
                   std::vector<CoupledSupplier> suppliers) {
    SqlLayer& sql = run.sql();
    run.Körläge(true);
    run.port().clearCancel();
    SupplierPriceRows supplierPrices(sql, run.report(), openSupplierPrices(sql));
    PriceTrace* trace = run.context().trace;
    Rabattbrev discountLetters(sql, run.report(), trace);
    std::optional<AlternativeRows> alternatives;
    if (job.writesAlternatives) alternatives.emplace(sql, run.report());

    if (run.emptyTables() && !emptyTables(run, products, supplierPrices, alternatives)) return;
    if (job.readsGroups && !LäsInproduktGrupperRSK(run, *company.settings)) return;

    run.port().status(run.texts().FormulärSträng(text::prismain::kReading));
    const Date Idag = run.context().Idag;
    PrisClsRoundInprisOUtpris prices(sql, run.report(), Idag, kStandardPrisDatumBM, trace);
    prices.Init();
    NewProductDefaults defaults(*company.settings, *company.settings2, sql.locale(), run.report());
    TradeTables tables({.products = products,
                        .supplierPrices = supplierPrices,
                        .alternatives = alternatives ? &*alternatives : nullptr,
                        .defaults = defaults,
                        .discountLetters = discountLetters,
                        .prices = prices,
                        .summary = run.summary(),
                        .Idag = Idag,
                        .trace = trace});
    SupplierLookup lookup(std::move(suppliers), job.page);
    const auto format = job.format({.tables = tables,
                                    .report = run.report(),
                                    .suppliers = lookup,
                                    .job = run.job(),
                                    .locale = sql.locale(),
                                    .Idag = Idag});
    readLines(run, *format);
}

bool readsFile(RunMachinery& run, const TradeJob& job, const std::vector<CoupledSupplier>& suppliers) {
    return run.readsFile([&](const std::filesystem::path& file) {
        SupplierLookup lookup(suppliers, job.page);
        FileFacts facts = lookAtTradeFile(file, job.look, lookup, run.job());
        if (job.readsGroups) std::ranges::move(lookAtGroups(run.priceFilePath()), std::back_inserter(facts));
        return facts;
    });
}

std::vector<std::string_view> untouchedTables(const TradeJob& job) {
    std::vector<std::string_view> tables = {"Prodaltrubrik", "Proddokument"};
    if (!job.readsGroups) tables.emplace_back("Prodgrupp");
    if (!job.writesAlternatives) tables.emplace_back("Prodaltprodnr");
    return tables;
}

void runTradeFormat(RunMachinery& run, const TradeJob& job) {
    if (!run.openCompany(untouchedTables(job))) return;
    CompanyTables company(run);
    const std::string heading = run.heading(*company.settings);
    std::vector<Coupling> couplings;
    if (!run.readDefinitions([&] { couplings = CouplingFile(run.context().state.dataFolder()).ofJob(job.name); }))
        return;
    run.goesBy(couplings);
    auto suppliers = coupledSuppliers(couplings, run.sql(), run.report());
    if (suppliers.empty()) return warnNoCoupling(run, heading);

    ProductRows products(run.sql(), run.report());
    auto rows = couplingRows(suppliers, run.texts().FormulärSträng(text::prisutfa::kMainSupplier));
    if (!run.confirm(products.row.rows(), *company.settings2, run.MeddelandeUtför(heading), std::move(rows))) return;
    if (!run.prepare() || !run.findPriceFile() || !run.takeSource(job.page)) return;
    if (!readsFile(run, job, suppliers) || !run.openPriceFile()) return;
    readPriceFile(run, job, products, company, std::move(suppliers));
    run.summary().completed = true;
}

RunSummary carryOutJob(ImportContext& context, std::string_view jobText, const TradeJob& job) {
    if (jobText != job.name) return {};
    return carryOut(context, jobText, [&job](RunMachinery& run) { runTradeFormat(run, job); });
}

}  // namespace

RunSummary LäsEioRsk(ImportContext& context, std::string_view jobText) {
    return carryOutJob(context, jobText, jobText == kEio.name ? kEio : kRsk);
}

RunSummary LäsFinfo(ImportContext& context, std::string_view jobText) {
    return carryOutJob(context, jobText, kFinfoJob);
}

std::span<const TradeRoutine> tradeRoutines() {
    static constexpr TradeRoutine kRoutines[] = {
        {kEio.name, LäsEioRsk}, {kRsk.name, LäsEioRsk}, {kFinfoJob.name, LäsFinfo}};
    return kRoutines;
}

}  // namespace kolmera
