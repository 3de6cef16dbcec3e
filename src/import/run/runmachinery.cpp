#include "import/run/runmachinery.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>
#include <utility>

#include "db/batchtransaction.h"
#include "db/conversions.h"
#include "definitions/joboptions.h"
#include "definitions/masktarget.h"
#include "definitions/pricefilepath.h"
#include "history/presentrows.h"
#include "import/run/filedoubt.h"
#include "import/run/filelook.h"
#include "import/run/preparation.h"
#include "import/run/runmessage.h"
#include "lang/errortext.h"
#include "lang/keys/company.h"
#include "lang/keys/history.h"
#include "lang/keys/look.h"
#include "lang/keys/preparation.h"
#include "lang/keys/preview.h"
#include "lang/keys/prismain.h"
#include "lang/keys/run.h"
#include "lang/keys/source.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr std::string_view kLineBreaks = "\r\n\r\n";
constexpr std::chrono::seconds kNoticeable(2);

}  // namespace

RunMachinery::~RunMachinery() {
    priceFile_.reset();
    if (companyOpen_) {
        sql().FtgDB.reset();
        context_.companies.waitForLock = nullptr;
        context_.companies.waitForAnswer = nullptr;
    }
    if (runMode_) Körläge(false);
    port().hourglass(false);
}

// The job and its company.

bool RunMachinery::readDefinitions(const std::function<void()>& statement) {
    try {
        statement();
        return true;
    } catch (const PlatformError& error) {
        warn(texts().ModulTextMed(text::run::kUnreadableFile, errorText(texts(), error)),
             texts().ModulText(text::run::kCannotRunTitle));
        return false;
    }
}

bool RunMachinery::HämtaKolmeraData() {
    std::optional<Job> stored;
    const bool read = readDefinitions([&] { stored = JobFile(context_.state.dataFolder()).read(context_.JobbNr); });
    if (read && context_.shown && stored != context_.shown) {
        warn(texts().ModulTextMed(text::prismain::kImportChangedNothingRead, context_.shown->name),
             texts().ModulText(text::run::kCannotRunTitle));
        return false;
    }
    job_ = stored.value_or(Job{});
    job_.company = properCase(job_.company);
    job_.fromGroup = upperCase(job_.fromGroup);
    job_.toGroup = upperCase(job_.toGroup);
    if (!context_.otherFile.empty()) job_.priceFile = context_.otherFile;
    progressLabel_ = texts().FormulärSträng(text::prismain::kRecordsRead) + " ";
    return read;
}

bool RunMachinery::openCompany(std::span<const std::string_view> untouched) {
    companyOpen_ = true;
    context_.companies.waitForLock = [this] {
        port().status(texts().ModulTextMed(text::company::kWaiting, job_.company));
        return !port().cancelled();
    };
    context_.companies.waitForAnswer = [this](std::chrono::milliseconds waited) {
        if (waited >= kNoticeable) port().status(texts().ModulText(text::run::kWaitingForServer));
        return !port().cancelled();
    };
    const bool open = context_.preview ? context_.preview->openCopy(job_.company, untouched)
                                       : context_.companies.ÖppnaDatabas(job_.company);
    summary_.cancelled = !open && port().cancelled();
    return open;
}

// Confirmation.

std::string RunMachinery::heading(Recordset& settings) {
    std::string name;
    attempt(report(), "Syinställningar.FöretagsNamn",
            [&] { name = TillText(settings.value("FöretagsNamn"), context_.state.locale); });
    companyName_ = name;
    return name + " (" + job_.company + ")";
}

std::string RunMachinery::MeddelandeUtför(std::string_view heading) {
    std::string text =
        job_.command.empty()
            ? texts().FormulärSträngMed2(text::prismain::kConfirm, job_.priceFile, heading)
            : texts().FormulärSträngMed3(text::prismain::kConfirmWithCommand, job_.command, job_.priceFile, heading);
    text += kLineBreaks;
    const std::string& source = job_.command.empty() ? job_.priceFile : job_.command;
    if (const auto diskette = disketteDrive(source)) {
        text += texts().FormulärSträngMed1(text::prismain::kInsertDiskette, std::string_view(&*diskette, 1));
        text += texts().FormulärSträng(text::prismain::kBeforeRun);
    }
    return text;
}

/// Bounds that are no numbers in the user's locale count as 0, so that no price lies between them.
std::string RunMachinery::roundingWarning(Recordset& settings2) {
    constexpr std::size_t kBounds = 10;
    std::string stored, bounds;
    attempt(report(), "Syinställningar2.PPrisAvrund",
            [&] { stored = TillText(settings2.value("PPrisAvrund"), context_.state.locale); });
    std::vector<std::string> lines = split(stored, "\r\n");
    lines.resize(std::min(lines.size(), kBounds));
    for (const std::string& bound : lines) {
        if (trimmed(bound).empty() || context_.state.locale.parseNumber(bound)) continue;
        bounds += (bounds.empty() ? "\"" : ", \"") + bound + "\"";
    }
    return bounds.empty() ? bounds : texts().ModulTextMed(text::look::kUnreadableBounds, bounds);
}

bool RunMachinery::confirm(Recordset& products, Recordset& settings2, std::string runText,
                           std::optional<std::vector<std::string>> couplings) {
    const bool hasProducts = !(products.bof() && products.eof());
    Confirmation confirmation{
        .captionSuffix = " " + jobText_,
        .runText = std::move(runText),
        .numbers = texts().ModulTextMed(text::look::kNumberForm, numberForm(context_.state.locale)),
        .warning = roundingWarning(settings2),
        .emptyTablesSuffix = " " + job_.company,
        .emptyTablesEnabled = hasProducts,
        .couplings = {},
        .tradeFormat = couplings.has_value()};
    if (couplings) confirmation.couplings = std::move(*couplings);
    const ConfirmationAnswer answer = port().confirm(confirmation);
    emptyTables_ = answer.emptyTables;
    return answer.confirmed;
}

// The price file.

bool RunMachinery::prepare() {
    port().hourglass(true);
    const bool wanted = context_.otherFile.empty() && (!context_.preview || context_.preview->runsCommand);
    const bool runs = wanted && !job_.command.empty();
    return !runs || FörberedFil(job_.command);
}

bool RunMachinery::FörberedFil(const std::string& command) {
    port().clearCancel();
    try {
        const FileMark before(wantedPriceFile());
        BatchFile batch = preparationBatch(context_.state, command);
        if (!startInTurn(batch, command)) return false;
        const bool ended = waitUntil([&] { return batch.ended(); });
        summary_.preparation = {.exitStatus = batch.exitStatus().value_or(0),
                                .stillRunning = !ended,
                                .fileNotRenewed = ended && FileMark(wantedPriceFile()).unchangedSince(before)};
        summary_.cancelled = !ended && port().cancelEndsPreparation();
        return !summary_.cancelled;
    } catch (const PlatformError& error) {
        const std::string title = texts().FormulärSträng(text::prismain::kCannotStartCommand);
        warn(title + " " + command + "." + std::string(kLineBreaks) + errorText(texts(), error), title);
        return false;
    }
}

bool RunMachinery::startInTurn(BatchFile& batch, const std::string& command) {
    if (!batch.takeTurn()) {
        Körläge(true);
        port().status(texts().ModulText(text::preparation::kWaiting));
        summary_.cancelled = !waitUntil([&] { return batch.takeTurn(); });
        if (summary_.cancelled) return false;
    }
    batch.start(command, context_.state.drives);
    Körläge(true);
    port().status(texts().FormulärSträng(text::prismain::kRunningCommand) + " " + command + " ...");
    return true;
}

bool RunMachinery::waitUntil(const std::function<bool()>& done) {
    constexpr auto kPause = std::chrono::milliseconds(10);
    while (!done()) {
        if (port().cancelled()) return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

std::filesystem::path RunMachinery::wantedPriceFile() const {
    const StartState& state = context_.state;
    return kolmera::findPriceFile(job_.priceFile, state.drives, state.dataFolder(), state.programFolder());
}

bool RunMachinery::findPriceFile() {
    if (!context_.otherFile.empty()) {
        priceFilePath_ = context_.otherFile;
        if (priceFilePath_ == kStandardInput) return true;
        priceFilePath_ = std::filesystem::absolute(priceFilePath_);
    } else {
        priceFilePath_ = wantedPriceFile();
    }
    std::error_code unreadable;
    if (!priceFilePath_.empty() && std::filesystem::exists(priceFilePath_, unreadable)) return true;
    const std::string title = texts().FormulärSträng(text::prismain::kCannotFindPriceFile);
    warn(title + " " + job_.priceFile + ".", title);
    return false;
}

std::unique_ptr<PriceFile> RunMachinery::open(const std::filesystem::path& file) {
    return std::make_unique<PriceFile>(file, [this] { return port().cancelled(); });
}

bool RunMachinery::takeSource(std::optional<CodePage> lines) {
    if (context_.taken) return true;  // by the run that this one previews
    std::optional<SourceSettings> settings;
    if (!readDefinitions([&] { settings = JobOptionsFile(context_.state.dataFolder()).source(job_.name); }))
        return false;
    std::error_code unknown;
    const bool readAgain = settings || context_.mayWrite;  // by a preview; what was read of a pipe is gone
    const bool pipe =
        priceFilePath_ == kStandardInput || (readAgain && !std::filesystem::is_regular_file(priceFilePath_, unknown));
    if (!settings && !pipe) return true;
    context_.taken = std::make_shared<TakenSource>();
    context_.taken->original = priceFilePath_;
    if (pipe && !keepBytes()) return false;
    if (!settings) return true;
    TargetLayout layout = definition_.mask ? targetLayout(*definition_.mask) : TargetLayout{};
    if (lines) layout.page = *lines;
    layout.decimalSign = context_.state.locale.decimalSign();
    return convertSource(*settings, layout);
}

bool RunMachinery::keepBytes() {
    try {
        context_.taken->kept =
            keptBytes(priceFilePath_, workPlaces(context_.state.dataFolder()), [this] { return port().cancelled(); });
        return true;
    } catch (const ReadingCancelled&) {
        throw;
    } catch (const PlatformError& error) {
        const std::string title = texts().ModulText(text::source::kUnreadableTitle);
        warn(title + "." + std::string(kLineBreaks) + errorText(texts(), error), title);
        return false;
    }
}

bool RunMachinery::convertSource(const SourceSettings& settings, const TargetLayout& layout) {
    constexpr std::uint64_t kWhole = 1000;
    port().status(texts().ModulText(text::source::kConverting));
    try {
        const auto changed = convert(
            *context_.taken, settings, layout, workPlaces(context_.state.dataFolder()),
            [this] { return port().cancelled(); },
            [this](double part) { port().progress(static_cast<std::uint64_t>(part * kWhole), kWhole, -1); });
        if (!changed) return true;
        warn(headingMessage(texts(), *changed, settings), texts().ModulText(text::source::kHeadingsTitle));
    } catch (const ReadingCancelled&) {
        throw;
    } catch (const PlatformError& error) {
        warn(texts().ModulTextMed(text::source::kUnreadable, job_.priceFile) + std::string(kLineBreaks) +
                 errorText(texts(), error),
             texts().ModulText(text::source::kUnreadableTitle));
    }
    return false;
}

std::int64_t RunMachinery::numberOf(std::int64_t record) {
    if (!isConverted()) return record;
    const std::int64_t line = (record - 1) * context_.taken->rowsPerRecord + 1;
    return static_cast<std::int64_t>(context_.taken->rows->of(static_cast<std::uint64_t>(line)));
}

bool RunMachinery::openPriceFile() {
    try {
        priceFile_ = open(context_.taken ? context_.taken->read() : priceFilePath_);
        if (record_ && isConverted()) {
            recordOriginal();
        } else if (record_) {
            priceFile_->tell([record = record_](std::string_view bytes) { record->read(bytes); });
        }
        return true;
    } catch (const ReadingCancelled&) {
        throw;
    } catch (const PlatformError& error) {
        const std::string title = texts().FormulärSträng(text::prismain::kCannotOpenPriceFile);
        warn(title + " " + job_.priceFile + "." + std::string(kLineBreaks) + errorText(texts(), error), title);
        return false;
    }
}

/// A record has the bytes of the file that the supplier sent.
void RunMachinery::recordOriginal() {
    constexpr std::size_t kPiece = 1 << 18;
    const std::unique_ptr<PriceFile> original = open(context_.taken->bytes());
    original->tell([record = record_](std::string_view bytes) { record->read(bytes); });
    while (!original->bytes(kPiece).empty()) {
    }
}

bool RunMachinery::readsFile(const std::function<FileFacts(const std::filesystem::path&)>& look) {
    FileFacts facts;
    PassedOverSilently passedOver;  // a file that cannot be read is told of where it is opened
    attempt(passedOver, "readsFile", [&] { facts = look(context_.taken ? context_.taken->read() : priceFilePath_); });
    if (!facts.empty() && !readsDoubtfulFile(facts)) return false;
    if (context_.mayWrite && !mayWrite()) return false;
    if (context_.record != nullptr) beginRecord();
    if (isConverted()) tell(context_.taken->notes, report());
    return true;
}

bool RunMachinery::mayWrite() {
    const bool may = context_.mayWrite(emptyTables_);
    summary_.cancelled = !may && port().cancelled();
    port().hourglass(may);
    return may;
}

void RunMachinery::beginRecord() {
    definition_.job = job_;
    if (context_.taken) definition_.source = context_.taken->settings;
    RunHeader header;
    header.job = job_.name;
    header.definition = definitionText(definition_);
    header.companyName = companyName_;
    header.companyFile = job_.company;
    header.priceFile.path = priceFilePath_.string();
    header.priceFile.modified = timeText(priceFilePath_);
    record_ = std::make_shared<RecordedRun>(*context_.record, texts());
    PassedOverSilently passedOver;  // taking back is more careful without them
    if (!context_.preview) attempt(passedOver, "readLastIds", [&] { header.lastIds = readLastIds(*sql().FtgDB); });
    if (!record_->begin(std::move(header))) return;
    try {
        sql().FtgDB->listen(record_->listener());
        report().tellTo(record_.get());
    } catch (const PlatformError& error) {
        record_->giveUp(error);
    }
}

bool RunMachinery::readsDoubtfulFile(const FileFacts& facts) {
    port().hourglass(false);
    const std::string emptied = emptyTables_ ? job_.company : std::string();
    if (!port().readsDoubtful(doubtfulFile(texts(), facts, job_.priceFile, emptied, context_.state.locale)))
        return false;
    port().hourglass(true);
    summary_.readAsOneLine = std::ranges::any_of(
        facts, [](const FileFact& fact) { return fact.look == FileLook::LineFeeds && fact.file.empty(); });
    return true;
}

// During the run.

void RunMachinery::Körläge(bool on) {
    runMode_ = on;
    port().runMode(on);
    port().letEventsRun();
}

bool RunMachinery::TömTabeller(Recordset& products, Recordset& supplierPriceList, Recordset& alternativeNumbers) {
    return emptyTable(products, "Produkt", 25, {text::prismain::kDeletingProducts, text::prismain::kProductsDeleted},
                      summary_.deleted.products) &&
           emptyTable(supplierPriceList, "Levprislista", 50,
                      {text::prismain::kDeletingSupplierPrices, text::prismain::kSupplierPricesDeleted},
                      summary_.deleted.priceList) &&
           emptyTable(alternativeNumbers, "Prodaltprodnr", 50,
                      {text::prismain::kDeletingAlternatives, text::prismain::kAlternativesDeleted},
                      summary_.deleted.alternatives);
}

bool RunMachinery::emptyTable(Recordset& table, std::string_view name, int every, const EmptyingTexts& told,
                              std::int64_t& deleted) {
    port().status(texts().FormulärSträng(told.status));
    const std::string label = texts().FormulärSträng(told.progress) + " ";
    BatchTransaction transaction(*sql().FtgDB);
    for (std::int64_t passed = 1; !table.eof(); ++passed) {
        if (attempt(report(), name, [&] { table.remove(); })) ++deleted;
        table.moveNext();
        if (passed % every != 0) continue;
        if (!progress(label, passed)) return false;
        transaction.next();
    }
    transaction.end();
    return true;
}

bool RunMachinery::progressAt(std::int64_t count, std::uint64_t position) {
    port().progress(position, priceFile_->size(), count);
    return progress(progressLabel_, count);
}

bool RunMachinery::progress(std::string_view label, std::int64_t count) {
    port().status(std::string(label) + std::to_string(count) + " ....");
    if (!port().cancelled()) return true;
    summary_.cancelled = true;
    return false;
}

// Stops.

void RunMachinery::warn(const std::string& text, const std::string& title) {
    port().hourglass(false);
    context_.boxes.MeddelandeVarning(text, title);
}

void RunMachinery::offerJobSettings(const std::string& text, const std::string& title) {
    port().hourglass(false);
    Message question;
    question.text = text;
    question.title = title;
    question.buttons = Buttons::YesNo;
    wantsJobSettings_ = context_.boxes.VisaMeddelande(std::move(question)) == Answer::Yes;
}

namespace {

std::string whatEndedTheRun(LanguageTexts& texts, const std::string& company, const PlatformError& error) {
    if (error.number() == errors::kDiskFull) return texts.ModulTextMed(text::run::kDiskFull, errorText(texts, error));
    if (error.number() == errors::kLocked) return texts.ModulTextMed(text::company::kLocked, company);
    return texts.ModulTextMed(text::run::kDatabaseStopped, errorText(texts, error));
}

/// Why the file that was read may be an old one.
std::vector<std::string> doubtsAboutPreparation(LanguageTexts& texts, const Job& job,
                                                const PreparationReport& preparation) {
    constexpr int kNotFound = 127;
    std::vector<std::string> doubts;
    if (preparation.exitStatus != 0) {
        const ModuleKey reason =
            preparation.exitStatus == kNotFound ? text::preparation::kNoSuchProgram : text::preparation::kExitStatus;
        doubts.push_back(texts.ModulTextMed(text::preparation::kFailed, job.command) + " " +
                         texts.ModulTextMed(reason, fmt::format("{}", preparation.exitStatus)));
    }
    if (preparation.stillRunning) doubts.push_back(texts.ModulTextMed(text::preparation::kStillRunning, job.command));
    if (preparation.fileNotRenewed)
        doubts.push_back(texts.ModulTextMed(text::preparation::kSamePriceFile, job.priceFile));
    return doubts;
}

/// Records were left out or rows deleted, and that is all.
bool isPlain(const RunSummary& summary) { return !summary.hasFaults() && summary.report.count(Remark::EmptyKey) == 0; }

std::string titleOf(LanguageTexts& texts, const RunSummary& summary, bool doubted) {
    if (doubted) return texts.ModulText(text::preparation::kTitle);
    if (summary.cancelled) return texts.ModulText(text::run::kStoppedTitle);
    if (summary.readAsOneLine) return texts.ModulText(text::run::kReadAsOneLineTitle);
    return isPlain(summary) ? texts.ModulText(text::run::kDoneTitle) : texts.ModulText(text::run::kReadThisTitle);
}

/// What went wrong with the run's record, which does not concern the run.
std::vector<std::string> doubtsAboutRecord(LanguageTexts& texts, const RecordKeeping* record) {
    std::vector<std::string> doubts;
    if (record == nullptr) return doubts;
    if (record->failure)
        doubts.push_back(texts.ModulTextMed(text::history::kNoRecord, errorText(texts, *record->failure)));
    if (record->notThinned)
        doubts.push_back(texts.ModulTextMed(text::history::kNotThinned, errorText(texts, *record->notThinned)));
    return doubts;
}

void tellHowItWent(ImportContext& context, const RunSummary& summary, const Job& job, std::int64_t kept,
                   const std::optional<PlatformError>& ended) {
    LanguageTexts& texts = context.texts;
    std::vector<std::string> paragraphs;
    if (!summary.cancelled) paragraphs = doubtsAboutPreparation(texts, job, summary.preparation);
    const bool doubted = !paragraphs.empty();
    if (std::string said = runMessage(texts, summary, job.priceFile, context.port.examplesTold()); !said.empty()) {
        paragraphs.push_back(std::move(said));
    }
    const std::vector<std::string> aboutRecord = doubtsAboutRecord(texts, context.record);
    paragraphs.insert(paragraphs.end(), aboutRecord.begin(), aboutRecord.end());
    const std::string found = fmt::format("{}", fmt::join(paragraphs, kLineBreaks));
    if (ended) {
        std::string text = context.preview ? texts.ModulTextMed(text::preview::kStopped, errorText(texts, *ended))
                                           : whatEndedTheRun(texts, job.company, *ended);
        if (kept > 0 && !context.preview)
            text += std::string(kLineBreaks) + texts.ModulTextMed(text::run::kCertainlySaved, std::to_string(kept));
        if (!found.empty()) text += std::string(kLineBreaks) + found;
        context.boxes.MeddelandeVarning(text, texts.ModulText(text::run::kStoppedTitle));
    } else if (!found.empty()) {
        Message message;
        message.text = found;
        message.title = titleOf(texts, summary, doubted);
        if (!doubted && aboutRecord.empty() && isPlain(summary)) message.icon = Icon::Information;
        context.port.tell(message);
    }
}

}  // namespace

namespace {

void endRecord(RecordedRun& record, const RunSummary& summary, bool fileRead) {
    const char* const reached = summary.completed ? "completed" : "stopped";
    record.end(summary.cancelled ? "cancelled" : reached, countsJson(summary).dump(), fileRead);
}

}  // namespace

RunSummary carryOut(ImportContext& context, std::string_view jobText, const std::function<void(RunMachinery&)>& steps) {
    std::optional<PlatformError> ended;
    std::optional<RunMachinery> run(std::in_place, context, jobText);
    context.port.clearCancel();  // what was cancelled before is not this run
    try {
        if (run->HämtaKolmeraData()) steps(*run);
    } catch (const ReadingCancelled&) {
        run->summary().cancelled = true;
        run->summary().completed = true;
    } catch (const PlatformError& error) {
        // Giving up a lock that another program holds, or a server that does not answer, is how Cancel is obeyed there.
        const bool silent = error.number() == errors::kServerSilent;
        run->summary().cancelled = (silent || error.number() == errors::kLocked) && context.port.cancelled();
        if (silent || !run->summary().cancelled) ended = error;
    }
    RunSummary summary = std::move(run->summary());
    summary.skipped = summary.report.skipped();
    summary.report.tellTo(nullptr);
    const Job job = run->job();
    const std::int64_t kept = run->kept();
    const bool jobSettings = run->wantsJobSettings();
    const std::shared_ptr<RecordedRun> record = run->record();
    const bool fileRead = run->fileRead();
    run.reset();
    if (record) endRecord(*record, summary, fileRead);
    tellHowItWent(context, summary, job, kept, ended);
    const bool damaged = ended && ended->number() == errors::kDamaged;
    if (damaged && !context.preview && !SqlLayer::ÄrSQLDatabas(upperCase(job.company)))
        context.companies.offerRepair(job.company);
    if (jobSettings) context.port.openJobSettings();
    return summary;
}

}  // namespace kolmera
