#include "suite/recordlists.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QTreeView>
#include <functional>

#include "db/conversions.h"
#include "db/sqllayer.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "startup/companylist.h"
#include "ui/qttext.h"

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
        return text.find('\t') != std::string::npos && equalNoCase(companyOfRow(text).database, code);
    });
}

QLineEdit& at(Fields fields, int index) { return *fields[static_cast<std::size_t>(index)]; }

bool isText(FieldType type) { return type == FieldType::Text || type == FieldType::Memo; }

}  // namespace

std::int64_t recordId(Recordset& recordset) {
    const Value& value = recordset.value(0);
    const auto* id = std::get_if<std::int64_t>(&value);
    return id != nullptr ? *id : 0;
}

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

void FyllFältFrånPost(int from, int to, Recordset& recordset, Fields fields, const Locale& locale) {
    PassedOverSilently passedOver;
    for (int i = from; i <= to; ++i) {
        attempt(passedOver, "FyllFältFrånPost", [&] {
            const FieldType type = recordset.fields().at(static_cast<std::size_t>(i)).type;
            at(fields, i).setText(toQt(TillText(recordset.value(i), type, locale)));
        });
    }
}

void SökPost(int from, int to, Recordset& recordset, Fields fields, QAbstractItemView& list, const Locale& locale) {
    PassedOverSilently passedOver;
    attempt(passedOver, "SökPost", [&] {
        const FieldDef& column = recordset.fields().at(static_cast<std::size_t>(from));
        const std::string text = fromQt(at(fields, from).text());
        // A text in a number column is read as a number: it must not become part of the criterion.
        const std::string value =
            isText(column.type) ? SqlLayer::SQLText(text) : SqlLayer::SQLTalDbl(TillDbl(text, locale));
        recordset.findFirst("[" + column.name + "] = " + value);
        if (recordset.noMatch()) return;
        VäljListradEfterId(recordset, list);
        FyllFältFrånPost(from, to, recordset, fields, locale);
    });
}

}  // namespace kolmera
