#pragma once

#include <string>
#include <vector>

#include "db/sqllayer.h"
#include "lang/languagetexts.h"

namespace kolmera {

/// A place that a mask can read into: nothing (code 0), a product column or an alternative-number heading.
struct Target {
    int code = 0;
    std::string text;  ///< "code.", a tab, the name
    FieldType type = FieldType::Text;
    std::string name = {};  ///< the column's own, or the heading, in any language

    [[nodiscard]] bool numeric() const;     ///< Byte, Integer, Long, Single or Double
    [[nodiscard]] bool floating() const;    ///< Single or Double
    [[nodiscard]] bool keyCapable() const;  ///< a run can find products by it
    [[nodiscard]] bool priceLevel() const;  ///< one of the nine sales prices
};

/// The targets of a company in the order of their codes, the entry for "none" first.
struct TargetList {
    std::vector<Target> targets;
    bool headingsLeftOut = false;  ///< the company has headings that no code stands for

    /// Row of the target with that code, -1 when there is none.
    [[nodiscard]] int row(int code) const;
};

/// Reads the targets from the open company database; columns are named in the program's language. Throws PlatformError.
TargetList readTargets(SqlLayer& sql, LanguageTexts& texts);

}  // namespace kolmera
