#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "history/netchanges.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// A column that some row of the list is about.
struct ChangedColumn {
    int table = 0;  ///< place in NetChanges::tables()
    int column = 0;
    std::string caption;
    bool operator==(const ChangedColumn&) const = default;
};

/// Which changes a list shows, and in which order.
struct ChangeQuery {
    enum class Group { None, Product, Column };
    enum class Sort { File, Product, Name, Column, Before, After, Percent, Kind };

    /// As typed: all its words have to stand in the row, each in the product's number or name, in the column's name or
    /// in a value, whatever their case. A number finds the value that it is.
    std::string text{};
    std::optional<double>
        over{};                 ///< only changes of more per cent, up or down; what was 0 and is not has changed more
    bool onlyNew = false;       ///< only rows that were added
    bool onlyMarked = false;    ///< only what comes from a record that was marked
    std::optional<int> mark{};  ///< only what comes from a record with this mark
    std::optional<std::pair<int, int>> column{};  ///< only this table and column
    Group group = Group::None;
    Sort sort = Sort::File;
    bool descending = false;
    bool operator==(const ChangeQuery&) const = default;
};

/// A row of the list: a cell that was changed, or the heading of a group.
struct ChangeRow {
    std::int64_t members = 0;  ///< of a heading: so many rows follow; 0: a cell
    ChangeKind kind{};
    int table = 0, column = 0;
    std::string product, name, caption;
    Value before, after;
    std::string beforeText, afterText;  ///< as the user writes values
    std::optional<double> percent;      ///< nothing for what is no number, and where 0 stood before
    bool fromZero = false;
    std::int64_t record = 0;  ///< of the price file, from 1; 0 outside it
    std::int64_t id = 0;
};

/// The net changes of a record as a list that is filtered, sorted and grouped. It keeps the order of what it shows, 8
/// bytes a row; the rows themselves are read when they are asked for. Call `show` first. Knows no window.
class ChangeList {
  public:
    ChangeList(NetChanges& changes, LanguageTexts& texts, const Locale& locale);
    ChangeList(const ChangeList&) = delete;
    ChangeList& operator=(const ChangeList&) = delete;
    ~ChangeList();

    /// Marks records of the price file; a record can have several marks.
    void mark(int mark, std::span<const std::int64_t> records);
    void unmark();  ///< takes all marks away

    void show(const ChangeQuery& query);
    [[nodiscard]] std::int64_t count() const { return static_cast<std::int64_t>(order_.size()); }
    [[nodiscard]] std::int64_t cells() const { return count() - static_cast<std::int64_t>(headings_.size()); }
    /// The rows from `first` (counted from 0) on, at most `most` of them.
    [[nodiscard]] std::vector<ChangeRow> rows(std::int64_t first, std::int64_t most);

    /// The columns that were changed, by their captions.
    [[nodiscard]] const std::vector<ChangedColumn>& columns() const { return columns_; }

  private:
    struct Filter;
    [[nodiscard]] std::string statementOf(const ChangeQuery& query) const;
    [[nodiscard]] ChangeRow rowAt(std::size_t place);
    [[nodiscard]] ChangeRow cell(std::int64_t number);
    [[nodiscard]] std::vector<ChangeRow> stretch(std::int64_t first, std::int64_t last);
    [[nodiscard]] ChangeRow cellOf(const SqliteStatement& statement) const;
    [[nodiscard]] std::string text(const Value& value, int table, int column) const;
    [[nodiscard]] const std::string& captionOf(int table, int column) const;

    NetChanges& changes_;
    Locale locale_;
    std::vector<ChangedColumn> columns_;
    std::unique_ptr<Filter> filter_;
    ChangeQuery query_;
    std::vector<std::int64_t> order_;    ///< numbers of cells; a heading is kHeading
    std::vector<std::size_t> headings_;  ///< their places
    SqliteStatement cell_, stretch_;
};

}  // namespace kolmera
