#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/engine/database.h"
#include "platform/engine/pages/pagefile.h"
#include "platform/engine/pages/salvage.h"
#include "platform/engine/sqlite/companylayout.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/sqlitestatement.h"

namespace kolmera {

/// A new company file that is filled with what can be read of a damaged one.
class Rebuilding {
  public:
    /// Makes the file with the tables of the damaged one. Throws kDamaged when nothing tells what tables it had.
    Rebuilding(const std::filesystem::path& newFile, const PageFile& damaged, std::span<const TableDef> known);

    /// Brings the rows over and finishes the file; to be called once.
    RepairReport bringOver();

  private:
    /// INSERT for rows with so many values; rows of one table mostly have the same number.
    struct Insert {
        std::size_t values = 0;
        SqliteStatement statement;
    };

    void makeAllIndexes();
    void takeRow(const SalvagedRow& row);
    void takePassword(const SalvagedRow& row);
    bool insert(const SalvagedRow& row, const Value& id);
    [[nodiscard]] bool isTaken(const SalvagedRow& row);
    SqliteStatement& insertFor(std::size_t table, std::size_t values);
    void dropDuplicates(const TableDef& table, const IndexDef& index);
    void countRows();

    const PageFile& damaged_;
    SqliteConnection connection_;
    SalvagedLayout layout_;
    std::vector<Insert> inserts_;
    RepairReport report_;
};

}  // namespace kolmera
