#pragma once

#include <QDialog>
#include <QElapsedTimer>

#include "startup/accesscompany.h"
#include "ui/filedialogs.h"
#include "ui/program.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;

namespace kolmera {

/// Makes a company of the data folder out of an Access-format file, and shows what could not be carried over.
class AccessWindow final : public QDialog {
  public:
    AccessWindow(Program& program, QWidget* parent);

    /// Asks for the file; an empty answer is Cancel.
    std::function<QString(const FileQuestion& question)> fileToRead;

  private:
    void reject() override;
    void build();
    void layOut();
    void present();
    void chooseFile();
    [[nodiscard]] bool mayImport(AccessImport& import);
    void importFile();
    bool keepsOn(const AccessProgress& progress);
    void tell(const AccessResult& result);
    void copyAll();

    Program& program_;
    bool running_ = false, cancelled_ = false;
    QElapsedTimer sinceEvents_;
    QLineEdit *file_, *company_, *name_;
    QLabel *told_, *listLabel_;
    QProgressBar* progress_;
    QListWidget* list_;
    QPushButton *browse_, *import_, *copy_, *close_;
};

/// Shows it modally.
void importAccessCompany(Program& program, QWidget* parent);

}  // namespace kolmera
