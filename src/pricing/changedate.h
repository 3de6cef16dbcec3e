#pragma once

#include "platform/date.h"
#include "platform/engine/recordset.h"

namespace kolmera {

inline constexpr std::string_view kFörändringsdatum = "Förändringsdatum";

/// Stamps the row that is being edited or added with the day of its change. Loops that touch many rows resolve the
/// ordinal of `kFörändringsdatum` once.
inline void SättÄndringsdatum(Recordset& row, int ordinal, Date Idag) { row.set(ordinal, Idag); }
inline void SättÄndringsdatum(Recordset& row, Date Idag) { row.set(kFörändringsdatum, Idag); }

}  // namespace kolmera
