#pragma once

#include <memory>
#include <string_view>

#include "db/sqllayer.h"
#include "import/entrylist.h"
#include "import/loadedmask.h"
#include "import/seekkeys.h"
#include "platform/date.h"

namespace kolmera {

/// Stores the document path of a record as the product's first document.
class DocumentWriter {
  public:
    DocumentWriter(const LoadedMask& mask, SqlLayer& sql, Date Idag, PassedOver& passedOver);

    /// Returns whether a row was written. An empty path deletes the document under the update rule "U" only.
    bool write(std::string_view productNumber, const EntryList& entries);

  private:
    bool store(std::string_view productNumber, std::string_view path);
    bool save(std::string_view path);

    Source source_;
    SqlLayer& sql_;
    Date Idag_;
    PassedOver& passedOver_;
    std::unique_ptr<Recordset> documents_;
    int Dokument_;
    SeekKeys keys_;
};

}  // namespace kolmera
