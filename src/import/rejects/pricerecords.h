#pragma once

#include <optional>

#include "history/recordreader.h"
#include "import/masks/loadedmask.h"
#include "import/masks/recordreader.h"
#include "import/run/runcounts.h"
#include "platform/pricefile.h"

namespace kolmera {

/// Cuts a price file into its records as a run did, without taking them in. `next` until it answers false; after each,
/// the rest is about that record.
class PriceRecords {
  public:
    /// What a record says that the records behind it go by, until another record says it anew.
    enum class Says { Nothing, Header, Article };
    static constexpr int kSayings = 3;

    /// Throws kDamaged for a definition by which no run goes.
    PriceRecords(PriceFile& file, const RunDefinition& definition);

    [[nodiscard]] bool next();
    [[nodiscard]] const RecordPlace& place() const { return place_; }
    [[nodiscard]] Says says() const { return says_; }

  private:
    void readLine();

    PriceFile& file_;
    std::string format_;  ///< of the trade; empty: a mask
    LoadedMask mask_;
    std::optional<MaskRecordReader> reader_;
    RecordPlace place_;
    Says says_ = Says::Nothing;
};

}  // namespace kolmera
