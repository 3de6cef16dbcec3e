#include "definitions/limitseditor.h"

#include "platform/lettercase.h"

namespace kolmera {

LimitsEditor::LimitsEditor(LanguageTexts& texts, const Locale& locale, const Limits& limits) : locale_(locale) {
    for (const LimitKind& kind : kLimits) {
        const std::optional<double>& value = limits.*kind.value;
        rows.push_back({kind.name, texts.ModulText(kind.text), value ? locale.formatNumber(*value) : std::string()});
    }
}

std::optional<double> LimitsEditor::valueOf(const Row& row) const {
    const std::optional<double> value = locale_.parseNumber(trimmed(row.text));
    return value && *value >= 0 ? value : std::nullopt;
}

std::optional<std::size_t> LimitsEditor::unreadable() const {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!trimmed(rows[i].text).empty() && !valueOf(rows[i])) return i;
    }
    return std::nullopt;
}

Limits LimitsEditor::limits() const {
    Limits limits;
    for (std::size_t i = 0; i < rows.size(); ++i) limits.*kLimits[i].value = valueOf(rows[i]);
    return limits;
}

}  // namespace kolmera
