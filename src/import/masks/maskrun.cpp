#include "import/masks/maskrun.h"

#include <cstddef>
#include <exception>
#include <utility>
#include <vector>

#include "db/batchtransaction.h"
#include "definitions/maskfile.h"
#include "import/masks/loadedmask.h"
#include "import/masks/masklook.h"
#include "import/masks/recordimport.h"
#include "import/masks/recordreader.h"
#include "import/run/recordwindows.h"
#include "import/run/runmachinery.h"
#include "lang/keys/mask.h"
#include "lang/keys/prismain.h"
#include "lang/keys/run.h"

namespace kolmera {
namespace {

/// The steps of one mask run. A step that answers false has told why; the run ends there.
class MaskRun {
  public:
    explicit MaskRun(RunMachinery& machinery)
        : machinery_(machinery), job_(machinery.job()), sql_(machinery.sql()), texts_(machinery.texts()) {}

    void run();

  private:
    [[nodiscard]] bool loadMask();
    [[nodiscard]] bool checkMask();
    [[nodiscard]] std::vector<std::string_view> untouchedTables() const;
    [[nodiscard]] bool checkSupplier();
    void openProducts();
    void checkColumns();
    [[nodiscard]] bool confirm();
    [[nodiscard]] bool readsFile();
    void enterRunMode();
    void removeEmptyAlternatives();
    void openTables();
    [[nodiscard]] bool emptyTables();
    void readRecords();

    [[nodiscard]] bool supplierExists();

    RunMachinery& machinery_;
    const Job& job_;
    SqlLayer& sql_;
    LanguageTexts& texts_;
    LoadedMask mask_;
    MaskTables tables_;
};

void MaskRun::run() {
    if (!loadMask() || !checkMask()) return;
    if (!machinery_.openCompany(untouchedTables()) || !checkSupplier()) return;
    openProducts();
    checkColumns();
    if (!confirm()) return;
    if (!machinery_.prepare() || !machinery_.findPriceFile() || !machinery_.takeSource() || !readsFile()) return;
    enterRunMode();
    removeEmptyAlternatives();
    if (!machinery_.openPriceFile()) return;
    openTables();
    if (emptyTables()) readRecords();
    machinery_.summary().completed = true;
}

bool MaskRun::loadMask() {
    bool found = false;
    const bool read = machinery_.readDefinitions([&] {
        auto stored = MaskFile(machinery_.context().state.dataFolder()).find(job_.mask);
        if (!stored) return;
        machinery_.goesBy(*stored);
        mask_ = LoadedMask(stored->mask, std::move(stored->relations));
        found = true;
    });
    if (!read || found) return read;
    machinery_.offerJobSettings(texts_.FormulärSträngMed1(text::prismain::kAskForOtherMask, job_.mask),
                                texts_.FormulärSträng(text::prismain::kMaskMissingTitle));
    return false;
}

bool MaskRun::checkMask() {
    const std::string title = texts_.FormulärSträng(text::prismain::kMaskIncompleteTitle);
    if (mask_.relations.empty()) {
        machinery_.warn(texts_.FormulärSträngMed1(text::prismain::kNoRelations, job_.mask), title);
        return false;
    }
    if (!mask_.hasKey) {
        machinery_.warn(texts_.FormulärSträngMed1(text::prismain::kNoSearchKey, job_.mask), title);
        return false;
    }
    if (mask_.emptyRecords()) {
        const bool lines = mask_.layout == LoadedMask::Layout::Lines;
        machinery_.warn(lines ? texts_.ModulTextMed(text::mask::kNoLines, job_.mask)
                              : texts_.ModulTextMed(text::mask::kNoRecordLength, job_.mask),
                        texts_.ModulText(text::run::kCannotRunTitle));
        return false;
    }
    if (mask_.tooManyRelations) machinery_.warn(texts_.ModulTextMed(text::mask::kRelationsLeftOut, job_.mask), title);
    return true;
}

std::vector<std::string_view> MaskRun::untouchedTables() const {
    std::vector<std::string_view> tables = {"Prodaltrubrik", "Prodgrupp"};
    if (!mask_.document.present()) tables.emplace_back("Proddokument");
    if (!mask_.UppdatLev) tables.insert(tables.end(), {"Levprislista", "LevrabattBrev"});
    return tables;
}

bool MaskRun::checkSupplier() {
    if (!mask_.UppdatLev) return true;
    std::string reason;
    if (job_.supplier.empty()) {
        reason = texts_.FormulärSträng(text::prismain::kAskForSupplier);
    } else if (!supplierExists()) {
        reason = texts_.FormulärSträng(text::prismain::kAskForOtherSupplier);
    } else {
        return true;
    }
    machinery_.offerJobSettings(
        texts_.FormulärSträngMed1(text::prismain::kUpdatesSupplierPrices, job_.mask) + "\r\n\r\n" + reason,
        texts_.FormulärSträng(text::prismain::kSupplierMissingTitle));
    return false;
}

bool MaskRun::supplierExists() {
    const auto suppliers = sql_.SQLÖppnaTabell("Leverantör", "Nummer", options::kReadOnly, false);
    const Value number = job_.supplier;
    sql_.SQLSök(*suppliers, "=", Keys(&number, 1), machinery_.report());
    return !suppliers->noMatch();
}

void MaskRun::openProducts() {
    tables_.products = sql_.SQLÖppnaTabell("Produkt", ProductMatcher::index(mask_.keyTarget), 0, false);
    tables_.settings = sql_.SQLÖppnaRs("Syinställningar", RecordsetType::Dynaset, options::kReadOnly);
    tables_.settings2 = sql_.SQLÖppnaRs("Syinställningar2", RecordsetType::Dynaset, options::kReadOnly);
}

/// Relations to columns that this company does not have are passed over.
void MaskRun::checkColumns() {
    std::string missing;
    for (const Relation& relation : mask_.relations) {
        const int column = columnOf(relation.Mål);
        if (column < static_cast<int>(tables_.products->fields().size())) continue;
        missing += (missing.empty() ? "" : ", ") + std::to_string(relation.Mål);
    }
    if (!missing.empty()) {
        machinery_.warn(texts_.ModulTextMed(text::mask::kColumnsMissing, missing),
                        texts_.FormulärSträng(text::prismain::kMaskIncompleteTitle));
    }
}

bool MaskRun::confirm() {
    const std::string heading = machinery_.heading(*tables_.settings);
    return machinery_.confirm(*tables_.products, *tables_.settings2, machinery_.MeddelandeUtför(heading));
}

bool MaskRun::readsFile() {
    return machinery_.readsFile([this](const std::filesystem::path& file) {
        const auto numbers = numberSources(mask_, tables_.products->fields());
        return lookThroughMask(file, mask_, numbers, sql_.locale());
    });
}

void MaskRun::enterRunMode() {
    machinery_.Körläge(true);
    machinery_.port().status(texts_.FormulärSträng(text::prismain::kPreparing));
}

void MaskRun::removeEmptyAlternatives() {
    sql_.SQLKör("DELETE FROM Prodaltprodnr WHERE Alternativnr = ''", machinery_.report());
}

void MaskRun::openTables() {
    tables_.alternatives = openAlternatives(sql_);
    if (mask_.UppdatLev || machinery_.emptyTables()) {
        tables_.priceList = openSupplierPrices(sql_);
    }
}

bool MaskRun::emptyTables() {
    if (!machinery_.emptyTables()) return true;
    return machinery_.TömTabeller(*tables_.products, *tables_.priceList, *tables_.alternatives);
}

constexpr int kBatch = 25;

/// The records of a price file on their way to a server, many at a time.
class WindowLoop {
  public:
    WindowLoop(RunMachinery& run, RecordImport& import, MaskRecordReader& reader)
        : run_(run), import_(import), reader_(reader) {}

    void read() {
        while (!stopped_ && readAhead()) {
            const RecordImport::Memory memory = import_.memory();
            if (windows_.carryOut([this] { importAhead(); }, [&] { import_.remember(memory); })) {
                run_.noteKept(ahead_.back().place.record);
            } else {
                importSingly();
            }
            run_.summary().cancelled = run_.summary().cancelled || stopped_;
            if (unreadable_ && !stopped_) std::rethrow_exception(unreadable_);
        }
    }

  private:
    struct Ahead {
        EntryList entries;
        std::int64_t count;
        RecordPlace place;
        bool uneven;
    };

    /// What has been read is imported, also when the next record cannot be.
    bool readAhead() {
        ahead_.clear();
        try {
            takeRecords();
        } catch (const PlatformError&) {
            if (ahead_.empty()) throw;
            unreadable_ = std::current_exception();
        }
        return !ahead_.empty();
    }
    void takeRecords() {
        std::int64_t bytes = 0;
        while (bytes < RecordWindows::kMostBytes && ahead_.size() < windows_.size() && reader_.next()) {
            bytes += reader_.length();
            const RecordPlace place{
                .record = run_.numberOf(reader_.count()), .offset = reader_.offset(), .length = reader_.length()};
            ahead_.push_back(
                {.entries = reader_.entries(), .count = reader_.count(), .place = place, .uneven = reader_.uneven()});
        }
    }
    void import(const Ahead& record) {
        import_.import(record.entries, record.place.record);
        if (record.uneven) run_.report().remark(Remark::UnevenRecord);
    }
    bool goesOn(const Ahead& record) {
        if (record.count % kBatch != 0) return true;
        return run_.progressAt(record.count, static_cast<std::uint64_t>(record.place.offset + record.place.length));
    }
    /// The records of a window; those behind a Cancel are left out every time.
    void importAhead() {
        for (std::size_t i = 0; i < ahead_.size(); ++i) {
            const bool tells = windows_.at(ahead_[i].place);
            import(ahead_[i]);
            if (!tells || goesOn(ahead_[i])) continue;
            stopped_ = true;
            ahead_.erase(ahead_.begin() + static_cast<std::ptrdiff_t>(i) + 1, ahead_.end());
        }
    }
    void importSingly() {
        BatchTransaction transaction(*run_.sql().FtgDB);
        std::int64_t last = 0;
        for (const Ahead& record : ahead_) {
            last = record.place.record;
            run_.at(record.place);
            import(record);
            if (record.count % kBatch != 0) continue;
            transaction.next();
            run_.noteKept(last);
            if (goesOn(record) || stopped_) continue;
            stopped_ = true;
            break;
        }
        transaction.end();
        run_.noteKept(last);
    }

    RunMachinery& run_;
    RecordImport& import_;
    MaskRecordReader& reader_;
    RecordWindows windows_{run_};
    std::vector<Ahead> ahead_;
    std::exception_ptr unreadable_;
    bool stopped_ = false;  ///< by Cancel
};

void MaskRun::readRecords() {
    machinery_.port().status(texts_.FormulärSträng(text::prismain::kReading));
    RecordImport import(mask_, job_.supplier, machinery_.context(), tables_, machinery_.summary());
    MaskRecordReader reader(machinery_.priceFile(), mask_);
    if (sql_.FtgDB->hasWindows()) return WindowLoop(machinery_, import, reader).read();
    BatchTransaction transaction(*sql_.FtgDB);
    while (reader.next()) {
        const std::int64_t number = machinery_.numberOf(reader.count());
        machinery_.at({.record = number, .offset = reader.offset(), .length = reader.length()});
        import.import(reader.entries(), number);
        if (reader.uneven()) machinery_.report().remark(Remark::UnevenRecord);
        if (reader.count() % kBatch != 0) continue;
        transaction.next();
        machinery_.noteKept(number);
        if (!machinery_.progress(reader.count())) break;
    }
    transaction.end();
}

}  // namespace

RunSummary LäsMedMask(ImportContext& context, std::string_view jobText) {
    return carryOut(context, jobText, [](RunMachinery& machinery) { MaskRun(machinery).run(); });
}

}  // namespace kolmera
