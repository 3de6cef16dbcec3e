#pragma once

#include <QDialog>
#include <string>

#include "history/recordreader.h"
#include "ui/program.h"

class QPlainTextEdit;

namespace kolmera {

/// How the prices of a product came about, as text to be read and copied.
class CalculationWindow final : public QDialog {
  public:
    struct Shown {
        std::string product;
        std::string text;    ///< of PriceCalculation
        std::string column;  ///< the one to begin with
        std::string remark;  ///< what has to be known of it
    };
    CalculationWindow(Program& program, const Shown& shown, QWidget* parent);

  private:
    void findColumn(const std::string& column);

    QPlainTextEdit* text_;
};

/// Previews the job of a run, or of a preview, once more, and shows how the prices of the product come about, beginning
/// with a column ("Produkt.Inpris"). What stands in the way is told.
void explainPrice(Program& program, QWidget* parent, const RunHeader& run, const std::string& product,
                  const std::string& column);

}  // namespace kolmera
