#pragma once

#include <QString>

class QAbstractItemView;

namespace kolmera {

/// The selected rows as a table of text: what they show, with tabs between the columns in the order shown, one row a
/// line. Rows and columns that are hidden are left out.
QString textOfRows(const QAbstractItemView& list);
/// Puts them on the clipboard.
void copyRows(const QAbstractItemView& list);
/// Lets the key for copying (Ctrl+C) do so.
void copyRowsOnKey(QAbstractItemView& list);

}  // namespace kolmera
