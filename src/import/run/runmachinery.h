#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/jobfile.h"
#include "import/run/filefact.h"
#include "import/run/importcontext.h"
#include "import/run/recordedrun.h"
#include "import/run/runcounts.h"
#include "import/run/sourcestage.h"
#include "platform/batchprocess.h"
#include "platform/encodings.h"
#include "platform/pricefile.h"

namespace kolmera {

/// What surrounds the record loop of every import routine: the job, its company, the confirmation, the preparation
/// command, the price file, run mode, emptying of tables, progress, and closing down. One object a run, made by
/// `carryOut`; an operation that answers false has told the user why, and the routine stops there.
///
/// However the run ends, the destructor shows the normal pointer, leaves run mode and closes the company. Recordsets
/// belong to the routine and must be gone by then.
class RunMachinery {
  public:
    RunMachinery(ImportContext& context, std::string_view jobText) : context_(context), jobText_(jobText) {}
    RunMachinery(const RunMachinery&) = delete;
    RunMachinery& operator=(const RunMachinery&) = delete;
    ~RunMachinery();

    [[nodiscard]] ImportContext& context() { return context_; }
    [[nodiscard]] RunPort& port() { return context_.port; }
    [[nodiscard]] LanguageTexts& texts() { return context_.texts; }
    [[nodiscard]] SqlLayer& sql() { return context_.state.sql; }
    [[nodiscard]] const std::string& jobText() const { return jobText_; }
    [[nodiscard]] RunSummary& summary() { return summary_; }
    [[nodiscard]] RunReport& report() { return summary_.report; }

    // The job and its company.
    /// Loads the current job; company in proper case, product groups in upper case. No such record: an empty job. False
    /// when it cannot be read, or is not the one that was shown.
    [[nodiscard]] bool HämtaKolmeraData();
    /// Runs a statement that reads a file of definitions.
    [[nodiscard]] bool readDefinitions(const std::function<void()>& statement);
    [[nodiscard]] const Job& job() const { return job_; }
    /// What the run goes by beside its job, for its record.
    void goesBy(WholeMask mask) { definition_.mask = std::move(mask); }
    void goesBy(std::vector<Coupling> couplings) { definition_.couplings = std::move(couplings); }
    /// `untouched` are the tables that the run neither reads nor writes, unless it empties them.
    [[nodiscard]] bool openCompany(std::span<const std::string_view> untouched);

    // Confirmation.
    /// "Company name (Ftg1.Mdb)" from the row of Syinställningar.
    [[nodiscard]] std::string heading(Recordset& settings);
    /// What is going to be read into which company, and that the diskette must be in its drive.
    [[nodiscard]] std::string MeddelandeUtför(std::string_view heading);
    /// Asks in the confirmation dialog. With `couplings` the one for trade formats, which lists them. `settings2` is
    /// the row of Syinställningar2.
    [[nodiscard]] bool confirm(Recordset& products, Recordset& settings2, std::string runText,
                               std::optional<std::vector<std::string>> couplings = std::nullopt);
    /// The user has chosen to empty the tables first.
    [[nodiscard]] bool emptyTables() const { return emptyTables_; }

    // The price file.
    /// Shows the hourglass and runs the job's preparation command when it has one.
    [[nodiscard]] bool prepare();
    /// Starts a command as the batch file EXPA@#01.BAT, in its turn among all programs, and waits until that file is
    /// gone or Cancel is pressed; both count as done, except where Cancel means the run. How it went is noted in the
    /// summary. False, too, when the wait for the turn was cancelled.
    [[nodiscard]] bool FörberedFil(const std::string& command);
    [[nodiscard]] bool findPriceFile();
    /// Turns the file that `findPriceFile` has found into what the run's mask reads, or the lines of a trade format in
    /// these characters, where the job has a source; keeps the bytes of a pipe that is read more than once. False, and
    /// told, when that cannot be done.
    [[nodiscard]] bool takeSource(std::optional<CodePage> lines = {});
    /// Looks at what is going to be read, before anything is changed. When it is not what the run
    /// expects, it is read all the same or the run stops, as the user decides. Then `ImportContext::mayWrite` is asked,
    /// and the run's record begins.
    [[nodiscard]] bool readsFile(const std::function<FileFacts(const std::filesystem::path&)>& look);
    /// Opens what is read: the file that `findPriceFile` has found, or what was made of it.
    [[nodiscard]] bool openPriceFile();
    [[nodiscard]] const std::filesystem::path& priceFilePath() const { return priceFilePath_; }
    [[nodiscard]] PriceFile& priceFile() { return *priceFile_; }
    /// Opens a file that is read in this run, so that Cancel is heard while it has nothing to read.
    [[nodiscard]] std::unique_ptr<PriceFile> open(const std::filesystem::path& file);

    /// The number by which the user knows a record (line): its own, or the row of the source that it comes from.
    [[nodiscard]] std::int64_t numberOf(std::int64_t record);

    // During the run.
    void Körläge(bool on);
    /// Deletes every row of the three tables, in transactions of its own. False when cancelled.
    [[nodiscard]] bool TömTabeller(Recordset& products, Recordset& supplierPriceList, Recordset& alternativeNumbers);
    /// Shows how many records (lines) are read and lets events run. False, and noted in the summary, when cancelled.
    [[nodiscard]] bool progress(std::int64_t count) { return progressAt(count, priceFile_->position()); }
    /// The same where more of the price file has been read than that.
    [[nodiscard]] bool progressAt(std::int64_t count, std::uint64_t position);
    /// `progress` for a step with its own label and no price file position.
    [[nodiscard]] bool progress(std::string_view label, std::int64_t count);

    /// The record (line) of the price file that is imported now.
    void at(const RecordPlace& place) {
        if (record_) record_->at(isConverted() ? RecordPlace{.record = place.record} : place);
    }
    /// A batch has been committed that ends with this record (line).
    void noteKept(std::int64_t record) { kept_ = record; }
    [[nodiscard]] std::int64_t kept() const { return kept_; }

    // Stops.
    void warn(const std::string& text, const std::string& title);
    /// Yes/No question; on Yes `carryOut` opens the job's settings when the run has closed down.
    void offerJobSettings(const std::string& text, const std::string& title);
    [[nodiscard]] bool wantsJobSettings() const { return wantsJobSettings_; }

    /// The record, where one is kept; it stays when the run is gone.
    [[nodiscard]] std::shared_ptr<RecordedRun> record() const { return record_; }
    /// All of the price file has been read.
    [[nodiscard]] bool fileRead() const { return priceFile_ && priceFile_->wholeRead(); }

  private:
    struct EmptyingTexts {
        FormKey status, progress;
    };

    [[nodiscard]] bool emptyTable(Recordset& table, std::string_view name, int every, const EmptyingTexts& told,
                                  std::int64_t& deleted);
    [[nodiscard]] std::string roundingWarning(Recordset& settings2);
    [[nodiscard]] bool readsDoubtfulFile(const FileFacts& facts);
    [[nodiscard]] bool startInTurn(BatchFile& batch, const std::string& command);
    /// Waits until `done`. False when cancelled.
    [[nodiscard]] bool waitUntil(const std::function<bool()>& done);
    [[nodiscard]] std::filesystem::path wantedPriceFile() const;

    [[nodiscard]] bool mayWrite();
    void beginRecord();
    void recordOriginal();
    [[nodiscard]] bool keepBytes();
    [[nodiscard]] bool convertSource(const SourceSettings& settings, const TargetLayout& layout);
    [[nodiscard]] bool isConverted() const { return context_.taken && context_.taken->rows; }

    ImportContext& context_;
    std::shared_ptr<RecordedRun> record_;  // outlives the company, which it listens to
    std::string jobText_;
    Job job_;
    RunDefinition definition_;
    std::string companyName_;
    RunSummary summary_;
    std::filesystem::path priceFilePath_;
    std::unique_ptr<PriceFile> priceFile_;
    std::string progressLabel_;
    std::int64_t kept_ = 0;
    bool companyOpen_ = false;
    bool runMode_ = false;
    bool emptyTables_ = false;
    bool wantsJobSettings_ = false;
};

/// Carries out the steps of one run: loads the job, runs `steps` to their end or first stop, closes down, and then
/// tells in one message of an error that ended the run and of what the report has to tell, or opens the job's settings.
/// Nothing is raised.
RunSummary carryOut(ImportContext& context, std::string_view jobText, const std::function<void(RunMachinery&)>& steps);

}  // namespace kolmera
