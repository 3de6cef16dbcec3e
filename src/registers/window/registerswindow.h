#pragma once

#include <QDialog>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/firststeps.h"
#include "registers/registereditor.h"
#include "startup/companylist.h"
#include "ui/filedialogs.h"
#include "ui/program.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTreeWidget;

namespace kolmera {

class ColumnFit;

/// The couplings among the names of registers.
inline constexpr std::string_view kCouplings = "couplings";

/// The registers of a company, and the rows of one; behind them the supplier couplings of its jobs, which the job
/// window changes.
class RegistersWindow final : public QDialog {
  public:
    /// `name`: a register, or `kCouplings`; empty: the first one.
    RegistersWindow(Program& program, QWidget* parent, std::string_view name = {});
    ~RegistersWindow() override;
    RegistersWindow(const RegistersWindow&) = delete;
    RegistersWindow& operator=(const RegistersWindow&) = delete;

    // Ask for a file; an empty answer is Cancel.
    std::function<QString(const FileQuestion&question)> fileToRead, fileToWrite;

  private:
    void buildControls();
    void layOut();
    void setSizes();
    void openCompany();
    void openRegister();
    void readRows();
    void showRows();
    void showCouplings();
    void openJob();
    [[nodiscard]] bool ofCouplings() const;
    void present();
    void edit(bool isNew);
    void remove();
    void importFile();
    void exportFile();
    /// Lets `work` work; an error is told, and false.
    bool attemptTo(const std::function<void()>& work);
    [[nodiscard]] int currentRow() const;

    Program& program_;
    std::vector<Company> companies_;
    std::unique_ptr<RegisterEditor> editor_;
    std::vector<CoupledJob> coupled_;
    QTimer searches_;

    QLabel *companyLabel_, *remark_;
    QComboBox* companyBox_;
    QListWidget* registers_;
    QLineEdit* search_;
    QTreeWidget* list_;
    ColumnFit* fit_;
    QPushButton *new_, *edit_, *remove_, *import_, *export_, *close_;
};

/// Shows them modally, beginning with the one of that name.
void showRegisters(Program& program, QWidget* parent, std::string_view name = {});

}  // namespace kolmera
