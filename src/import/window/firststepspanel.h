#pragma once

#include <QFrame>
#include <functional>

#include "definitions/firststeps.h"

class QLabel;
class QPushButton;

namespace kolmera {

/// The part of the main window that leads on in a new company: what is to be done before the first import, each with a
/// button that opens the window for it. It goes when it is done, or when the user hides it.
class FirstStepsPanel final : public QFrame {
  public:
    explicit FirstStepsPanel(QWidget& form);

    std::function<void()> onSuppliers, onLetters, onNewJob, onCouplings;

    /// What Tab comes to behind the panel.
    void goOnTo(QWidget& next) const;
    void present(const FirstSteps& steps, bool enabled);

  private:
    bool hidden_ = false;
    QLabel* supplierMark_;
    QPushButton *suppliers_, *letters_, *newJob_, *couplings_, *hide_;
};

}  // namespace kolmera
