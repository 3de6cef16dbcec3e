#include "import/preview/preview.h"

#include <fmt/format.h>

#include <optional>
#include <system_error>
#include <utility>

#include "definitions/jobfile.h"
#include "history/recordfile.h"
#include "import/dispatcher.h"
#include "import/preview/previewport.h"
#include "import/preview/workplace.h"
#include "lang/keys/preview.h"
#include "lang/keys/run.h"
#include "platform/attempt.h"

namespace kolmera {
namespace fs = std::filesystem;
namespace {

/// The connection of the program is put aside while the preview works on its own: a run may be under way.
class OwnConnection {
  public:
    explicit OwnConnection(SqlLayer& sql) : sql_(sql), kept_(sql.locale()) {
        kept_.openServerDatabase = sql.openServerDatabase;
        kept_.letEventsRun = sql.letEventsRun;
        std::swap(sql_, kept_);
    }
    OwnConnection(const OwnConnection&) = delete;
    OwnConnection& operator=(const OwnConnection&) = delete;
    ~OwnConnection() { std::swap(sql_, kept_); }

  private:
    SqlLayer& sql_;
    SqlLayer kept_;
};

/// The job as a run would load it; an empty one where the run is going to tell that it cannot.
Job jobOf(const ImportContext& context) {
    std::optional<Job> job;
    PassedOverSilently passedOver;
    attempt(passedOver, "jobOf", [&] { job = JobFile(context.state.dataFolder()).read(context.JobbNr); });
    return job.value_or(Job{});
}

/// 0 for a server company.
std::uint64_t bytesOf(const StartState& state, const std::string& company) {
    const fs::path file = state.drives.resolve(company, state.dataFolder());
    std::uint64_t bytes = 0;
    for (const char* part : {"", "-wal"}) {
        std::error_code none;
        const std::uintmax_t size = fs::file_size(fs::path(file) += part, none);
        if (!none) bytes += size;
    }
    return bytes;
}

/// A run that empties tables needs the rows of those, whether it reads them otherwise or not.
std::vector<std::string_view> tablesToLeaveOut(std::span<const std::string_view> untouched, bool emptied) {
    std::vector<std::string_view> tables(untouched.begin(), untouched.end());
    if (emptied) {
        std::erase_if(tables, [](std::string_view table) {
            return table == "Produkt" || table == "Levprislista" || table == "Prodaltprodnr";
        });
    }
    return tables;
}

std::string megabytes(std::uint64_t bytes) { return fmt::format("{} MB", (bytes >> 20) + 1); }

void warnNoRoom(LanguageTexts& texts, MessageBoxes& boxes, const std::vector<WorkPlace>& places, std::uint64_t bytes) {
    std::string text = texts.ModulTextMed(text::preview::kNoRoom, megabytes(bytes));
    for (const WorkPlace& place : places)
        text += fmt::format("\r\n{}: {}", place.folder.string(), megabytes(place.free));
    boxes.MeddelandeVarning(text, texts.ModulText(text::preview::kCannotPreviewTitle));
}

}  // namespace

Preview previewRun(ImportContext& context, std::string_view jobText, const PreviewOptions& options) {
    Preview result;
    StartState& state = context.state;
    PreviewPort port(context.port, options);
    MessageBoxes boxes(port, state.helpFile);
    const Job job = jobOf(context);
    const auto places = workPlaces(state.dataFolder());
    const std::uint64_t bytes = bytesForPreview(bytesOf(state, job.company));
    result.folder = makeWorkFolder(places, bytes);
    if (!result.folder) {
        warnNoRoom(context.texts, boxes, places, bytes);
        return result;
    }

    const OwnConnection ownConnection(state.sql);
    CompanyRegister companies(state, context.texts, boxes);
    RecordKeeping keeping{.folder = result.folder->path() / "record", .kind = RunKind::Preview, .user = state.Signatur};
    PreviewMode mode;
    mode.runsCommand = options.runsCommand;
    mode.openCopy = [&](std::string_view company, std::span<const std::string_view> untouched) {
        port.status(context.texts.ModulText(text::preview::kCopying));
        const fs::path copy = result.folder->path() / "company";
        const auto leftOut = tablesToLeaveOut(untouched, options.emptyTables);
        return companies.ÖppnaKopia(company, copy, leftOut, [&port] { return !port.cancelled(); });
    };
    ImportContext own{.state = state,
                      .texts = context.texts,
                      .boxes = boxes,
                      .companies = companies,
                      .port = port,
                      .Idag = context.Idag,
                      .JobbNr = context.JobbNr,
                      .shown = context.shown,
                      .preview = &mode,
                      .trace = context.trace,
                      .mayWrite = {},
                      .record = &keeping,
                      .otherFile = context.otherFile,
                      .taken = context.taken};
    result.summary = Utför(own, jobText);
    if (!keeping.id.empty() && !keeping.failure)
        result.record = std::make_unique<RecordReader>(keeping.folder / (keeping.id + std::string(kRecordEnding)));
    result.told = port.told();
    if (!options.runsCommand && !options.withinRun) result.commandLeftOut = job.command;
    return result;
}

}  // namespace kolmera
