#include "discounts/letterrows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "db/conversions.h"
#include "discounts/lettertable.h"

namespace kolmera {

namespace {
constexpr int kDecimals = 2;
}

void LetterRows::append(Recordset& letter) {
    Row row{};
    row.id = lettertable::idOf(letter);
    row.code = TillText(letter.value(lettertable::kCode), locale_);
    for (int step = 0; step < kDiscountSteps; ++step) {
        const Value& discount = letter.value(lettertable::kFirstDiscount + step);
        row.discounts.at(static_cast<std::size_t>(step)) =
            isNull(discount) ? std::numeric_limits<double>::quiet_NaN() : TillDbl(discount, locale_);
    }
    rows_.push_back(std::move(row));
}

std::string LetterRows::text(int row, int column) const {
    const Row& group = rows_.at(static_cast<std::size_t>(row));
    if (column == 0) return group.code;
    if (column < kTotalColumn) {
        const double discount = group.discounts.at(static_cast<std::size_t>(column) - 1);
        return std::isnan(discount) ? std::string() : locale_.formatFixed(discount, kDecimals);
    }
    std::array<float, kDiscountSteps> discounts{};
    std::ranges::transform(group.discounts, discounts.begin(),
                           [](double discount) { return std::isnan(discount) ? 0.0F : static_cast<float>(discount); });
    return locale_.formatFixed(TotalRabatt(discounts), kDecimals);
}

std::vector<Value> LetterRows::values(int row) const {
    const Row& group = rows_.at(static_cast<std::size_t>(row));
    std::vector<Value> values(1 + kDiscountSteps);
    values.front() = group.code;
    for (std::size_t step = 0; step < group.discounts.size(); ++step) {
        if (!std::isnan(group.discounts.at(step))) values.at(1 + step) = group.discounts.at(step);
    }
    return values;
}

int LetterRows::rowOf(std::int64_t id) const {
    const auto found = std::ranges::find(rows_, id, &Row::id);
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

}  // namespace kolmera
