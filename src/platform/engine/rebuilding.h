#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/engine/companylayout.h"
#include "platform/engine/pagefile.h"
#include "platform/engine/salvage.h"
#include "platform/engine/sqliteconnection.h"
#include "platform/engine/sqlitestatement.h"

namespace kolmera {

/// A new company file that is filled with what can be read of a damaged one. Order of calls: takeRows, makeIndexes,
/// finish.
class Rebuilding {
  public:
    /// Makes the file with the tables of the damaged one. Throws kDamaged when nothing tells what tables it had.
    Rebuilding(const std::filesystem::path& newFile, const PageFile& damaged);

    void takeRows();
    /// Makes the indexes. Of the rows that break a unique one, the oldest stays.
    void makeIndexes();
    void finish() { connection_.commit(); }

    [[nodiscard]] SqliteConnection& connection() { return connection_; }
    /// Per table, the rows that are in the new file.
    [[nodiscard]] std::vector<std::pair<std::string, std::int64_t>> rows();
    [[nodiscard]] std::int64_t dropped() const { return dropped_; }

  private:
    /// INSERT for rows with so many values; rows of one table mostly have the same number.
    struct Insert {
        std::size_t values = 0;
        SqliteStatement statement;
    };

    void makeTables();
    void takeRow(std::size_t table, std::int64_t id, std::span<const StoredValue> values);
    SqliteStatement& insertFor(std::size_t table, std::size_t values);
    void dropDuplicates(const TableDef& table, const IndexDef& index);

    const PageFile& damaged_;
    SqliteConnection connection_;
    std::vector<LayoutEntry> layout_;
    std::vector<SalvageTable> tables_;
    std::vector<Insert> inserts_;
    std::int64_t dropped_ = 0;
};

}  // namespace kolmera
