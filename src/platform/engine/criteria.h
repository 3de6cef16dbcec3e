#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/schema.h"
#include "platform/engine/value.h"
#include "platform/locale.h"

namespace kolmera {

/// A criteria text taken apart: "Nummer = 'A'", "[ID] = 7", "Nummer < 100 AND Rubrik IS NOT NULL".
class Criteria {
  public:
    enum class Comparison { Equal, Unequal, Less, LessOrEqual, Greater, GreaterOrEqual, IsNull, IsNotNull };
    struct Term {
        int field;  ///< place in the list of fields
        Comparison comparison;
        Value value;  ///< fitted to the field
    };

    /// Throws kUnknownField, kWrongType, and kInternal for a text that is no criteria.
    static Criteria parse(std::string_view text, const std::vector<FieldDef>& fields, const Locale& locale);

    [[nodiscard]] const std::vector<Term>& terms() const { return terms_; }
    /// Whether a record, its values in the order of the fields, meets all terms. A comparison with Null is not met.
    [[nodiscard]] bool metBy(const std::vector<Value>& record) const;

  private:
    std::vector<Term> terms_;
};

/// The operator of a comparison in a statement: " = ?", " IS NULL" ...
std::string_view operatorText(Criteria::Comparison comparison);

}  // namespace kolmera
