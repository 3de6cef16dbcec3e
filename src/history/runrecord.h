#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "history/blockbytes.h"
#include "history/recordreader.h"
#include "history/runlock.h"
#include "platform/engine/changelistener.h"
#include "platform/error.h"

namespace kolmera {

class SqliteConnection;

/// Writes the record of a run, as the run goes: one file of its own. What the run commits stands in the file before;
/// memory does not grow. A program that is killed leaves a whole record of all that its company holds; when the power
/// goes, the record is whole too, but its last changes may be missing.
///
/// Once made, it never throws: a record that cannot be written any more is removed, `failure` says why, and the run
/// goes on.
class RunRecord final : public ChangeListener {
  public:
    /// Makes a file in this folder, and the folder where it is missing, for all who may use the folder around it. `id`,
    /// `host`, `locked` and, when it is empty, `started` of the header are filled in. Throws PlatformError.
    RunRecord(const std::filesystem::path& folder, RunHeader header);
    ~RunRecord() override;

    [[nodiscard]] const RunHeader& header() const { return header_; }
    [[nodiscard]] const std::filesystem::path& file() const { return file_; }
    [[nodiscard]] const std::optional<PlatformError>& failure() const { return failure_; }

    /// Changes the header: what is known only later, and the run's end.
    void change(const std::function<void(RunHeader&)>& change);
    /// The record of the price file that the run is at.
    void at(const RecordPlace& place) { at_ = place; }
    void remark(const RecordRemark& remark);
    /// The search key or product number of the record that the run is at.
    void key(std::string_view key);
    /// The next bytes of a compressed copy of the price file.
    void copy(std::string_view bytes);
    /// There is to be no record after all.
    void giveUp(const PlatformError& error) { fail(error); }
    /// Writes what is left and closes the file; the last call.
    void close();

    std::int64_t place() override;
    void added(const ChangedRow& row) override { heard(ChangeKind::Added, row); }
    void changed(const ChangedRow& row) override { heard(ChangeKind::Changed, row); }
    void removed(const ChangedRow& row) override { heard(ChangeKind::Removed, row); }
    void kept() override;
    void stands() override;
    void undone() override;
    void statementBegins() override;
    void statementFailed() override;

  private:
    struct File;
    /// Where the changes stood when a statement began.
    struct Mark {
        BlockWriter::Mark block;
        std::int64_t first = 0, last = 0, written = 0;
    };

    static void makeFolder(const std::filesystem::path& folder);
    void makeFile(const std::filesystem::path& folder);
    void fill(const std::filesystem::path& folder);
    void heard(ChangeKind kind, const ChangedRow& row);
    int labelOf(const TableDef& table);
    void flushChanges();
    void flushRemarks();
    void flushKeys();
    void transaction(const std::function<void()>& statements);
    void write(const std::function<void()>& statements) noexcept;
    void fail(const PlatformError& error) noexcept;

    RunHeader header_;
    std::filesystem::path file_;
    std::optional<RunLock> lock_;
    std::unique_ptr<File> open_;  ///< none: closed, or failed
    std::optional<PlatformError> failure_;

    RecordPlace at_;
    std::int64_t placed_ = 0;                              ///< the record whose place was written last
    std::vector<std::pair<const TableDef*, int>> labels_;  ///< `labelColumn` of the tables met so far
    BlockWriter changes_, remarks_, keys_;
    std::int64_t first_ = 0, last_ = 0;  ///< records whose places are in `changes_`
    std::int64_t written_ = 0;           ///< number of the last block
    std::int64_t kept_ = 0;              ///< the header's
    std::int64_t standing_ = 0;          ///< block that the company is known to hold
    std::int64_t remarkBlocks_ = 0, keyBlocks_ = 0, copyBlocks_ = 0;
    std::string lastKey_;
    std::optional<Mark> mark_;
    std::int64_t flushedRemarks_ = 0;  ///< when, in milliseconds
};

}  // namespace kolmera
