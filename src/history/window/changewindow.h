#pragma once

#include <QDialog>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "history/changereport.h"
#include "history/changetable.h"
#include "ui/filedialogs.h"
#include "ui/program.h"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPagedPaintDevice;
class QPushButton;
class QTableView;
class QTimer;

namespace kolmera {

class ChangeListModel;
class Histogram;
class LockWait;

/// What a run changed, or would change: figures and notices at a glance, and below them the list of changes, to be
/// filtered, sorted, grouped, saved and printed.
class ChangeWindow final : public QDialog {
  public:
    ChangeWindow(Program& program, ChangeReport& report, QWidget* parent);
    ~ChangeWindow() override;

    /// Of a preview: the user wants the job to be run.
    [[nodiscard]] bool runs() const { return runs_; }

    /// Asks for the file to save to; an empty answer is Cancel.
    std::function<QString(const FileQuestion& question)> fileToWrite;
    /// Shows the text of the price file around records, at first the one at `first`. Without it there is no such
    /// button.
    std::function<void(QWidget* parent, const std::vector<std::int64_t>& records, std::size_t first)> showRecords;
    /// Shows how a price came about: of that product, written into that column ("Produkt.Inpris"). Without it there is
    /// no such button.
    std::function<void(QWidget* parent, const std::string& product, const std::string& column)> explainPrice;

    /// Saves the records that have to be corrected. Without it there is no such button.
    std::function<void(QWidget* parent)> saveRejects;

    /// To be called when the functions above are set.
    void load();

  private:
    void buildFigures();
    void buildNotices();
    void buildFilter();
    void buildList();
    void buildButtons();
    void layOut();
    void connectKeys();
    void setSizes();

    void filter();
    void present();
    [[nodiscard]] ChangeQuery wanted() const;
    [[nodiscard]] int currentRow() const;
    [[nodiscard]] int chosenNotice() const;
    [[nodiscard]] std::span<const std::int64_t> noticeRecords() const;
    [[nodiscard]] std::int64_t currentRecord() const;
    [[nodiscard]] const ChangeRow* currentPrice() const;
    void sortByCurrentColumn();
    void showInFile();
    void explain();
    void showMenu(const QPoint& place);
    void copy();
    void save();
    void print();
    void write(const QString& file);
    void writePdf(const QString& file);
    bool printOn(QPagedPaintDevice& device);
    bool keepOn(LockWait& wait, std::int64_t rows);

    Program& program_;
    ChangeReport& report_;
    ChangeTable table_;
    ChangeListModel* model_;
    bool runs_ = false;

    QLabel* origin_;
    QGridLayout* figures_;
    QLabel* lblHistogram_;
    Histogram* histogram_;
    QLabel* lblNotices_;
    QListWidget* notices_;
    QLineEdit *filter_, *over_;
    QComboBox *column_, *group_;
    QCheckBox *onlyNew_, *onlyMarked_;
    QLabel* count_;
    QTableView* list_;
    QPushButton *show_, *explain_, *copy_, *save_, *rejects_, *print_, *run_, *close_;
    QTimer* typing_;
};

}  // namespace kolmera
