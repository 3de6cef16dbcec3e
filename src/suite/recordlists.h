#pragma once

#include <cstdint>
#include <string_view>

#include "platform/engine/recordset.h"
#include "platform/locale.h"
#include "ui/fields.h"
#include "ui/lists.h"

class QComboBox;
class QTreeView;

namespace kolmera {

// Lists and fields that show the records of one table: a row's item data is its record's ID.

/// The record's ID: the first column of the current record.
std::int64_t recordId(Recordset& recordset);

/// Selects the row of the current record; without a match the selection stays.
void VäljListradEfterId(Recordset& recordset, QAbstractItemView& list);
/// Removes the row of the current record.
void TaBortListradEfterId(Recordset& recordset, QAbstractItemView& list);
/// Selects the first row whose text begins with the text, letter case counting; none: no selection.
void VäljListradEfterText(QAbstractItemView& list, std::string_view text);
void VäljListradEfterText(QComboBox& list, std::string_view text);
/// Selects the first row of that code, which stands behind its first tab (of a company: its database), letter case not
/// counting; without a match the selection stays.
void VäljListradEfterKod(QAbstractItemView& list, std::string_view code);
void VäljListradEfterKod(QComboBox& list, std::string_view code);

/// Sorts by a column: ascending, or in reverse when the list is sorted by it already.
void SorteraKolumn(QTreeView& list, int column);

/// Field i shows the current record's column i, for i = from..to; what cannot be read leaves its field as it was.
void FyllFältFrånPost(int from, int to, Recordset& recordset, Fields fields, const Locale& locale);
/// Looks up the record whose column `from` equals field `from`; found, its row is selected and fields from..to show it.
void SökPost(int from, int to, Recordset& recordset, Fields fields, QAbstractItemView& list, const Locale& locale);

}  // namespace kolmera
