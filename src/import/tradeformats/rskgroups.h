#pragma once

#include "import/run/runmachinery.h"
#include "import/tradeformats/linelayout.h"

namespace kolmera {

/// A line of RKOD.DAT (code page 850), the product groups beside a RSK price file.
inline constexpr Columns kRskGroup[] = {{"gruppnr", 1, 4}, {"benämning", 5, 44}};
static_assert(wellFormed(kRskGroup));

/// Reads RKOD.DAT in the folder of the price file into "Prodgrupp"; new groups get the company's accounts from the row
/// of `settings`. A file that is missing or cannot be opened is no error. False when the run was cancelled meanwhile.
[[nodiscard]] bool LäsInproduktGrupperRSK(RunMachinery& run, Recordset& settings);

}  // namespace kolmera
