#pragma once

#include <QAbstractItemView>
#include <vector>

class QTreeView;

namespace kolmera {

/// The role of a row's item data, the ID of its record, in the first column.
inline constexpr int kIdRole = Qt::UserRole;

/// Selects a row and scrolls it into view; -1 selects none.
void selectRow(QAbstractItemView& list, int row);
/// Lets clicks on the column headers sort: ascending, or in reverse where the list is sorted by that column already.
/// The list begins unsorted.
void sortByHeaderClicks(QTreeView& list);

/// Lets a list show the tabs of its rows as columns. A stop is given in dialog units, a quarter of the average letter's
/// width each; a column that is wider than its stops pushes the following ones to the right, so that nothing is cut.
void setTabStops(QAbstractItemView& list, std::vector<int> dialogUnits);

}  // namespace kolmera
