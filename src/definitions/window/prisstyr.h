#pragma once

#include <QDialog>
#include <functional>
#include <optional>

#include "definitions/jobeditor.h"
#include "ui/program.h"

class QAction;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTreeView;

namespace kolmera {

class CouplingPanel;
class SupplierModel;

/// The job settings' window, in two modes: for a mask job, and for one of the trade formats with its couplings.
class PrisStyr final : public QDialog {
  public:
    PrisStyr(Program& program, int JobbNr, bool ÄrStandardJobb, QWidget* parent);
    ~PrisStyr() override;

    /// The number of the saved job; nothing when the window was cancelled.
    [[nodiscard]] std::optional<int> savedJob() const { return saved_; }

    /// Asks for a file to open; an empty answer is Cancel.
    std::function<QString(const QString& title, const QString& filter)> chooseFile;

    void reject() override;

  private:
    void buildFiles();
    void buildMasks();
    void buildCompany();
    void buildFinfo();
    void buildButtons();
    void layOut();
    void layOutFiles(QGridLayout& grid);
    void setSizes();
    void connectFiles();
    void connectMasks();
    void connectCompany();
    void connectFinfo();
    void connectKeys();
    void showJob();
    QString askForFile(const QString& title, FormKey filterText);

    void present();
    void presentMasks();
    void presentCompany();
    void presentHeadings();
    void presentButtons();
    void editMask(bool isNew);
    void takeFile(const QString& path);
    void editSource(bool onlyWhenNeeded);
    void save();

    Program& program_;
    JobEditor job_;
    std::optional<int> saved_;
    QString supplierLabel_;  ///< the caption in front of the company's name

    QLabel *lblNamn_, *lblFilNamn_, *lblKompFilNamn_;
    QLineEdit *namn_, *filNamn_, *kompFilNamn_;
    QPushButton *väljFil_, *kompFil_;
    QLabel *lblMaskLista_, *lblFtgLista_, *lblLevLista_;
    QListWidget *maskLista_, *ftgLista_;
    QPushButton *nyMask_, *öppnaMask_, *taBortMask_;
    QAction* kopieraMask_;
    QTreeView* levLista_;
    SupplierModel* suppliers_;
    QWidget *varugrupper_, *altPanel_;
    QLineEdit *fromGrp_, *tomGrp_;
    QComboBox *altprodnr1_, *altprodnr2_;
    CouplingPanel* levPanel_;
    QPushButton *filformat_, *gränser_, *spara_, *avbryt_;
};

/// Opens the job settings modally; answers the number of the saved job, or nothing.
std::optional<int> visaPrisStyr(Program& program, QWidget* parent, int JobbNr, bool ÄrStandardJobb);

}  // namespace kolmera
