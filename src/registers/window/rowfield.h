#pragma once

#include <QWidget>
#include <functional>
#include <string>

#include "lang/languagetexts.h"
#include "registers/register.h"

class QLabel;

namespace kolmera {

/// A field of a row: a check box, a choice list with names, or a text box, as its column wants; under it stands what is
/// wrong with it. Texts are as the user writes them.
class RowField : public QWidget {
  public:
    /// What rows a column names is asked of `of`, while the user types, too.
    static RowField* make(Register& of, LanguageTexts& texts, char decimalSign, const RegisterRow& row, int column,
                          bool canEdit, QWidget* parent);

    /// What a text is before it is touched.
    virtual void setText(const std::string& text) = 0;
    [[nodiscard]] virtual std::string text() const = 0;

    [[nodiscard]] bool canEdit() const { return canEdit_; }
    /// The control that has the focus.
    [[nodiscard]] QWidget* editor() const { return editor_; }
    /// Says what is wrong, or nothing any more.
    void setFault(const std::string& fault);

    /// The user has left the field behind a change.
    std::function<void()> left = [] {};

  protected:
    RowField(bool canEdit, QWidget* parent) : QWidget(parent), canEdit_(canEdit) {}
    void layOut(QWidget* editor, QWidget* beside = nullptr);

  private:
    bool canEdit_;
    QWidget* editor_ = nullptr;
    QLabel* fault_ = nullptr;
};

}  // namespace kolmera
