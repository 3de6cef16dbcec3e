#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <array>

#include "definitions/jobtable.h"

namespace kolmera {

/// Shows a JobTable in a view. The table is changed through the model, so that views hear of it.
class JobListModel final : public QAbstractTableModel {
  public:
    explicit JobListModel(JobTable& table, QObject* parent = nullptr) : QAbstractTableModel(parent), table_(table) {}

    void setHeaders(const std::array<QString, JobTable::kColumns>& headers);
    void setIcons(QIcon mask, QIcon tradeFormat);
    void tellLastRuns(std::map<std::string, std::string> lastRuns);
    void fill(std::vector<JobRow> rows, int JobbNr, std::string_view savedName);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

  private:
    JobTable& table_;
    std::array<QString, JobTable::kColumns> headers_;
    QIcon mask_, tradeFormat_;
};

}  // namespace kolmera
