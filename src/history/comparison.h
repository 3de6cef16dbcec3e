#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "history/recordreader.h"
#include "platform/engine/sqlite/sqliteconnection.h"

namespace kolmera {

/// Which articles one price file has and the other lacks, by the keys that the runs' records keep: search keys of
/// masks, product numbers of trade formats; letter case counts. Memory does not grow with the files. Only tells:
/// nothing is ever deleted for being in no file.
class FileComparison {
  public:
    FileComparison(const RecordReader& before, const RecordReader& now);

    /// A run of an earlier version has kept no keys; there is nothing to compare then.
    [[nodiscard]] bool comparable() const { return before_ > 0 && now_ > 0; }
    [[nodiscard]] std::int64_t added();
    [[nodiscard]] std::int64_t gone();
    /// In the order of the keys; false from `take` ends it.
    void forEachAdded(const std::function<bool(std::string_view key)>& take);
    void forEachGone(const std::function<bool(std::string_view key)>& take);
    /// Holds the table article(n, isnew, key, product, name, search) of those that one file lacks; `product`, `name`
    /// and `search`, what a filter looks in, are ComparisonList's.
    [[nodiscard]] SqliteConnection& connection() { return file_; }

  private:
    std::int64_t fill(const char* table, const RecordReader& record);
    void findDifferences();
    void forEach(bool isNew, const std::function<bool(std::string_view key)>& take);

    SqliteConnection file_;
    std::int64_t before_, now_;
};

}  // namespace kolmera
