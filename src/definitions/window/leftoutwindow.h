#pragma once

#include <QDialog>

#include "definitions/leftouteditor.h"
#include "ui/program.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace kolmera {

/// Which rows of a price file are left out, and which of the first rows these are.
class LeftOutWindow final : public QDialog {
  public:
    LeftOutWindow(Program& program, LeftOutEditor& editor, QWidget* parent);

  private:
    void reject() override;
    void build();
    void layOut();
    void present();

    Program& program_;
    LeftOutEditor& editor_;
    std::vector<LeftOutRows> before_;
    QLabel *ledtext_, *lblMönster_, *lblKolumn_, *lblText_, *lblRader_;
    QListWidget *mönster_, *rader_;
    QComboBox* kolumn_;
    QLineEdit* text_;
    QPushButton *läggTill_, *taBort_, *föreslå_, *ok_, *avbryt_;
};

}  // namespace kolmera
