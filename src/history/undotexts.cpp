#include "history/undotexts.h"

#include <fmt/format.h>

#include "db/conversions.h"
#include "history/captions.h"
#include "history/changetable.h"
#include "lang/keys/history.h"

namespace kolmera {

std::string reasonText(LanguageTexts& texts, const KeptRow& row) {
    constexpr ModuleKey kReasons[] = {text::history::kChangedSince, text::history::kRemovedSince, text::history::kNamed,
                                      text::history::kNumberTaken, text::history::kRefused};
    return texts.ModulTextMed(kReasons[static_cast<std::size_t>(row.why)], row.by);
}

std::array<std::pair<ModuleKey, std::int64_t>, 5> captioned(const UndoCounts& counts) {
    return {{{text::history::kChangedBack, counts.changedBack},
             {text::history::kNewRemoved, counts.removed},
             {text::history::kBroughtBack, counts.broughtBack},
             {text::history::kAsBefore, counts.asBefore},
             {text::history::kKept, counts.kept}}};
}

std::string undoCountsText(LanguageTexts& texts, const UndoCounts& counts, const Locale& locale) {
    std::string text;
    for (const auto& [caption, count] : captioned(counts)) {
        if (count > 0) text += fmt::format("{}: {}\r\n", texts.ModulText(caption), grouped(count, locale));
    }
    return text;
}

std::string keptCellText(LanguageTexts& texts, const KeptCell& cell, const TableDef& table, const Locale& locale) {
    const auto place = static_cast<std::size_t>(cell.column);
    const FieldType type = place < table.fields.size() ? table.fields[place].type : FieldType::Text;
    const auto shown = [&](const Value& value) { return TillText(value, type, locale); };
    return fmt::format("{}: \"{}\" > \"{}\" > \"{}\"", columnCaption(texts, table, cell.column), shown(cell.before),
                       shown(cell.left), shown(cell.now));
}

std::string keptRowText(LanguageTexts& texts, const KeptRow& row, const TableDef& table, const Locale& locale) {
    std::string text = fmt::format("{} {} (ID {}): {}\n", row.table, row.label, row.id, reasonText(texts, row));
    for (const KeptCell& cell : row.cells) {
        text += fmt::format("    {}\n", keptCellText(texts, cell, table, locale));
    }
    return text;
}

}  // namespace kolmera
