#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/joblist.h"

namespace kolmera {

/// What the main window's job list shows and allows: the rows in the order shown, the selected one, and what may be
/// done with it. Rows and columns are counted from 0; row -1 is none. Knows no window.
class JobTable {
  public:
    enum Column { kName, kKind, kPriceFile, kFileState, kColumns };
    static constexpr int kNoRow = -1;

    explicit JobTable(const Locale& locale) : locale_(locale) {}

    /// Takes new rows in the order of the list and selects one: the job of that number, or with a number below 1 the
    /// job of the saved name (the first row when no name was ever saved). Without such a job none is selected.
    void fill(std::vector<JobRow> rows, int JobbNr, std::string_view savedName);
    /// Sorts by a column; the selected job stays selected. Texts go by the Swedish alphabet, file dates by the day and
    /// before the other file states.
    void sort(Column column, bool descending);

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] const JobRow& row(int row) const { return rows_.at(static_cast<std::size_t>(row)); }
    [[nodiscard]] const std::string& text(int row, Column column) const;
    [[nodiscard]] int rowOf(int JobbNr) const;

    void select(int row) { selected_ = row; }
    [[nodiscard]] int selected() const { return selected_; }
    [[nodiscard]] int JobbNr() const;  ///< the selected row's job number, 0 without one
    [[nodiscard]] std::string jobName() const;
    /// The jobs of the selected one's name, in file order.
    [[nodiscard]] std::vector<Job> namesakes() const;
    [[nodiscard]] std::vector<Job> jobs() const;

    [[nodiscard]] bool canOpen() const { return selected_ != kNoRow; }
    [[nodiscard]] bool canRun() const { return selected_ != kNoRow; }
    /// A job of a trade format cannot be deleted.
    [[nodiscard]] bool canDelete() const;

  private:
    struct Order {
        Column column;
        bool descending;
    };
    void applyOrder();
    [[nodiscard]] int compare(const JobRow& a, const JobRow& b, Column column) const;

    Locale locale_;
    std::vector<JobRow> rows_;
    std::optional<Order> order_;  ///< none: file order
    int selected_ = kNoRow;
};

}  // namespace kolmera
