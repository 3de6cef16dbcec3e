#include "ui/fields.h"

#include <QFontDatabase>
#include <QLineEdit>
#include <QProxyStyle>
#include <string>

#include "db/conversions.h"
#include "db/sqllayer.h"
#include "platform/attempt.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

QLineEdit& at(Fields fields, int index) { return *fields[static_cast<std::size_t>(index)]; }

/// The mask sign of LösenStil.
class PasswordStyle final : public QProxyStyle {
  public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        constexpr int kDot = 151;
        return hint == SH_LineEdit_PasswordCharacter ? kDot : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

bool isText(FieldType type) { return type == FieldType::Text || type == FieldType::Memo; }

}  // namespace

void RensaFält(Fields fields, int from, int to) {
    for (int i = from; i <= to; ++i) at(fields, i).clear();
    at(fields, from).setFocus();
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

void MarkeraText(QLineEdit& field, bool focusFirst) {
    if (focusFirst) field.setFocus();
    field.selectAll();
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

void LösenStil(QLineEdit& field) {
    constexpr int kPointSize = 10;
    const QString dots = QStringLiteral("Wingdings 2");
    if (field.echoMode() != QLineEdit::Password || !QFontDatabase::families().contains(dots)) return;
    field.setFont(QFont(dots, kPointSize));
    auto* style = new PasswordStyle;
    style->setParent(&field);
    field.setStyle(style);
}

}  // namespace kolmera
