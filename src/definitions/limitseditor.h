#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/joboptions.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// What a window or a command shows of a job's limits, one row each, and what the user types there.
class LimitsEditor {
  public:
    struct Row {
        std::string_view name;
        std::string caption;
        std::string text;  ///< as typed; empty: no limit
    };

    LimitsEditor(LanguageTexts& texts, const Locale& locale, const Limits& limits);

    std::vector<Row> rows;

    /// The place of the first row that is neither empty nor a number from 0 on.
    [[nodiscard]] std::optional<std::size_t> unreadable() const;
    /// What the rows say; unreadable ones say nothing.
    [[nodiscard]] Limits limits() const;

  private:
    [[nodiscard]] std::optional<double> valueOf(const Row& row) const;

    Locale locale_;
};

}  // namespace kolmera
