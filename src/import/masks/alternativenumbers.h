#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "db/sqllayer.h"
#include "import/masks/entrylist.h"
#include "import/masks/loadedmask.h"

namespace kolmera {

/// The alternative numbers of products as the company's database keeps them: at most one a product and heading.
class StoredAlternatives {
  public:
    virtual ~StoredAlternatives() = default;
    /// The stored number, which may be empty; nothing when there is no row. `change` and `remove` go to that row.
    virtual std::optional<std::string> find(std::string_view productNumber, int heading) = 0;
    virtual void add(std::string_view productNumber, int heading, std::string_view alternative) = 0;
    virtual bool change(std::string_view productNumber, int heading, std::string_view alternative) = 0;
    virtual void remove(std::string_view productNumber, int heading) = 0;
};

/// `Prodaltprodnr` for work product by product: by its index in a file, as a dynaset on a server.
std::unique_ptr<Recordset> openAlternatives(SqlLayer& sql);

/// The way to the stored alternatives that suits the open company. `table` is what `openAlternatives` opened.
std::unique_ptr<StoredAlternatives> storedAlternatives(SqlLayer& sql, std::unique_ptr<Recordset> table,
                                                       PassedOver& passedOver);

/// Writes the alternative numbers of a mask's records.
class AlternativeNumbers {
  public:
    AlternativeNumbers(const LoadedMask& mask, std::unique_ptr<StoredAlternatives> stored, PassedOver& passedOver);

    /// Brings the product's alternative numbers in line with the record; returns how many rows were written. An empty
    /// one in the record deletes the stored one under the update rule "U" only.
    int write(std::string_view productNumber, const EntryList& entries);

  private:
    struct Column {
        Source source;
        int heading = 0;
    };
    bool write(const Column& column, std::string_view productNumber, std::string_view alternative);

    std::unique_ptr<StoredAlternatives> stored_;
    PassedOver& passedOver_;
    std::vector<Column> columns_;
};

}  // namespace kolmera
