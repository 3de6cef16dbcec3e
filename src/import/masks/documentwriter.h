#pragma once

#include <string_view>

#include "db/sqllayer.h"
#include "import/masks/entrylist.h"
#include "import/masks/loadedmask.h"
#include "import/rows/rowwriter.h"
#include "import/run/runsummary.h"
#include "platform/date.h"
#include "pricing/changedate.h"

namespace kolmera {

/// Stores the document path of a record as the product's first document, and counts it.
class DocumentWriter {
  public:
    DocumentWriter(const LoadedMask& mask, SqlLayer& sql, Date Idag, RunSummary& summary);

    /// An empty path deletes the document under the update rule "U" only.
    void write(std::string_view productNumber, const EntryList& entries);

  private:
    void store(std::string_view productNumber, std::string_view path);

    Source source_;
    Locale locale_;
    Date Idag_;
    RowWriter row_;
    const Column Produktnr_ = row_.column("Produktnr");
    const Column Nummer_ = row_.column("Nummer");
    const Column Dokument_ = row_.column("Dokument");
    const Column Förändringsdatum_ = row_.column(kFörändringsdatum);
};

}  // namespace kolmera
