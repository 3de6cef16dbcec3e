#pragma once

#include <string>
#include <vector>

#include "lang/languagetexts.h"
#include "source/sourceformat.h"

namespace kolmera {

// The signs of numbers and dates that a user chooses among.
inline constexpr char kDecimalSigns[] = {',', '.'};
inline const std::vector<std::string> kThousandsSigns = {"", " ", "\u00A0", "\u202F", ".", ",", "'"};
inline constexpr DateOrder kKnownDateOrders[] = {DateOrder::YearMonthDay, DateOrder::DayMonthYear,
                                                 DateOrder::MonthDayYear};

/// A sign as a list shows it: itself, or what it is called where it cannot be seen.
std::string signName(LanguageTexts& texts, const std::string& sign);

}  // namespace kolmera
