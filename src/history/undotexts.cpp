#include "history/undotexts.h"

#include <fmt/format.h>

#include <utility>

#include "db/conversions.h"
#include "history/captions.h"
#include "history/changetable.h"
#include "lang/keys/history.h"

namespace kolmera {
namespace {

std::string reason(LanguageTexts& texts, const KeptRow& row) {
    constexpr ModuleKey kReasons[] = {text::history::kChangedSince, text::history::kRemovedSince, text::history::kNamed,
                                      text::history::kNumberTaken, text::history::kRefused};
    return texts.ModulTextMed(kReasons[static_cast<std::size_t>(row.why)], row.by);
}

}  // namespace

std::string undoCountsText(LanguageTexts& texts, const UndoCounts& counts, const Locale& locale) {
    const std::pair<ModuleKey, std::int64_t> lines[] = {{text::history::kChangedBack, counts.changedBack},
                                                        {text::history::kNewRemoved, counts.removed},
                                                        {text::history::kBroughtBack, counts.broughtBack},
                                                        {text::history::kAsBefore, counts.asBefore},
                                                        {text::history::kKept, counts.kept}};
    std::string text;
    for (const auto& [caption, count] : lines) {
        if (count > 0) text += fmt::format("{}: {}\r\n", texts.ModulText(caption), grouped(count, locale));
    }
    return text;
}

std::string keptRowText(LanguageTexts& texts, const KeptRow& row, const TableDef& table, const Locale& locale) {
    std::string text = fmt::format("{} {} (ID {}): {}\n", row.table, row.label, row.id, reason(texts, row));
    for (const KeptCell& cell : row.cells) {
        const auto place = static_cast<std::size_t>(cell.column);
        const FieldType type = place < table.fields.size() ? table.fields[place].type : FieldType::Text;
        text += fmt::format("    {}: \"{}\" > \"{}\" > \"{}\"\n", columnCaption(texts, table, cell.column),
                            TillText(cell.before, type, locale), TillText(cell.left, type, locale),
                            TillText(cell.now, type, locale));
    }
    return text;
}

}  // namespace kolmera
