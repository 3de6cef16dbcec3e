#pragma once

#include <QAbstractItemView>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/engine/recordset.h"

class QComboBox;
class QTreeView;

namespace kolmera {

// A list's rows are those of its model; the text of a row is its first column's, its item data the record's ID in
// kIdRole of that column.
inline constexpr int kIdRole = Qt::UserRole;

/// The record's ID: the first column of the current record.
std::int64_t recordId(Recordset& recordset);

/// Selects a row and scrolls it into view; -1 selects none.
void selectRow(QAbstractItemView& list, int row);
/// The current row, -1 for none.
int selectedRow(const QAbstractItemView& list);

/// Selects the row of the current record; without a match the selection stays.
void VäljListradEfterId(Recordset& recordset, QAbstractItemView& list);
/// Removes the row of the current record.
void TaBortListradEfterId(Recordset& recordset, QAbstractItemView& list);
/// Selects the first row whose text begins with the text, letter case counting; none: no selection.
void VäljListradEfterText(QAbstractItemView& list, std::string_view text);
void VäljListradEfterText(QComboBox& list, std::string_view text);
/// Selects the first row of that code (`codeOfRow`), letter case not counting; without a match the selection stays.
void VäljListradEfterKod(QAbstractItemView& list, std::string_view code);
void VäljListradEfterKod(QComboBox& list, std::string_view code);

/// Sorts by a column: ascending, or in reverse when the list is sorted by it already.
void SorteraKolumn(QTreeView& list, int column);
/// Lets clicks on the column headers do the same; the list begins unsorted.
void sortByHeaderClicks(QTreeView& list);

/// Lets a list show the tabs of its rows as columns. A stop is given in dialog units, a quarter of the average letter's
/// width each; a column that is wider than its stops pushes the following ones to the right, so that nothing is cut.
void setTabStops(QAbstractItemView& list, std::vector<int> dialogUnits);

}  // namespace kolmera
