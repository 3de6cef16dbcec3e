#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "history/runfolder.h"
#include "products/productcard.h"

namespace kolmera {

/// A column of a product, or of a row of it, that a run changed.
struct ProductChange {
    std::string run;  ///< the name of its record
    std::string table;
    std::int64_t record = 0;  ///< of the price file, from 1; 0 outside it
    ChangeKind kind{};
    CellChange cell;
};

/// What of a product is looked for in the records.
struct ProductRowIds {
    std::string number, companyFile;
    std::map<std::string, std::set<std::int64_t>> ids;
};

/// The changes of a product in the records of past runs. It asks nothing of the company, so that a thread of its own
/// can read them.
class ProductHistory {
  public:
    struct Limits {
        std::size_t changes = 200;  ///< stops behind the run that has reached it
        std::size_t runs = 1000;
    };
    struct Outcome {
        std::size_t read = 0;        ///< records
        std::size_t unreadable = 0;  ///< records that could not be read to their end
        bool all = false;            ///< no record is left
    };

    ProductHistory(const std::filesystem::path& dataFolder, ProductRowIds rows)
        : folder_(dataFolder), rows_(std::move(rows)) {}

    /// Gives the changes run by run, the newest run first and the changes of each in their order. Throws PlatformError
    /// for the folder; a record that cannot be read is counted.
    Outcome read(
        const Limits& limits, const std::atomic<bool>& cancelled,
        const std::function<void(const RunHeader& run, const std::vector<ProductChange>& changes)>& take) const;

  private:
    [[nodiscard]] bool isOurs(const RowChange& change) const;

    RunFolder folder_;
    ProductRowIds rows_;
};

/// A table of changes for people, newest run first: started, import, column, before, after, record.
CardTable historyTable(LanguageTexts& texts);
void addHistory(CardTable& table, SqlLayer& sql, LanguageTexts& texts, const RunHeader& run,
                const std::vector<ProductChange>& changes);

}  // namespace kolmera
