#pragma once

#include <span>

class QLineEdit;

namespace kolmera {

/// The text boxes of a control array, by index.
using Fields = std::span<QLineEdit* const>;

/// Empties fields from..to and gives the focus to field `from`.
void RensaFält(Fields fields, int from, int to);
/// Selects the field's whole text.
void MarkeraText(QLineEdit& field, bool focusFirst);
/// A password box shows large dots, in the suite's font for them where it is installed.
void LösenStil(QLineEdit& field);

}  // namespace kolmera
