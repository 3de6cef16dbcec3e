#pragma once

#include "db/sqllayer.h"
#include "history/netchanges.h"

namespace kolmera {

/// Names what the rows of a run are about, as far as the run had not read it, by the company that is open.
void nameProducts(SqlLayer& sql, NetChanges& changes);

}  // namespace kolmera
