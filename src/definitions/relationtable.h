#pragma once

#include <string>
#include <vector>

#include "definitions/maskeditor.h"

namespace kolmera {

/// The relations of a mask as a table whose cells are changed where they stand, without its window: what they show,
/// what they can become, and what was not done or was done besides. Rows are those of the editor, columns are counted
/// from 0.
class RelationTable {
  public:
    RelationTable(LanguageTexts& texts, MaskEditor& editor) : texts_(texts), editor_(editor) {}

    enum class Column { Källa, FrånPos, Längd, Mål, TypKod, Division, Exempel };
    /// Only pieces have positions.
    [[nodiscard]] const std::vector<Column>& columns() const;
    [[nodiscard]] std::string caption(Column column) const;
    [[nodiscard]] int rows() const { return static_cast<int>(editor_.relations().size()); }
    [[nodiscard]] std::string text(int row, Column column) const;
    /// Of the field that the relation reads.
    [[nodiscard]] std::string number(int row) const { return std::to_string(relation(row).Källa); }

    [[nodiscard]] bool canChange(Column column) const;
    /// What a cell can become; nothing where a number is typed.
    [[nodiscard]] std::vector<std::string> choices(int row, Column column) const;
    /// The place of what it is among them, -1 when it is none of them.
    [[nodiscard]] int chosen(int row, Column column) const;
    /// The greatest number that can be typed, from 1.
    [[nodiscard]] static int greatest(Column column);
    /// False when it cannot be done; `remark` says why.
    bool choose(int row, Column column, int place);
    bool type(int row, Column column, const std::string& typed);

    /// Of the last change: why it was not made, or what else became of it. Empty when there is nothing to say.
    [[nodiscard]] const std::string& remark() const { return remark_; }
    void forgetRemark() { remark_.clear(); }

  private:
    [[nodiscard]] const Relation& relation(int row) const;
    [[nodiscard]] int rowOfSearchKey() const;
    bool join(int row, const Target& target);
    void setDivision(int row, char letter);

    LanguageTexts& texts_;
    MaskEditor& editor_;
    std::string remark_;
};

}  // namespace kolmera
