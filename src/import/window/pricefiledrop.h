#pragma once

#include <QModelIndex>
#include <functional>
#include <string>

class QAbstractItemView;

namespace kolmera {

/// Lets a list of jobs take files that are dragged onto a row: `accepts` says whether the row is a job that can take
/// one, `take` gets the row and the file.
struct FileDrop {
    std::function<bool(const QModelIndex& row)> accepts;
    std::function<void(const QModelIndex& row, const std::string& file)> take;
};
void takeDroppedFiles(QAbstractItemView& list, FileDrop drop);

}  // namespace kolmera
