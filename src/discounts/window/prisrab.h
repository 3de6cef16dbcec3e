#pragma once

#include <QDialog>
#include <array>
#include <functional>

#include "discounts/lettereditor.h"
#include "ui/filedialogs.h"
#include "ui/lockwait.h"
#include "ui/program.h"

class QBoxLayout;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTreeView;

namespace kolmera {

class LetterModel;
class SearchBox;
class SupplierModel;

/// The window of suppliers' discount letters.
class PrisRab final : public QDialog {
  public:
    PrisRab(Program& program, int JobbNr, QWidget* parent);
    ~PrisRab() override;

    // Ask for a file; an empty answer is Cancel.
    std::function<QString(const FileQuestion& question)> fileToRead;
    std::function<QString(const FileQuestion& question)> fileToWrite;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void askForFiles();
    void buildLists();
    void buildFields();
    void buildButtons();
    void layOut();
    void layOutFields(QGridLayout& grid);
    void layOutButtons(QBoxLayout& box);
    void setTabOrders();
    void setSizes();
    void nameColumns();
    void connectLists();
    void connectFields();
    void connectButtons();
    void connectKeys();
    void connectWaiting();

    void presentCompany();
    void presentLetter();
    void presentRow();
    void presentFields();
    void presentButtons();
    void focusCode();
    void leaveField();
    void save();
    void readFile();
    void writeFile();

    Program& program_;
    LetterEditor letters_;
    QString caption_;  ///< the window's own text
    LockWait wait_;
    bool showing_ = true;  ///< lists are being filled: their selection is not the user's

    static constexpr int kLabels = 9;
    std::array<QLabel*, kLabels> labels_{};
    std::array<QLineEdit*, LetterEditor::kFields> fields_{};
    QListWidget* ftgLista_;
    QTreeView *levLista_, *lista_;
    SearchBox *sökLev_, *sökGrupp_;
    SupplierModel* suppliers_;
    LetterModel* groups_;
    QLabel *saTecken_, *totalRabatt_;
    QPushButton *spara_, *avbryt_, *taBort_, *stäng_, *läsFil_, *skapaFil_;
};

/// Opens the discount letters modally.
void visaPrisRab(Program& program, QWidget* parent, int JobbNr);

}  // namespace kolmera
