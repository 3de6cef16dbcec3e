#pragma once

#include <cstdint>
#include <string>

#include "platform/engine/value.h"
#include "platform/locale.h"

namespace kolmera {

/// The suite's conversions of field values, which tolerate Null and bad values.

/// Formats the value under the locale and reads that text's leading number with "." as the only decimal point, halves
/// to even: a stored 13.5 gives 13 in Swedish ("13,5") and 14 in English. Null and what does not fit 32 bits give 0.
std::int32_t TillLng(const Value& value, const Locale& locale);
/// The value when it is numeric (a text: in the locale), else 0. A Boolean counts as it is stored, 0 or 1.
double TillDbl(const Value& value, const Locale& locale);
/// 0 for Null, for what is not numeric and for what does not fit 32 bits.
float TillSng(const Value& value, const Locale& locale);
/// "" for Null, else the value as text under the locale (dates in the short date format, Booleans "True"/"False").
std::string TillText(const Value& value, const Locale& locale);
/// The same for the value of a field of that type: a Single shows the 7 digits that it holds, not the 15 of a Double.
std::string TillText(const Value& value, FieldType type, const Locale& locale);
/// Non-zero is true; texts "True"/"False" and numbers are read; Null and others false.
bool TillBool(const Value& value, const Locale& locale);

}  // namespace kolmera
