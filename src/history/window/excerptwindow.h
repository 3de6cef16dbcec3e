#pragma once

#include <QDialog>
#include <cstdint>
#include <functional>
#include <vector>

#include "history/fileexcerpt.h"
#include "ui/program.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace kolmera {

/// The text of the price file around a record, which is marked, and the way to the next and the one before of several.
class ExcerptWindow final : public QDialog {
  public:
    /// Where a record stands; nothing when it is not known.
    using PlaceOf = std::function<std::optional<RecordPlace>(std::int64_t record)>;

    /// Shows the record at `first` among `records` at first.
    ExcerptWindow(Program& program, RecordedPriceFile& file, PlaceOf placeOf, std::vector<std::int64_t> records,
                  std::size_t first, QWidget* parent);

  private:
    void layOut();
    void show(std::size_t at);
    void showMarked(const FileExcerpt& excerpt);

    Program& program_;
    RecordedPriceFile& file_;
    PlaceOf placeOf_;
    std::vector<std::int64_t> records_;
    std::size_t at_ = 0;
    QLabel *path_, *remark_, *count_;
    QPlainTextEdit* text_;
    QPushButton *before_, *next_, *close_;
};

}  // namespace kolmera
