#include "cli/undocommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "cli/changeoutput.h"
#include "cli/progressbar.h"
#include "cli/runchoice.h"
#include "cli/session.h"
#include "cli/terminalport.h"
#include "history/recordedundo.h"
#include "history/runfolder.h"
#include "history/undotexts.h"
#include "lang/keys/company.h"
#include "lang/keys/history.h"
#include "lang/keys/terminal.h"
#include "platform/printable.h"
#include "platform/systemuser.h"
#include "startup/company.h"
#include "startup/startup.h"

namespace kolmera::cli {
namespace {

using Json = nlohmann::ordered_json;

/// `Stays` by name, in its order.
constexpr const char* kReasonNames[] = {"changed", "removed", "named", "number_taken", "refused"};

class UndoCommand {
  public:
    UndoCommand(const UndoArguments& arguments, const Surroundings& surroundings)
        : arguments_(arguments),
          surroundings_(surroundings),
          session_(surroundings, arguments.dataFolder),
          port_(session_, surroundings.err, surroundings.cancel, false),
          boxes_(port_, {}),
          companies_(session_.state, session_.texts, boxes_),
          folder_(session_.state.dataFolder()) {
        companies_.waitForLock = [this] { return waitForLock(); };
    }

    int run();

  private:
    bool waitForLock();
    [[nodiscard]] bool goOn() const { return !surroundings_.cancel.load(std::memory_order_relaxed); }
    int takeBack(const RunHeader& run);
    int finish(bool finished, const RecordedUndo& recorded);
    void print(const UndoCounts& counts);
    void printKept(const RecordedUndo& recorded);
    void printJson(const RecordedUndo& recorded, bool finished);
    [[nodiscard]] const FieldDef& fieldOf(const KeptRow& row, const KeptCell& cell) {
        return database().table(row.table).fields[static_cast<std::size_t>(cell.column)];
    }
    [[nodiscard]] Database& database() { return *session_.state.sql.FtgDB; }
    int stop(ModuleKey text, std::string_view about) {
        surroundings_.err << session_.text(text::terminal::kError) << ' ' << session_.text(text, about) << '\n';
        return exitcode::kStopped;
    }

    const UndoArguments& arguments_;
    const Surroundings& surroundings_;
    Session session_;
    TerminalPort port_;
    MessageBoxes boxes_;
    CompanyRegister companies_;
    RunFolder folder_;
    std::string company_;
    bool toldOfLock_ = false;
};

bool UndoCommand::waitForLock() {
    if (!std::exchange(toldOfLock_, true)) {
        surroundings_.err << session_.text(text::company::kWaiting, company_) << std::endl;
    }
    return goOn();
}

int UndoCommand::run() {
    if (!session_.hasDataFolder(surroundings_.err)) return exitcode::kStopped;
    LäsDorvikIni(session_.state);
    const std::optional<RunHeader> run =
        chosenRun(session_, listedRuns(session_, folder_, surroundings_.err), arguments_.run, surroundings_.err);
    if (!run) return exitcode::kStopped;
    if (run->kind == RunKind::Preview) return stop(text::history::kPreviewChangedNothing, run->id);
    if (run->underWay) return stop(text::history::kUnderWay, run->id);
    company_ = run->companyFile;
    try {
        if (companies_.ÖppnaDatabas(company_)) return takeBack(*run);
    } catch (const PlatformError&) {
        if (goOn()) throw;
    }
    if (goOn()) return exitcode::kStopped;
    surroundings_.err << session_.text(text::history::kUndoCancelled, run->id) << '\n';
    return exitcode::kCancelled;
}

int UndoCommand::takeBack(const RunHeader& run) {
    RunHeader head;
    head.user = SystemUser::current().login;
    head.version = KOLMERA_VERSION;
    RecordedUndo recorded(database(), folder_, run.id, std::move(head));
    if (run.ended.empty()) surroundings_.err << session_.text(text::history::kNotEnded, run.id) << '\n';
    const auto keepOn = [this](std::int64_t /*done*/, std::int64_t /*of*/) { return goOn(); };
    bool finished = recorded.plan(keepOn);
    if (finished && !arguments_.dryRun) finished = recorded.carryOut(keepOn);
    if (arguments_.json) {
        printJson(recorded, finished);
    } else {
        print(recorded.undo().counts());
        printKept(recorded);
    }
    if (recorded.recordFailure()) {
        surroundings_.err << session_.text(text::history::kUndoNotRecorded, session_.explain(*recorded.recordFailure()))
                          << '\n';
    }
    return finish(finished, recorded);
}

int UndoCommand::finish(bool finished, const RecordedUndo& recorded) {
    const bool stays = recorded.undo().counts().kept > 0;
    const ModuleKey outcome = !finished           ? text::history::kUndoCancelled
                              : arguments_.dryRun ? text::history::kDryRun
                              : stays             ? text::history::kUndoneInPart
                                                  : text::history::kUndone;
    const bool clean = finished && !stays;
    if (!arguments_.json || !clean) {
        (clean ? surroundings_.out : surroundings_.err) << session_.text(outcome, recorded.run().id) << '\n';
    }
    if (!finished) return exitcode::kCancelled;
    return stays ? exitcode::kPassedOver : exitcode::kDone;
}

void UndoCommand::print(const UndoCounts& counts) {
    for (const auto& [label, count] : captioned(counts)) {
        surroundings_.out << fmt::format("{}: {}\n", session_.text(label), count);
    }
}

void UndoCommand::printKept(const RecordedUndo& recorded) {
    recorded.undo().forEachKept([&](const KeptRow& row) {
        std::string name = row.table;
        if (!row.label.empty()) name += ' ' + printable(row.label, row.label.size());
        surroundings_.err << fmt::format("{}, ID {}: {}\n", name, row.id, reasonText(session_.texts, row));
        const TableDef& table = database().table(row.table);
        for (const KeptCell& cell : row.cells) {
            const std::string text = keptCellText(session_.texts, cell, table, session_.state.locale);
            surroundings_.err << fmt::format("  {}\n", printable(text, text.size()));
        }
        return goOn();
    });
}

/// A row that stays has a line of its own, and is not kept: there may be many.
void UndoCommand::printJson(const RecordedUndo& recorded, bool finished) {
    const UndoCounts counts = recorded.undo().counts();
    std::ostream& out = surroundings_.out;
    const Json head = {{"run", recorded.run().id},     {"record", recorded.id()},
                       {"dry_run", arguments_.dryRun}, {"finished", finished},
                       {"rows", counts.rows},          {"changed_back", counts.changedBack},
                       {"removed", counts.removed},    {"brought_back", counts.broughtBack},
                       {"as_before", counts.asBefore}, {"kept", counts.kept}};
    std::string text = dumped(head);
    text.pop_back();
    out << text << ",\n\"kept_rows\":[";
    const char* separator = "\n";
    recorded.undo().forEachKept([&](const KeptRow& row) {
        Json columns = Json::array();
        for (const KeptCell& cell : row.cells) {
            columns.push_back({{"column", fieldOf(row, cell).name},
                               {"before", jsonOf(cell.before)},
                               {"left", jsonOf(cell.left)},
                               {"now", jsonOf(cell.now)}});
        }
        const Json line = {{"table", row.table},   {"id", row.id},
                           {"product", row.label}, {"reason", kReasonNames[static_cast<std::size_t>(row.why)]},
                           {"by", row.by},         {"columns", columns}};
        out << std::exchange(separator, ",\n") << dumped(line);
        return true;
    });
    out << "]}\n";
}

}  // namespace

int undoCommand(const UndoArguments& arguments, const Surroundings& surroundings) {
    return UndoCommand(arguments, surroundings).run();
}

}  // namespace kolmera::cli
