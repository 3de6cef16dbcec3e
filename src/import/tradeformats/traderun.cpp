#include "import/tradeformats/traderun.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "db/batchtransaction.h"
#include "definitions/couplingfile.h"
#include "import/run/recordwindows.h"
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

std::int64_t rowsWritten(const RunSummary& summary) { return summary.saved + summary.priceList + summary.alternatives; }

class LookOnly {
  public:
    explicit LookOnly(TradeTables& tables) : tables_(tables) { tables_.lookOnly(true); }
    LookOnly(const LookOnly&) = delete;
    LookOnly& operator=(const LookOnly&) = delete;
    ~LookOnly() { tables_.lookOnly(false); }

  private:
    TradeTables& tables_;
};

/// Takes the lines of the price file to the format.
class LineLoop {
  public:
    LineLoop(RunMachinery& run, std::unique_ptr<TradeFormat> format, TradeTables& tables)
        : run_(run), summary_(run.summary()), file_(run.priceFile()), format_(std::move(format)), tables_(tables) {}

    void read() {
        if (run_.sql().FtgDB->hasWindows()) return readInWindows();
        BatchTransaction transaction(*run_.sql().FtgDB);
        while (!file_.atEnd()) {
            if (!takeInBatch(nextLine(), transaction)) break;
        }
        transaction.end();
    }

  private:
    struct Line {
        std::string_view text;
        std::uint64_t offset, end;
        std::int64_t number;  ///< by which the user knows it
    };
    struct KeptLine {
        std::string text;
        std::uint64_t offset, end;
        std::int64_t number;

        [[nodiscard]] Line line() const { return {text, offset, end, number}; }
    };

    Line nextLine() {
        const std::uint64_t offset = file_.position();
        const std::string_view text = file_.line();
        return {text, offset, file_.position(), run_.numberOf(++read_)};
    }

    /// Whether the line wrote a price record.
    bool take(const Line& line) {
        const std::int64_t before = rowsWritten(summary_);
        if (format_->takeLine(line.text) != LineUse::Written) return false;
        if (rowsWritten(summary_) > before) {
            ++summary_.used;
        } else {
            summary_.report.remark(Remark::NotSaved);
        }
        return true;
    }
    RecordPlace begin(const Line& line) {
        ++summary_.records;
        summary_.report.at(line.number);
        if (PriceTrace* trace = run_.context().trace) trace->record(line.number);
        return {.record = line.number,
                .offset = static_cast<std::int64_t>(line.offset),
                .length = static_cast<std::int64_t>(line.end - line.offset)};
    }

    /// Whether the run goes on behind the line.
    bool takeInBatch(const Line& line, BatchTransaction& transaction) {
        constexpr std::int64_t kRecordsPerBatch = 25;
        run_.at(begin(line));
        if (take(line) && ++written_ % kRecordsPerBatch == 0) {
            transaction.next();
            run_.noteKept(line.number);
        }
        return goesOn(line);
    }

    bool goesOn(const Line& line) {
        constexpr std::int64_t kLinesPerStatus = 50;
        if (summary_.records % kLinesPerStatus == 0) return run_.progressAt(summary_.records, line.end);
        // Cancel is heard behind every line: over a slow line to a server, fifty of them take long.
        if (!run_.port().cancelled()) return true;
        summary_.cancelled = true;
        return false;
    }

    // On a server.

    void readInWindows() {
        while (!stopped_ && !file_.atEnd()) {
            readAhead();
            const auto before = format_->copy();
            const bool kept =
                windows_.carryOut([this] { takeAhead(); }, [&] { format_ = before->copy(); }, [this] { lookAhead(); });
            if (kept) {
                run_.noteKept(ahead_.back().number);
            } else {
                takeSingly();
            }
            summary_.cancelled = summary_.cancelled || stopped_;
            if (unreadable_ && !stopped_) std::rethrow_exception(unreadable_);
        }
    }

    /// What has been read is imported, also when the next line cannot be.
    void readAhead() {
        ahead_.clear();
        try {
            for (std::int64_t bytes = 0; bytes < RecordWindows::kMostBytes && ahead_.size() < windows_.size();) {
                if (file_.atEnd()) break;
                const Line line = nextLine();
                ahead_.push_back({std::string(line.text), line.offset, line.end, line.number});
                bytes += static_cast<std::int64_t>(line.text.size());
            }
        } catch (const PlatformError&) {
            if (ahead_.empty()) throw;
            unreadable_ = std::current_exception();
        }
    }

    /// What the lines of a window look up.
    void lookAhead() {
        const LookOnly meanwhile(tables_);
        for (const KeptLine& line : ahead_) {
            begin(line.line());
            format_->takeLine(line.text);
        }
    }

    /// The lines of a window; those behind a Cancel are left out every time.
    void takeAhead() {
        for (std::size_t i = 0; i < ahead_.size(); ++i) {
            const Line line = ahead_[i].line();
            const bool tells = windows_.at(begin(line));
            if (take(line)) ++written_;
            if (!tells || goesOn(line)) continue;
            stopped_ = true;
            ahead_.resize(i + 1);
        }
    }

    void takeSingly() {
        BatchTransaction transaction(*run_.sql().FtgDB);
        std::int64_t last = 0;
        for (const KeptLine& line : ahead_) {
            last = line.number;
            const bool goesOn = takeInBatch(line.line(), transaction);
            if (goesOn || stopped_) continue;
            stopped_ = true;
            break;
        }
        transaction.end();
        run_.noteKept(last);
    }

    RunMachinery& run_;
    RunSummary& summary_;
    PriceFile& file_;
    std::unique_ptr<TradeFormat> format_;
    TradeTables& tables_;
    std::int64_t read_ = 0, written_ = 0;
    RecordWindows windows_{run_};
    std::vector<KeptLine> ahead_;
    std::exception_ptr unreadable_;
    bool stopped_ = false;  ///< by Cancel
};

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
    auto format = job.format({.tables = tables,
                              .report = run.report(),
                              .suppliers = lookup,
                              .job = run.job(),
                              .locale = sql.locale(),
                              .Idag = Idag});
    LineLoop(run, std::move(format), tables).read();
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
