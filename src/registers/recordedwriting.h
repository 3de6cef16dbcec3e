#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "history/runfolder.h"
#include "history/runrecord.h"
#include "platform/engine/database.h"
#include "registers/register.h"

namespace kolmera {

struct WritingCounts {
    std::int64_t rows = 0;  ///< read or given
    std::int64_t added = 0, changed = 0, removed = 0;

    [[nodiscard]] std::int64_t written() const { return added + changed + removed; }
};

/// Who writes to a register, and what that is called among the runs.
RunHeader headOfWriting(SqlLayer& sql, LanguageTexts& texts, Register& written, const std::string& company);

/// Writing to a register as a run with a record, which can be shown and taken back as others can. Begin, write, `end`;
/// where nothing was written, no record stays. A record that cannot be made does not stop the writing.
class RecordedWriting {
  public:
    /// `head` as of `headOfWriting`; for an import, with its file.
    RecordedWriting(Database& database, const RunFolder& folder, RunHeader head);
    RecordedWriting(const RecordedWriting&) = delete;
    RecordedWriting& operator=(const RecordedWriting&) = delete;
    ~RecordedWriting();

    /// `outcome` as in a header: "completed", "cancelled", "stopped".
    void end(const char* outcome, const WritingCounts& counts);
    /// The name of the record; empty without one.
    [[nodiscard]] const std::string& id() const { return id_; }
    /// Why there is no record though something was written.
    [[nodiscard]] const std::optional<PlatformError>& failure() const { return failure_; }

  private:
    void close();

    Database& database_;
    const RunFolder& folder_;
    std::unique_ptr<RunRecord> record_;
    std::string id_;
    std::optional<PlatformError> failure_;
};

}  // namespace kolmera
