#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/date.h"
#include "platform/locale.h"

namespace kolmera {

/// Texts of price files as values. None of these fails: what cannot be read has a value of its own. The texts are
/// trimmed.

/// The number that the whole text is, "." and the locale's decimal sign both being decimal points; nothing when it is
/// none. `division` '1', '2', '3' are 1, 2 or 3 implied decimals (the number is divided by 10, 100, 1000).
std::optional<double> readNumber(std::string_view text, char division, const Locale& locale);
/// The same, 0 for a text that is no number.
double parseNumber(std::string_view text, char division, const Locale& locale);
/// How many decimals a division implies, 0 to 3.
constexpr int impliedDecimals(char division) { return division >= '1' && division <= '3' ? division - '0' : 0; }

/// True when the text contains "J", "1" or "Y" (upper case).
bool TolkaJaNej(std::string_view text);

/// The date that a text means: YYMM (the first), YYMMDD (in the century of `Idag`; a day behind the month's last is the
/// last), YYYYMMDD, or what the user's locale reads as a date. Nothing for a text without a leading number above 0.
std::optional<Date> TolkaDatum(std::string_view text, Date Idag, const Locale& locale);

/// A long text: when its line breaks are lone LF, they become CR LF and a double quote at either end goes.
std::string memoText(std::string_view text);

}  // namespace kolmera
