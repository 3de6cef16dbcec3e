#include "ui/fields.h"

#include <QFontDatabase>
#include <QLineEdit>
#include <QProxyStyle>

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

}  // namespace

void RensaFält(Fields fields, int from, int to) {
    for (int i = from; i <= to; ++i) at(fields, i).clear();
    at(fields, from).setFocus();
}

void MarkeraText(QLineEdit& field, bool focusFirst) {
    if (focusFirst) field.setFocus();
    field.selectAll();
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
