#pragma once

#include <span>

#include "platform/engine/recordset.h"
#include "platform/locale.h"

class QAbstractItemView;
class QLineEdit;

namespace kolmera {

/// The text boxes of a control array, by index.
using Fields = std::span<QLineEdit* const>;

/// Empties fields from..to and gives the focus to field `from`.
void RensaFält(Fields fields, int from, int to);
/// Field i shows the current record's column i, for i = from..to; what cannot be read leaves its field as it was.
void FyllFältFrånPost(int from, int to, Recordset& recordset, Fields fields, const Locale& locale);
/// Selects the field's whole text.
void MarkeraText(QLineEdit& field, bool focusFirst);
/// Looks up the record whose column `from` equals field `from`; found, its row is selected and fields from..to show it.
void SökPost(int from, int to, Recordset& recordset, Fields fields, QAbstractItemView& list, const Locale& locale);
/// A password box shows large dots, in the suite's font for them where it is installed.
void LösenStil(QLineEdit& field);

}  // namespace kolmera
