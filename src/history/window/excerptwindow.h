#pragma once

#include <QDialog>

#include "history/fileexcerpt.h"
#include "ui/program.h"

namespace kolmera {

/// The text of the price file around a record, which is marked.
class ExcerptWindow final : public QDialog {
  public:
    ExcerptWindow(Program& program, const RecordedFile& file, std::int64_t record, const FileExcerpt& excerpt,
                  QWidget* parent);
};

}  // namespace kolmera
