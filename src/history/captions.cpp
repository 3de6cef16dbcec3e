#include "history/captions.h"

#include <fmt/format.h>

#include "lang/keys/changes.h"

namespace kolmera {
namespace {

constexpr struct {
    std::string_view table;
    ModuleKey text;
} kTables[] = {{"Levprislista", text::changes::kPriceList},
               {"Prodaltprodnr", text::changes::kAlternative},
               {"Proddokument", text::changes::kDocument},
               {"Prodgrupp", text::changes::kGroup}};

std::string ownCaption(LanguageTexts& texts, const TableDef& table, int column) {
    const auto place = static_cast<std::size_t>(column);
    const std::string name = place < table.fields.size() ? table.fields[place].name : fmt::format("{}", column);
    if (texts.language() == "SE") return name;
    const std::string translated = texts.RegisterText(table.name, column);
    return translated.empty() ? name : translated;
}

}  // namespace

std::string columnCaption(LanguageTexts& texts, const TableDef& table, int column) {
    std::string caption = ownCaption(texts, table, column);
    if (table.name == "Produkt") return caption;
    for (const auto& known : kTables) {
        if (known.table == table.name) return fmt::format("{}: {}", texts.ModulText(known.text), caption);
    }
    return fmt::format("{}: {}", table.name, caption);
}

}  // namespace kolmera
