#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "discounts/rabattbrev.h"
#include "platform/engine/recordset.h"
#include "platform/locale.h"

namespace kolmera {

/// The groups of a letter as the window lists them: code, five discounts, combined discount. The numbers are written
/// when a row is looked at, so that a hundred thousand groups are listed at once.
class LetterRows {
  public:
    static constexpr int kColumns = 2 + kDiscountSteps;
    static constexpr int kTotalColumn = kColumns - 1;

    explicit LetterRows(const Locale& locale) : locale_(locale) {}

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] bool empty() const { return rows_.empty(); }
    [[nodiscard]] std::int64_t id(int row) const { return rows_.at(static_cast<std::size_t>(row)).id; }
    /// Two decimals, the locale's sign; a discount that is Null shows nothing.
    [[nodiscard]] std::string text(int row, int column) const;
    /// The values as they are stored: the code and the discounts.
    [[nodiscard]] std::vector<Value> values(int row) const;
    [[nodiscard]] int rowOf(std::int64_t id) const;  ///< -1 when there is none

    void clear() { rows_.clear(); }
    /// Lists the current record of a letter behind the others. Throws PlatformError.
    void append(Recordset& letter);
    void remove(int row) { rows_.erase(rows_.begin() + row); }

  private:
    struct Row {
        std::int64_t id;
        std::string code;
        std::array<double, kDiscountSteps> discounts;  ///< not a number: Null
    };

    Locale locale_;
    std::vector<Row> rows_;
};

}  // namespace kolmera
