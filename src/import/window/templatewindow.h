#pragma once

#include <QDialog>
#include <vector>

#include "import/templates/templateimport.h"
#include "startup/companylist.h"
#include "ui/program.h"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace kolmera {

/// A template before it is stored here: under which name and for which company, what it would write over, and which of
/// the company's suppliers those of the template are.
class TemplateWindow final : public QDialog {
  public:
    TemplateWindow(Program& program, TemplateImport& wanted, QWidget* parent);

  private:
    void build();
    void layOut();
    void buildSuppliers(QGridLayout& grid);
    void takeCompany();
    void present();

    struct SupplierField {
        QLabel* caption;
        QLineEdit* number;
        QLabel* name;
    };
    Program& program_;
    TemplateImport& wanted_;
    std::vector<Company> companies_;
    bool hasName_ = true, hasCompany_ = false;

    QLabel *lblNamn_, *lblFöretag_, *skrivs_;
    QLineEdit* namn_;
    QComboBox* företag_;
    QCheckBox* skrivÖver_;
    QPushButton *ok_, *avbryt_;
    std::vector<SupplierField> suppliers_;
};

}  // namespace kolmera
