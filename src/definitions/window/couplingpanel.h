#pragma once

#include <QGroupBox>

#include "definitions/couplingeditor.h"
#include "ui/program.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace kolmera {

class SearchBox;

/// The supplier couplings in the job window: the list, the boxes of one coupling and their three buttons.
class CouplingPanel final : public QGroupBox {
  public:
    /// `listLines`: how many couplings are seen at least.
    CouplingPanel(Program& program, CouplingEditor& couplings, int listLines, QWidget* parent);

    /// Shows the couplings as they are now.
    void present();
    /// F7, F8, Escape and F9, Ctrl+F for the search box and Alt+L for the list, wherever in the form the focus is.
    void installKeys(QWidget& form);

  private:
    void buildControls(Program& program);
    void layOut(int listLines);
    void connectBoxes();
    void connectButtons();
    void presentList();
    void presentBoxes();
    void leaveBoxes();
    void takeBoxes();

    CouplingEditor& couplings_;
    QListWidget* levLista_;
    SearchBox* sökLev_;
    QLabel *lblLevKod_, *lblLevNummer_, *levNamn_;
    QLineEdit *levKod_, *levNummer_;
    QCheckBox* huvudLev_;
    QPushButton *sparaLev_, *avbrytLev_, *taBortLev_;
};

}  // namespace kolmera
