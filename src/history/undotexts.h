#pragma once

#include <string>

#include "history/undo.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// What taking back does, or has done, a line a count that is not 0.
std::string undoCountsText(LanguageTexts& texts, const UndoCounts& counts, const Locale& locale);

/// A row that stays, why, and under it a line a column with its three values: before the run, left by it, now.
std::string keptRowText(LanguageTexts& texts, const KeptRow& row, const TableDef& table, const Locale& locale);

}  // namespace kolmera
