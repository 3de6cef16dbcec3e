#pragma once

#include <QObject>

class QTreeView;

namespace kolmera {

/// Makes the columns of a list as wide as what they show, until they have been given other widths: by the user, or by
/// the window's memory of him.
class ColumnFit final : public QObject {
  public:
    explicit ColumnFit(QTreeView& list);

    /// No column becomes wider than `most`, in pixels.
    void fit(int most);
    /// The list has got other columns.
    void forget() { given_ = false; }

  private:
    QTreeView& list_;
    bool fits_ = false, given_ = false;
};

}  // namespace kolmera
