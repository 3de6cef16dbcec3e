#include "ui/lists.h"

#include <QComboBox>
#include <QHeaderView>
#include <QTreeView>
#include <functional>

#include "platform/lettercase.h"
#include "ui/qttext.h"
#include "ui/rules/listrows.h"
#include "ui/tabstopdelegate.h"

namespace kolmera {
namespace {

constexpr int kNone = -1;

int firstRow(const QAbstractItemModel& model, const std::function<bool(const QModelIndex&)>& matches) {
    for (int row = 0; row < model.rowCount(); ++row) {
        if (matches(model.index(row, 0))) return row;
    }
    return kNone;
}

int rowWithId(const QAbstractItemModel& model, std::int64_t id) {
    return firstRow(model, [id](const QModelIndex& row) {
        const QVariant data = row.data(kIdRole);
        return data.isValid() && data.toLongLong() == id;
    });
}

int rowBeginningWith(const QAbstractItemModel& model, std::string_view text) {
    return firstRow(model, [beginning = toQt(text)](const QModelIndex& row) {
        return row.data().toString().startsWith(beginning, Qt::CaseSensitive);
    });
}

int rowWithCode(const QAbstractItemModel& model, std::string_view code) {
    return firstRow(model, [code = trimmed(code)](const QModelIndex& row) {
        const std::string text = fromQt(row.data().toString());
        const auto rowCode = codeOfRow(text);
        return rowCode && equalNoCase(*rowCode, code);
    });
}

}  // namespace

std::int64_t recordId(Recordset& recordset) {
    const Value& value = recordset.value(0);
    const auto* id = std::get_if<std::int64_t>(&value);
    return id != nullptr ? *id : 0;
}

void selectRow(QAbstractItemView& list, int row) {
    const QModelIndex index = list.model()->index(row, 0);
    if (!index.isValid()) list.clearSelection();
    list.setCurrentIndex(index);
    if (index.isValid()) list.scrollTo(index);
}

int selectedRow(const QAbstractItemView& list) { return list.currentIndex().row(); }

void VäljListradEfterId(Recordset& recordset, QAbstractItemView& list) {
    const int row = rowWithId(*list.model(), recordId(recordset));
    if (row != kNone) selectRow(list, row);
}

void TaBortListradEfterId(Recordset& recordset, QAbstractItemView& list) {
    const int row = rowWithId(*list.model(), recordId(recordset));
    if (row != kNone) list.model()->removeRow(row);
}

void VäljListradEfterText(QAbstractItemView& list, std::string_view text) {
    selectRow(list, rowBeginningWith(*list.model(), text));
}

void VäljListradEfterText(QComboBox& list, std::string_view text) {
    list.setCurrentIndex(rowBeginningWith(*list.model(), text));
}

void VäljListradEfterKod(QAbstractItemView& list, std::string_view code) {
    const int row = rowWithCode(*list.model(), code);
    if (row != kNone) selectRow(list, row);
}

void VäljListradEfterKod(QComboBox& list, std::string_view code) {
    const int row = rowWithCode(*list.model(), code);
    if (row != kNone) list.setCurrentIndex(row);
}

void SorteraKolumn(QTreeView& list, int column) {
    const QHeaderView& header = *list.header();
    const bool reverse = header.sortIndicatorSection() == column && header.sortIndicatorOrder() == Qt::AscendingOrder;
    list.sortByColumn(column, reverse ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void sortByHeaderClicks(QTreeView& list) {
    list.header()->setSortIndicator(kNone, Qt::AscendingOrder);
    list.setSortingEnabled(true);
}

void setTabStops(QAbstractItemView& list, std::vector<int> dialogUnits) {
    list.setItemDelegate(new TabStopDelegate(list, std::move(dialogUnits)));
}

}  // namespace kolmera
