#pragma once

#include <map>
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
    enum Column { kName, kKind, kPriceFile, kFileState, kLastRun, kColumns };
    static constexpr int kNoRow = -1;

    explicit JobTable(const Locale& locale) : locale_(locale) {}

    /// Takes new rows in the order of the list and selects one: the job of that number, or with a number below 1 the
    /// job of the saved name (the first row when no name was ever saved). Without such a job none is selected.
    void fill(std::vector<JobRow> rows, int JobbNr, std::string_view savedName);
    /// Sorts by a column; the selected job stays selected. Texts go by the Swedish alphabet, file dates by the day and
    /// before the other file states.
    void sort(Column column, bool descending);

    /// What is told of the last run of the jobs, by their names; in force until it is told anew. The order of the list
    /// stays as it is until it is sorted again.
    void tellLastRuns(std::map<std::string, std::string> lastRuns) { lastRuns_ = std::move(lastRuns); }
    /// Whether these rows are those that the list has, in any order.
    [[nodiscard]] bool has(std::vector<JobRow> rows) const;

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] const JobRow& row(int row) const { return rows_.at(static_cast<std::size_t>(row)); }
    [[nodiscard]] const std::string& text(int row, Column column) const;
    /// The names of suppliers by their numbers, of a company; both in upper case, as `companies` has it.
    void tellSuppliers(const std::string& company, std::map<std::string, std::string> names) {
        suppliers_[company] = std::move(names);
    }
    /// What a row is found by beside what it shows: number, mask, company, supplier and its name, and command.
    [[nodiscard]] std::string hiddenText(int row) const;
    [[nodiscard]] int rowOf(int JobbNr) const;
    /// The number that the selected job has among other rows: its own, if the job of that number still has its name,
    /// else that of the first of its name; 0 when there is none.
    [[nodiscard]] int selectedAmong(const std::vector<JobRow>& rows) const;

    void select(int row) { selected_ = row; }
    [[nodiscard]] int selected() const { return selected_; }
    [[nodiscard]] int JobbNr() const;  ///< the selected row's job number, 0 without one
    [[nodiscard]] std::string jobName() const;
    /// The jobs of the selected one's name, in file order.
    [[nodiscard]] std::vector<Job> namesakes() const;
    [[nodiscard]] std::vector<Job> jobs() const;

    [[nodiscard]] bool canOpen() const { return selected_ != kNoRow; }
    [[nodiscard]] bool canRun() const { return selected_ != kNoRow; }
    /// The databases of the jobs' companies, in upper case, by the alphabet.
    [[nodiscard]] std::vector<std::string> companies() const;
    /// A job of a trade format cannot be deleted, nor can there be two of it.
    [[nodiscard]] bool canDelete() const;
    [[nodiscard]] bool canCopy() const { return canDelete(); }

  private:
    struct Order {
        Column column;
        bool descending;
    };
    void applyOrder();
    [[nodiscard]] int compare(const JobRow& a, const JobRow& b, Column column) const;

    Locale locale_;
    [[nodiscard]] const std::string& textOf(const JobRow& row, Column column) const;

    std::vector<JobRow> rows_;
    std::map<std::string, std::string> lastRuns_;
    std::map<std::string, std::map<std::string, std::string>> suppliers_;
    std::optional<Order> order_;  ///< none: file order
    int selected_ = kNoRow;
};

}  // namespace kolmera
