#pragma once

#include <QDialog>
#include <optional>

#include "import/run/runport.h"
#include "ui/program.h"

class QCheckBox;
class QVBoxLayout;

namespace kolmera {

/// The question whether all tables are to be emptied first.
struct EmptyingQuestion {
    FormKey question, title;
};

/// What the two forms that confirm a run have in common: the run text, the box that empties the tables first, and the
/// buttons `Utför` and `Avbryt`.
class ConfirmationForm : public QDialog {
  public:
    [[nodiscard]] ConfirmationAnswer answer() const { return answer_; }
    /// The user wants a preview instead; whether of a run that empties the tables first.
    [[nodiscard]] std::optional<bool> previewWish() const { return previewWish_; }
    /// Proposes to empty the tables first, where they can be.
    void propose(bool emptyTables);

  protected:
    ConfirmationForm(Program& program, const char* name, const EmptyingQuestion& emptying,
                     const Confirmation& confirmation, QWidget* parent);

    /// Where a form puts what it shows besides, below the run text.
    [[nodiscard]] QVBoxLayout& contents() { return *contents_; }
    /// Called last by each form, when its controls are made.
    void load(const Confirmation& confirmation);

  private:
    void carryOut();

    Program& program_;
    EmptyingQuestion emptying_;
    ConfirmationAnswer answer_;
    std::optional<bool> previewWish_;
    QVBoxLayout* contents_;
    QCheckBox* tabort_;
};

}  // namespace kolmera
