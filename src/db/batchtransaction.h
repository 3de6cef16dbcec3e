#pragma once

#include "platform/engine/database.h"

namespace kolmera {

/// The transactions of a loop over many rows, which end and begin anew every so many rows. What the last one holds is
/// committed however the loop is left: also when it was cancelled, and when an error ends the run.
class BatchTransaction {
  public:
    enum class Kind {
        Batches,
        Whole,  ///< in a file nothing of the loop is kept unless it reaches `end`; a server knows batches only
    };

    explicit BatchTransaction(Database& database, Kind kind = Kind::Batches);
    BatchTransaction(const BatchTransaction&) = delete;
    BatchTransaction& operator=(const BatchTransaction&) = delete;
    ~BatchTransaction();

    /// Whether leaving the loop without `end` takes back everything.
    [[nodiscard]] bool isWhole() const { return whole_; }
    /// Ends the batch and begins the next. The engine may join the physical commits of batches that follow closely.
    void next();
    /// Ends the last batch; everything is on the disk when it returns. Call before showing or asking anything.
    void end();

  private:
    void commitOrRollBack();

    Database& database_;
    bool whole_ = false;
};

}  // namespace kolmera
