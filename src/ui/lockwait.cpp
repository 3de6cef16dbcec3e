#include "ui/lockwait.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QProgressDialog>

namespace kolmera {

LockWait::LockWait(QWidget& form) : form_(form) {}

LockWait::~LockWait() { over(); }

bool LockWait::keepWaiting(const QString& text, const QString& cancel) {
    if (!dialog_) {
        // Without an end: how long the other program takes is not known.
        dialog_ = std::make_unique<QProgressDialog>(text, cancel, 0, 0, &form_);
        dialog_->setObjectName(QStringLiteral("Väntar"));
        dialog_->setWindowTitle(form_.windowTitle());
        dialog_->setWindowModality(Qt::ApplicationModal);
        dialog_->show();
        QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    }
    QCoreApplication::processEvents();
    return !dialog_->wasCanceled();
}

void LockWait::over() {
    if (!dialog_) return;
    QGuiApplication::restoreOverrideCursor();
    // Taking the dialog away gives the focus back, which must still find the form waiting.
    dialog_->hide();
    dialog_.reset();
}

}  // namespace kolmera
