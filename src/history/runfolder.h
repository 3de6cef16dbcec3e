#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "history/recordreader.h"

namespace kolmera {

/// How many records are kept, and how large they may be together.
struct RecordLimits {
    std::int64_t number = 200;
    std::int64_t bytes = std::int64_t{2} * 1024 * 1024 * 1024;
};

/// The records of the runs of one data folder: `Körningar` in it.
class RunFolder {
  public:
    explicit RunFolder(const std::filesystem::path& dataFolder);
    static RunFolder at(const std::filesystem::path& path) { return RunFolder(path, Exactly{}); }

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    /// Whether a record can be made here, as far as rights tell; the folder itself is made when it is missing.
    [[nodiscard]] bool takesRecords() const;
    /// The heads of all records that can be read, the newest first, with `underWay`. What is no record, or is damaged,
    /// is counted in `unreadable`.
    [[nodiscard]] std::vector<RunHeader> list(std::int64_t* unreadable = nullptr) const;
    /// The names of all records, the newest first, unread.
    [[nodiscard]] std::vector<std::string> ids() const;
    /// The head of a record, with `underWay`. Throws PlatformError.
    [[nodiscard]] RunHeader header(std::string_view id) const;
    /// The file of a record; throws kFileNotFound for what names none.
    [[nodiscard]] std::filesystem::path file(std::string_view id) const;
    /// Whether the program that writes a record is at it. Where files cannot be locked: whether it has no end, and has
    /// been written to within a day.
    [[nodiscard]] bool isUnderWay(const RunHeader& run) const;
    /// Throws PlatformError.
    void remove(std::string_view id) const;
    /// Removes the oldest records beyond the limits, and tells how many. The newest one stays, and so do those that are
    /// under way, or may be.
    std::int64_t thin(const RecordLimits& limits) const;

  private:
    struct Exactly {};
    RunFolder(std::filesystem::path path, Exactly /*unused*/) : path_(std::move(path)) {}

    [[nodiscard]] bool mayBeUnderWay(const std::filesystem::path& file) const;

    std::filesystem::path path_;
};

}  // namespace kolmera
