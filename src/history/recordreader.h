#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/rowchange.h"

namespace kolmera {

enum class RunKind { Run, Preview, Undo };

/// The price file that a run read.
struct RecordedFile {
    std::string path;
    std::int64_t size = 0;  ///< bytes
    std::string modified;   ///< "2026-11-23T08:15:00", local time
    std::string sha256;     ///< hexadecimal
    bool copied = false;    ///< the record holds a compressed copy
};

/// The highest ID of each table at a moment: rows with higher ones have come since. A table that is not there may have
/// had any.
using LastIds = std::map<std::string, std::int64_t>;

/// What stands at the head of a run's record.
struct RunHeader {
    std::string id;  ///< the record's file name without its ending; what users name a run by
    RunKind kind{};
    std::string of;       ///< Undo: the run that was taken back
    std::string started;  ///< local time, "2026-11-23T08:15:00"
    std::string ended;    ///< empty: it is under way, or was ended from outside
    std::string outcome;  ///< as in the summary file: "completed", "cancelled", "stopped"; empty as `ended`
    std::string user, host, version;
    std::string job;         ///< its name
    std::string definition;  ///< JSON: job, mask and coupling as they were
    std::string companyName, companyFile;
    LastIds lastIds;  ///< of the company, before the run
    RecordedFile priceFile;
    std::string counts;     ///< JSON: the counts of the summary file
    bool locked = false;    ///< the program that writes it holds its RunLock
    bool underWay = false;  ///< as RunFolder finds it; not in the record
};

/// Something of the price file that was passed over or became another value.
struct RecordRemark {
    std::string kind;          ///< a name of kRemarks (import/run/runreport.h)
    std::int64_t record = 0;   ///< record or line, from 1
    std::int64_t offset = -1;  ///< of the record's first byte in the price file; -1: it stands in another file
    std::int64_t length = -1;  ///< of the record, in bytes; -1: not known, as in records of the first version
    std::string product, column, text, reason;
};

/// Where a record of the price file stands.
struct RecordPlace {
    std::int64_t record = 0, offset = 0, length = 0;
};

/// Reads the record of a run, also of one that is under way or was ended from outside. Throws PlatformError.
class RecordReader {
  public:
    explicit RecordReader(const std::filesystem::path& file);
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;
    ~RecordReader();

    [[nodiscard]] const RunHeader& header() const;
    /// The changes in the order of the writing, those that were rolled back apart. False from `take` ends it. Memory
    /// does not grow with the run.
    void forEachChange(const std::function<bool(const RowChange&)>& take) const;
    void forEachRemark(const std::function<bool(const RecordRemark&)>& take) const;
    /// The search keys or product numbers of the records that were read, in their order; the same one may come again.
    void forEachKey(const std::function<bool(std::string_view key)>& take) const;
    /// The copy of the price file, as far as it was read, where `header().priceFile.copied` says that there is one.
    void forEachCopied(const std::function<void(std::string_view)>& take) const;
    /// Where a record stands that changed rows, or that there is a remark about; nothing when it is not known.
    [[nodiscard]] std::optional<RecordPlace> place(std::int64_t record) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kolmera
