#include "ui/forms.h"

#include <QAbstractItemView>
#include <QDialog>
#include <QEventLoop>
#include <QScreen>
#include <QShortcut>
#include <QTimer>
#include <QWidget>
#include <new>

#include "ui/guidewindow.h"
#include "ui/translation.h"

namespace kolmera {
namespace {

void nameForScreenReaders(QWidget& form) {
    for (QWidget* control : form.findChildren<QWidget*>()) {
        if (!control->toolTip().isEmpty() && control->accessibleName().isEmpty()) {
            control->setAccessibleName(control->toolTip());
        }
    }
}

}  // namespace

void loadForm(Program& program, QWidget& form) {
    ÖversättFormulär(form, program.texts);
    nameForScreenReaders(form);
    SättTypsnitt(form, program.state.TypsnittTahoma);
    auto* help = new QShortcut(QKeySequence(QKeySequence::HelpContents), &form);
    QObject::connect(help, &QShortcut::activated, &form,
                     [&] { openGuide(&form, program.texts, program.state.programFolder()); });
}

bool VisaFormulär(Program& program, QWidget& form, bool modal) {
    try {
        {
            const Hourglass loading(program.boxes.port());
            form.ensurePolished();
        }
        auto* dialog = dynamic_cast<QDialog*>(&form);
        if (modal && dialog != nullptr) {
            dialog->exec();
        } else {
            form.show();
        }
        return true;
    } catch (const std::bad_alloc&) {
        program.boxes.MeddelandeVarning(program.texts.ResText(3001));
        return false;
    }
}

void SättTypsnittKontroll(QWidget& control, bool TypsnittTahoma) {
    if (!TypsnittTahoma) return;
    QFont font = control.font();
    // The user's own font stays behind it, for a machine without Tahoma.
    if (font.families().value(0) == QStringLiteral("Tahoma")) return;
    font.setFamilies(QStringList{QStringLiteral("Tahoma"), font.family()});
    control.setFont(font);
}

void SättTypsnitt(QWidget& form, bool TypsnittTahoma) {
    SättTypsnittKontroll(form, TypsnittTahoma);
    for (QWidget* control : form.findChildren<QWidget*>()) SättTypsnittKontroll(*control, TypsnittTahoma);
}

void centreOnScreen(QWidget& form) {
    const QRect screen = form.screen()->availableGeometry();
    form.move(screen.center() - QRect(QPoint(), form.frameSize()).center());
}

void Vänta(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, [&loop] { loop.quit(); });
    loop.exec();
}

}  // namespace kolmera
