#include "ui/forms.h"

#include <QAbstractItemView>
#include <QDialog>
#include <QEvent>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <QStyle>
#include <QVBoxLayout>
#include <QWidget>
#include <new>

#include "lang/keys/definitions.h"
#include "lang/keys/shared.h"
#include "ui/copyrows.h"
#include "ui/guidewindow.h"
#include "ui/translation.h"
#include "ui/windowmemory.h"

namespace kolmera {
namespace {

void nameForScreenReaders(QWidget& form) {
    // What a label says of a box, the window system passes on by itself.
    for (const QLabel* label : form.findChildren<QLabel*>()) {
        if (auto* list = dynamic_cast<QAbstractItemView*>(label->buddy())) {
            list->setAccessibleName(label->text().remove('&'));
        }
    }
    for (QWidget* control : form.findChildren<QWidget*>()) {
        if (!control->toolTip().isEmpty() && control->accessibleName().isEmpty()) {
            control->setAccessibleName(control->toolTip());
        }
    }
}

/// A form that needs more room than the screen has is scrolled, so that its last button can be reached.
void scrollWhereTooLarge(QWidget& form) {
    QLayout* layout = form.layout();
    const QSize room = form.screen()->availableSize() - (form.frameSize() - form.size());
    if (layout == nullptr || layout->totalMinimumSize().boundedTo(room) == layout->totalMinimumSize()) return;
    const QSize wanted = form.sizeHint() + QSize(form.style()->pixelMetric(QStyle::PM_ScrollBarExtent), 0);
    auto* contents = new QWidget;
    contents->setLayout(layout);
    auto* area = new QScrollArea(&form);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidget(contents);
    auto* outer = new QVBoxLayout(&form);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(area);
    form.resize(wanted.boundedTo(room));
}

/// Keeps how a window stands when it goes.
class KeepsWindow final : public QObject {
  public:
    KeepsWindow(WindowMemory& memory, QWidget& form) : QObject(&form), memory_(memory), form_(form) {
        form.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == &form_ && event->type() == QEvent::Hide && !event->spontaneous()) memory_.keep(form_);
        return false;
    }

  private:
    WindowMemory& memory_;
    QWidget& form_;
};

void rememberWindow(const Program& program, QWidget& form) {
    if (program.memory == nullptr || form.objectName().isEmpty()) return;
    program.memory->restore(form);
    new KeepsWindow(*program.memory, form);
}

}  // namespace

void loadForm(Program& program, QWidget& form) {
    ÖversättFormulär(form, program.texts);
    nameForScreenReaders(form);
    SättTypsnitt(form, program.state.TypsnittTahoma);
    for (auto* list : form.findChildren<QAbstractItemView*>()) copyRowsOnKey(*list);
    auto* help = new QShortcut(QKeySequence(QKeySequence::HelpContents), &form);
    QObject::connect(help, &QShortcut::activated, &form, [&] {
        openGuide(&form, program.texts, program.state.programFolder(), form.objectName().toStdString());
    });
}

bool VisaFormulär(Program& program, QWidget& form, bool modal) {
    try {
        {
            const Hourglass loading(program.boxes.port());
            form.ensurePolished();
            rememberWindow(program, form);
            scrollWhereTooLarge(form);
        }
        auto* dialog = dynamic_cast<QDialog*>(&form);
        if (modal && dialog != nullptr) {
            dialog->exec();
        } else {
            form.show();
        }
        return true;
    } catch (const std::bad_alloc&) {
        program.boxes.MeddelandeVarning(program.texts.ResText(text::shared::kOutOfMemory));
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

bool leaveUnsaved(Program& program) {
    return program.boxes.MeddelandeJaNejNej(program.texts.ModulText(text::definitions::kAskToDiscard)) == Answer::Yes;
}

void centreOnScreen(QWidget& form) {
    const QRect screen = form.screen()->availableGeometry();
    form.move(screen.center() - QRect(QPoint(), form.frameSize()).center());
}

}  // namespace kolmera
