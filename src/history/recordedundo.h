#pragma once

#include <memory>
#include <optional>

#include "history/recordreader.h"
#include "history/runfolder.h"
#include "history/runlock.h"
#include "history/runrecord.h"
#include "history/undo.h"
#include "platform/engine/database.h"

namespace kolmera {

/// Takes a run of a record folder back and keeps a record of that, as of any run: so it can be taken back itself. First
/// `plan`, then `carryOut`. Throws PlatformError.
class RecordedUndo {
  public:
    /// `head` tells who does it: user and version.
    RecordedUndo(Database& database, const RunFolder& folder, std::string_view run, RunHeader head);
    RecordedUndo(const RecordedUndo&) = delete;
    RecordedUndo& operator=(const RecordedUndo&) = delete;

    /// The run that is taken back.
    [[nodiscard]] const RunHeader& run() const { return reader_.header(); }
    [[nodiscard]] const RunUndo& undo() const { return *undo_; }
    // kLocked while another program does the same: half of its work would be taken for changes of others.
    bool plan(const RunUndo::GoOn& goOn);
    /// Where there is nothing to do, no record is made.
    bool carryOut(const RunUndo::GoOn& goOn);

    /// The name of the record of taking back; empty without one.
    [[nodiscard]] const std::string& id() const { return id_; }
    /// Why there is no record; what it should tell has been done all the same.
    [[nodiscard]] const std::optional<PlatformError>& recordFailure() const { return failure_; }

  private:
    [[nodiscard]] RunLock alone() const;
    void startRecord();
    void endRecord(const char* outcome);

    Database& database_;
    const RunFolder& folder_;
    RecordReader reader_;
    RunHeader head_;
    std::unique_ptr<RunUndo> undo_;
    std::unique_ptr<RunRecord> record_;
    std::string id_;
    std::optional<PlatformError> failure_;
};

}  // namespace kolmera
