#include "definitions/masktarget.h"

#include <algorithm>

#include "db/companyschema.h"
#include "definitions/targetcodes.h"
#include "platform/locale.h"

namespace kolmera {
namespace {

std::vector<FieldDef> productColumns() {
    for (TableDef& table : companySchema()) {
        if (table.name == "Produkt") return std::move(table.fields);
    }
    return {};
}

ColumnUse useOf(const Relation& relation, const std::vector<FieldDef>& columns) {
    const auto ordinal = static_cast<std::size_t>(columnOf(relation.Mål));
    if (relation.Division == 'S' || ordinal == 0 || ordinal >= columns.size()) return ColumnUse::Text;
    switch (columns[ordinal].type) {
        case FieldType::Single:
        case FieldType::Double:
            return ColumnUse::Number;
        case FieldType::Date:
            return ColumnUse::Date;
        default:
            return ColumnUse::Text;
    }
}

TargetLayout::Records recordsOf(char FilTyp) {
    switch (FilTyp) {
        case 'F':
            return TargetLayout::Records::Lines;
        case 'T':
            return TargetLayout::Records::Tabs;
        default:
            return TargetLayout::Records::Fixed;
    }
}

}  // namespace

int maskNumber(const std::string& typed) {
    constexpr double kMost = 9999;  // "1E9" must not become a list of that size
    return static_cast<int>(std::clamp(roundHalfEven(leadingNumber(typed)), 0.0, kMost));
}

int tabColumns(const Mask& mask, const std::vector<Relation>& relations) {
    int columns = mask.AntalKolumner;
    if (columns > 0) return columns;
    // It was never opened over a sample of its file.
    for (const Relation& relation : relations) columns = std::max(columns, relation.Källa);
    return columns;
}

TargetLayout targetLayout(const WholeMask& whole) {
    const Mask& mask = whole.mask;
    std::vector<Relation> relations = whole.relations;
    relations.resize(std::min(relations.size(), std::size_t{kMostRelations}));
    TargetLayout layout;
    layout.records = recordsOf(mask.FilTyp);
    layout.page = mask.Tecken == 'J' ? CodePage::Oem850 : CodePage::Windows1252;
    layout.lines = static_cast<std::size_t>(maskNumber(mask.AntalRader));
    layout.recordLength = static_cast<std::size_t>(maskNumber(mask.Postlängd));
    std::size_t columns = relations.size();
    if (layout.records == TargetLayout::Records::Tabs) columns = static_cast<std::size_t>(tabColumns(mask, relations));
    if (layout.records == TargetLayout::Records::Lines) columns = layout.lines;
    layout.columns.resize(columns);
    const std::vector<FieldDef> products = productColumns();
    for (const Relation& relation : relations) {
        const auto place = static_cast<std::size_t>(relation.Källa - 1);
        if (relation.Källa < 1 || place >= columns) continue;
        TargetLayout::Column& column = layout.columns[place];
        column.use = std::max(column.use, useOf(relation, products));
        column.first = static_cast<std::size_t>(std::max(relation.FrånPos - 1, 0));
        column.length = relation.FrånPos < 1 ? 0 : static_cast<std::size_t>(relation.Längd);
        if (relation.Division == 'S') layout.key = place + 1;
    }
    return layout;
}

}  // namespace kolmera
