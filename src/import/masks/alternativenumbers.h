#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "db/sqllayer.h"
#include "import/masks/entrylist.h"
#include "import/masks/loadedmask.h"
#include "import/rows/alternativerows.h"
#include "import/run/runsummary.h"

namespace kolmera {

/// The alternative numbers of products as the company's database keeps them: at most one a product and heading. What
/// the database refuses reaches the caller.
class StoredAlternatives {
  public:
    explicit StoredAlternatives(AlternativeRows& rows) : rows_(rows) {}
    virtual ~StoredAlternatives() = default;
    /// The stored number, which may be empty; nothing when there is no row. `change` and `remove` go to that row.
    virtual std::optional<std::string> find(std::string_view productNumber, int heading) = 0;
    virtual void add(std::string_view productNumber, int heading, std::string_view alternative);
    virtual void change(std::string_view productNumber, int heading, std::string_view alternative) = 0;
    virtual void remove(std::string_view productNumber, int heading) = 0;

  protected:
    AlternativeRows& rows_;
};

/// `Prodaltprodnr` for work product by product: by its index in a file, as a dynaset on a server.
std::unique_ptr<Recordset> openAlternatives(SqlLayer& sql);

/// Writes the alternative numbers of a mask's records, and counts them.
class AlternativeNumbers {
  public:
    /// `table` is what `openAlternatives` opened.
    AlternativeNumbers(const LoadedMask& mask, SqlLayer& sql, std::unique_ptr<Recordset> table, RunSummary& summary);

    /// Brings the product's alternative numbers in line with the record. An empty one in the record deletes the stored
    /// one under the update rule "U" only.
    void write(std::string_view productNumber, const EntryList& entries);

  private:
    struct MaskColumn {
        Source source;
        int heading = 0;
    };
    void write(const MaskColumn& column, std::string_view productNumber, std::string_view alternative);

    AlternativeRows rows_;
    std::unique_ptr<StoredAlternatives> stored_;
    std::vector<MaskColumn> columns_;
};

}  // namespace kolmera
