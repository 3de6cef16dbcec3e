#pragma once

#include <QString>
#include <memory>

class QProgressDialog;
class QWidget;

namespace kolmera {

/// What a form shows while another program keeps a company locked: a text and Cancel, in a small window over the form,
/// which is drawn but takes no keys and clicks.
class LockWait {
  public:
    explicit LockWait(QWidget& form);
    ~LockWait();
    LockWait(const LockWait&) = delete;
    LockWait& operator=(const LockWait&) = delete;

    /// Lets events run; to be called again and again. False when the user has pressed Cancel.
    bool keepWaiting(const QString& text, const QString& cancel);
    /// The wait has ended.
    void over();
    /// The form's fields lose the focus now, though the user has not left them.
    [[nodiscard]] bool shown() const { return dialog_ != nullptr; }

  private:
    QWidget& form_;
    std::unique_ptr<QProgressDialog> dialog_;
};

}  // namespace kolmera
