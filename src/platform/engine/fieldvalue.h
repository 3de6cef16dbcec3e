#pragma once

#include "platform/engine/schema.h"
#include "platform/engine/value.h"
#include "platform/locale.h"

namespace kolmera {

/// Turns a value into the form in which a field holds it: a Boolean, a whole number in the range of the type (halves
/// rounded to the even neighbour), a number (Currency with four decimals, Single with the precision of 32 bits), a date
/// or a text. Texts become numbers and dates by the locale. Null stays Null. Throws kWrongType for what the type cannot
/// be ("" is no number and no date) and kTextTooLong for more characters than the field has; `value` is then
/// unspecified.
void fitToField(const FieldDef& field, Value& value, const Locale& locale);

/// The same for a key that is only compared: it may be longer than the field.
void fitToKey(const FieldDef& field, Value& value, const Locale& locale);

/// What a field holds in a new record: 0, false, or Null.
Value defaultOf(const FieldDef& field);

/// Order of two values of one field, as an index has it: Null first, texts by the Swedish order.
int compareValues(const Value& a, const Value& b);

}  // namespace kolmera
