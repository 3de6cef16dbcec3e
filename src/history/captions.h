#pragma once

#include <string>

#include "lang/languagetexts.h"
#include "platform/engine/schema.h"

namespace kolmera {

/// A column of a company's table as users know it: "Purchase price", and of other tables than that of the products with
/// the table before it, "Supplier price: Purchase price". What no language has a text for stands as it is named.
std::string columnCaption(LanguageTexts& texts, const TableDef& table, int column);

}  // namespace kolmera
