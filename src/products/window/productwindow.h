#pragma once

#include <QDialog>
#include <QTimer>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "products/productcard.h"
#include "products/productfinder.h"
#include "products/producthistory.h"
#include "startup/companylist.h"
#include "ui/program.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSplitter;
class QTabWidget;
class QTreeWidget;

namespace kolmera {

class ColumnFit;

/// Products of a company: found as one types, and what the company and its past runs know of one.
class ProductWindow final : public QDialog {
  public:
    ProductWindow(Program& program, QWidget* parent);
    ~ProductWindow() override;
    ProductWindow(const ProductWindow&) = delete;
    ProductWindow& operator=(const ProductWindow&) = delete;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void buildControls();
    void layOut();
    void setSizes();
    void chooseCompany();
    void openCompany();
    void search();
    void showProduct();
    void showTables();
    QTreeWidget* addTab(const CardTable& table);
    void readHistory();
    void stopReading();
    void takeChanges(const RunHeader& run, const std::vector<ProductChange>& changes);
    void historyEnds(const std::string& remark);
    void why();
    void present();
    [[nodiscard]] const RunHeader* runToExplain() const;
    [[nodiscard]] std::string columnToExplain() const;

    Program& program_;
    std::vector<Company> companies_;
    std::string company_;  ///< its database, while it is open
    std::unique_ptr<ProductFinder> finder_;
    std::optional<ProductCard> card_;
    std::vector<std::unique_ptr<RunHeader>> runs_;  ///< those that have changed the product
    std::atomic<bool> stop_ = false;
    std::thread reader_;
    QTimer searches_, reads_;

    QLabel *companyLabel_, *remark_, *heading_, *historyRemark_ = nullptr;
    QComboBox* companyBox_;
    QLineEdit* search_;
    QTreeWidget *list_, *history_ = nullptr;
    ColumnFit* fit_;
    QSplitter* halves_;
    QTabWidget* tabs_;
    QPushButton *why_, *close_;
};

/// Shows them modally.
void showProducts(Program& program, QWidget* parent);

}  // namespace kolmera
