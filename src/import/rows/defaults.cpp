#include "import/rows/defaults.h"

#include <fmt/format.h>

#include <array>
#include <string_view>

#include "db/conversions.h"
#include "db/productcolumns.h"

namespace kolmera {
namespace {

constexpr int kHighestLevel = 9;

/// When a product column gets its default.
enum class When { Empty, Zero, False, LevelBelowHighest, EmptyAndValuedByPercent };

/// Where the default stands: a column of one of the two settings tables, or in the table of defaults itself.
enum class From { Syinställningar, Syinställningar2, Text, Level };

/// The product column of a default: by its place, or, without one, by its name.
struct ProductColumn {
    int ordinal;
    std::string_view name;
};
consteval ProductColumn column(std::string_view name) { return {ordinal(kProdukt, name), name}; }
consteval ProductColumn byName(std::string_view name) { return {-1, name}; }

struct Default {
    ProductColumn column;
    When when;
    From from;
    std::string_view setting;  ///< settings column or text
};

using enum When;
using enum From;

/// Applied from top to bottom. Two rows rest on rows above them: the level is 9 before it is compared with 9, and the
/// stock valuation is final before its percentage is looked at.
constexpr Default kProductDefaults[] = {
    {column("Grupp"), Empty, Syinställningar, "PGrupp"},
    {column("Inköpsfaktor"), Zero, Syinställningar, "PInköpsfaktor"},
    {column("Försäljfaktor"), Zero, Syinställningar, "PFörsäljfaktor"},
    {column("Statistikfaktor"), Zero, Syinställningar, "PStatistikfaktor"},
    {column("InköpsEnhet"), Empty, Syinställningar, "PInköpsenhet"},
    {column("Försäljenhet"), Empty, Syinställningar, "PFörsäljenhet"},
    {column("Statistikenhet"), Empty, Syinställningar, "PStatistikenhet"},
    {column("Produkttyp"), Empty, Text, "1"},
    {column("1Pålägg"), Zero, Syinställningar, "PFaktor1"},
    {column("2Pålägg"), Zero, Syinställningar, "PFaktor2"},
    {column("3Pålägg"), Zero, Syinställningar, "PFaktor3"},
    {column("4Pålägg"), Zero, Syinställningar, "PFaktor4"},
    {column("5Pålägg"), Zero, Syinställningar, "PFaktor5"},
    {column("6Pålägg"), Zero, Syinställningar, "PFaktor6"},
    {column("7Pålägg"), Zero, Syinställningar, "PFaktor7"},
    {column("8Pålägg"), Zero, Syinställningar, "PFaktor8"},
    {column("9Pålägg"), Zero, Syinställningar, "PFaktor9"},
    {column("Momskod"), Empty, Syinställningar, "PMomsKod"},
    {column("Lagervärde"), Empty, Syinställningar, "PLagervärde"},
    {column("Valutakod"), Empty, Syinställningar, "PValutakod"},
    {column("Prislista"), False, Syinställningar, "PPrislista"},
    {column("LagerArtikel"), False, Syinställningar, "PLagerArtikel"},
    {column("Batchnummer"), False, Syinställningar, "PBatchnummer"},
    {column("Värderingsnivå"), Zero, Level, {}},
    {column("Lagervärde"), LevelBelowHighest, Text, "I"},
    {column("Lagervärdeproc"), EmptyAndValuedByPercent, Syinställningar, "PLagervärdeproc"},
    {byName("KostnadProdukt"), False, Syinställningar, "PKostnadProdukt"},
    {byName("Avgift"), Empty, Syinställningar, "PAvgift"},
    {byName("AvgiftKrProc"), Empty, Syinställningar, "PAvgiftKrProc"},
    {byName("Lagerbokföring"), False, Syinställningar, "PLagerbokföring"},
    {byName("Prisgrupp"), Empty, Syinställningar2, "PPrisGrupp"},
    {byName("Spärrarabatt"), False, Syinställningar2, "PSpärraRabatt"},
    {byName("Inaktiv"), False, Syinställningar2, "PInaktiv"},
    {byName("Webshop"), False, Syinställningar2, "PWebshop"},
};

struct GroupAccount {
    ColumnPlace column;
    std::string_view setting;
};
consteval ColumnPlace account(std::string_view name) { return {name, ordinal(kProdgrupp, name)}; }

constexpr GroupAccount kGroupAccounts[] = {{account("Momskonto1"), "PMomskod1"},
                                           {account("Momskonto2"), "PMomskod2"},
                                           {account("Momskonto3"), "PMomskod3"},
                                           {account("Momsfrittkonto"), "PMomsfritt"},
                                           {account("EUkonto"), "PUtförselEU"},
                                           {account("Exportkonto"), "PExport"},
                                           {account("Lagerkonto"), "PLagerkonto"},
                                           {account("Varukostnadskonto"), "PVarukostnad"},
                                           {account("Internuttagskonto"), "PInternUttag"},
                                           {account("Rabattkonto"), "PRabattKonto"}};

/// The setting is at fault when a default cannot be written.
std::string statement(const Default& row) {
    if (row.from == Syinställningar) return fmt::format("Syinställningar.{}", row.setting);
    if (row.from == Syinställningar2) return fmt::format("Syinställningar2.{}", row.setting);
    return fmt::format("Produkt.{}", row.column.name);
}

/// A value that formats as an empty text.
bool isEmpty(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return isNull(value) || (text && text->empty());
}

bool applies(When when, int column, Recordset& product, const Locale& locale) {
    switch (when) {
        case Empty:
            return isEmpty(product.value(column));
        case Zero:
            return TillDbl(product.value(column), locale) == 0;
        case False:
            return !TillBool(product.value(column), locale);
        case LevelBelowHighest:
            return TillDbl(product.value(ordinal(kProdukt, "Värderingsnivå")), locale) < kHighestLevel;
        case EmptyAndValuedByPercent:
            return isEmpty(product.value(column)) && textOf(product.value(ordinal(kProdukt, "Lagervärde"))) == "T";
    }
    return false;
}

}  // namespace

void NewProductDefaults::SättNyProduktStandard(Recordset& product) {
    if (!resolved_) resolve(product);
    for (const Line& line : lines_) {
        attempt(passedOver_, line.statement, [&] { apply(line, product); });
    }
}

/// Finds the columns of all lines. A line whose columns do not exist is noted here and left out.
void NewProductDefaults::resolve(const Recordset& product) {
    resolved_ = true;
    for (std::size_t row = 0; row < std::size(kProductDefaults); ++row) {
        const Default& each = kProductDefaults[row];
        attempt(passedOver_, statement(each), [&] {
            Line line{row, each.column.ordinal, -1, statement(each)};
            if (line.column < 0) line.column = product.ordinal(each.column.name);
            if (each.from == Syinställningar) line.setting = settings_.ordinal(each.setting);
            if (each.from == Syinställningar2) line.setting = settings2_.ordinal(each.setting);
            lines_.push_back(line);
        });
    }
}

void NewProductDefaults::apply(const Line& line, Recordset& product) {
    const Default& row = kProductDefaults[line.row];
    if (!applies(row.when, line.column, product, locale_)) return;
    switch (row.from) {
        case Syinställningar:
            return product.set(line.column, settings_.value(line.setting));
        case Syinställningar2:
            return product.set(line.column, settings2_.value(line.setting));
        case Text:
            return product.set(line.column, std::string(row.setting));
        case Level:
            return product.set(line.column, std::int64_t{kHighestLevel});
    }
}

std::vector<SettingDefault> productDefaultSettings() {
    std::vector<SettingDefault> settings;
    for (const Default& row : kProductDefaults) {
        if (row.from == Syinställningar) settings.push_back({row.column.name, "Syinställningar", row.setting});
        if (row.from == Syinställningar2) settings.push_back({row.column.name, "Syinställningar2", row.setting});
    }
    return settings;
}

std::vector<SettingDefault> groupDefaultSettings() {
    std::vector<SettingDefault> settings;
    for (const GroupAccount& row : kGroupAccounts) {
        settings.push_back({row.column.name, "Syinställningar", row.setting});
    }
    return settings;
}

void SättGruppKonton(Recordset& group, Recordset& settings, PassedOver& passedOver) {
    for (const GroupAccount& row : kGroupAccounts) {
        attempt(passedOver, fmt::format("Syinställningar.{}", row.setting),
                [&] { group.set(row.column.ordinal, settings.value(row.setting)); });
    }
}

}  // namespace kolmera
