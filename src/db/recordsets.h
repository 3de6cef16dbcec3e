#pragma once

#include <cstdint>
#include <memory>

#include "platform/engine/recordset.h"

namespace kolmera {

/// The true number of records: visits the last record, then goes back to the first. Never fails; after an error the
/// count read so far.
std::int32_t AntalPoster(Recordset& recordset);

/// Closes a recordset that may never have been opened, and clears the reference.
void StängPost(std::unique_ptr<Recordset>& recordset);

}  // namespace kolmera
