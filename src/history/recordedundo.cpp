#include "history/recordedundo.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>
#include <utility>

#include "history/presentrows.h"

namespace kolmera {

RecordedUndo::RecordedUndo(Database& database, const RunFolder& folder, std::string_view run, RunHeader head)
    : database_(database), folder_(folder), reader_(folder.file(run)), head_(std::move(head)) {
    const RunHeader& of = reader_.header();
    if (folder_.isUnderWay(of)) throw PlatformError(errors::kLocked, "the run is under way").about(of.id);
    head_.kind = RunKind::Undo;
    head_.of = of.id;
    head_.job = of.job;
    head_.companyName = of.companyName;
    head_.companyFile = of.companyFile;
    undo_ = std::make_unique<RunUndo>(
        database_, [this](const auto& take) { reader_.forEachChange(take); }, of.lastIds);
}

/// Where there are no locks, everybody goes on.
RunLock RecordedUndo::alone() const {
    const std::string undoing = "undo " + run().id;
    RunLock lock(folder_.path(), undoing);
    if (!lock.held() && RunLock::isHeld(folder_.path(), undoing).value_or(false)) {
        throw PlatformError(errors::kLocked, "the run is being taken back").about(run().id);
    }
    return lock;
}

bool RecordedUndo::plan(const RunUndo::GoOn& goOn) {
    const RunLock lock = alone();
    return undo_->plan(goOn);
}

bool RecordedUndo::carryOut(const RunUndo::GoOn& goOn) {
    const RunLock lock = alone();
    const UndoCounts planned = undo_->counts();
    if (planned.changedBack + planned.removed + planned.broughtBack == 0) return undo_->carryOut(goOn);
    startRecord();
    try {
        const bool finished = undo_->carryOut(goOn);
        endRecord(finished ? "completed" : "cancelled");
        return finished;
    } catch (...) {
        endRecord("stopped");
        throw;
    }
}

void RecordedUndo::startRecord() {
    try {
        head_.lastIds = readLastIds(database_);
        record_ = std::make_unique<RunRecord>(folder_.path(), head_);
        id_ = record_->header().id;
        database_.listen(record_.get());
    } catch (const PlatformError& error) {
        failure_ = error;
        if (record_) record_->close();
        record_.reset();
        if (!id_.empty()) folder_.remove(std::exchange(id_, {}));
    }
}

void RecordedUndo::endRecord(const char* outcome) {
    if (!record_) return;
    database_.listen(nullptr);
    const UndoCounts counts = undo_->counts();
    record_->change([&](RunHeader& header) {
        header.ended = fmt::format("{:%Y-%m-%dT%H:%M:%S}", fmt::localtime(std::time(nullptr)));
        header.outcome = outcome;
        header.counts = fmt::format(
            R"({{"rows":{},"changed_back":{},"removed":{},"brought_back":{},"as_before":{},"kept":{}}})", counts.rows,
            counts.changedBack, counts.removed, counts.broughtBack, counts.asBefore, counts.kept);
    });
    record_->close();
    failure_ = record_->failure();
    if (failure_) id_.clear();
    record_.reset();
}

}  // namespace kolmera
