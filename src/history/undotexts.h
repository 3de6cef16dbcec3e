#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "history/undo.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// What taking back does, or has done: the counts that are shown, each with its caption.
std::array<std::pair<ModuleKey, std::int64_t>, 5> captioned(const UndoCounts& counts);
/// A line a count that is not 0.
std::string undoCountsText(LanguageTexts& texts, const UndoCounts& counts, const Locale& locale);

/// Why a row stays.
std::string reasonText(LanguageTexts& texts, const KeptRow& row);
/// A column of it with its three values: before the run, left by it, now.
std::string keptCellText(LanguageTexts& texts, const KeptCell& cell, const TableDef& table, const Locale& locale);
/// A row that stays, why, and under it a line a column.
std::string keptRowText(LanguageTexts& texts, const KeptRow& row, const TableDef& table, const Locale& locale);

}  // namespace kolmera
