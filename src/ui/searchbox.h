#pragma once

#include <QLineEdit>
#include <functional>

#include "platform/searchwords.h"
#include "ui/program.h"

class QAbstractItemView;

namespace kolmera {

/// What a list's rows are searched by beside what they show, if the model has it: the role of the first column.
inline constexpr int kSearchRole = Qt::UserRole + 100;

/// A search box of a list of one level: shows the rows that have all the words, in what they show and in `kSearchRole`.
/// When the current row goes, the first one that is left becomes the current one. Arrow down and Enter go to the list,
/// Escape empties the box.
class SearchBox final : public QLineEdit {
  public:
    SearchBox(QAbstractItemView& list, QWidget& form);

    /// For lists whose current row is being worked on: it stays shown and current, until arrow down or Enter go to the
    /// first row that is found.
    void keepCurrent() { keepsCurrent_ = true; }
    /// The key for finding (Ctrl+F) goes to this box, of all in the form.
    void takeFindKey(QWidget& form);
    /// The list has other rows, shows other texts, or `alsoShows` answers otherwise.
    void apply();
    /// Rows that this refuses are hidden, too.
    std::function<bool(int row)> alsoShows;

  protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    [[nodiscard]] bool searches() const { return !words_.empty() || alsoShows; }
    [[nodiscard]] bool finds(int row) const;
    void setHidden(int row, bool hidden);
    void hideRows();
    void moveToFound();

    QAbstractItemView& list_;
    SearchWords words_;
    bool keepsCurrent_ = false;
};

/// A search box for a list that a form works on, with the word for searching in it instead of a label.
SearchBox* searchBoxOf(Program& program, QAbstractItemView& list, QWidget& form, const char* name);

}  // namespace kolmera
