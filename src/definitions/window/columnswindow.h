#pragma once

#include <QDialog>

#include "definitions/columneditor.h"
#include "ui/program.h"

class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;

namespace kolmera {

class PropertyGrid;

/// Where the columns of a mask come from and how their values are read: the columns, the properties of the chosen one,
/// and its values before and after.
class ColumnsWindow final : public QDialog {
  public:
    ColumnsWindow(Program& program, ColumnEditor& editor, QWidget* parent);

  private:
    void reject() override;
    void build();
    void layOut();
    void present();
    void presentColumns();
    void presentShown();
    void presentReplacements();
    void takeReplacements();
    void takeWhatIsTyped();

    Program& program_;
    ColumnEditor& editor_;
    SourceSettings before_;
    QLabel *lblKolumner_, *lblVärden_, *lblErsätt_, *anmärkning_;
    QListWidget* kolumner_;
    PropertyGrid* egenskaper_;
    QTableWidget *värden_, *ersätt_;
    QPushButton *läggTill_, *ok_, *avbryt_;
};

}  // namespace kolmera
