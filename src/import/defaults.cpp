#include "import/defaults.h"

#include <array>
#include <string_view>

#include "db/conversions.h"

namespace kolmera {
namespace {

/// Product columns whose defaults depend on each other.
constexpr int kLagervärdeproc = 50;
constexpr int kLagervärde = 100;
constexpr int kVärderingsnivå = 101;

constexpr int kByName = -1;  ///< ordinal of a column that is found by its name
constexpr int kHighestLevel = 9;

/// When a product column gets its default.
enum class When { Empty, Zero, False, LevelBelowHighest, EmptyAndValuedByPercent };

/// Where the default stands: a column of one of the two settings tables, or in the table of defaults itself.
enum class From { Syinställningar, Syinställningar2, Text, Level };

struct Default {
    int ordinal;
    std::string_view name;  ///< of the column when it has no fixed ordinal
    When when;
    From from;
    std::string_view setting;  ///< settings column or text
};

using enum When;
using enum From;

/// Applied from top to bottom. Two rows rest on rows above them: the level is 9 before it is compared with 9, and the
/// stock valuation is final before its percentage is looked at.
constexpr Default kProductDefaults[] = {
    {5, {}, Empty, Syinställningar, "PGrupp"},
    {11, {}, Zero, Syinställningar, "PInköpsfaktor"},
    {12, {}, Zero, Syinställningar, "PFörsäljfaktor"},
    {13, {}, Zero, Syinställningar, "PStatistikfaktor"},
    {14, {}, Empty, Syinställningar, "PInköpsenhet"},
    {15, {}, Empty, Syinställningar, "PFörsäljenhet"},
    {16, {}, Empty, Syinställningar, "PStatistikenhet"},
    {17, {}, Empty, Text, "1"},
    {33, {}, Zero, Syinställningar, "PFaktor1"},
    {34, {}, Zero, Syinställningar, "PFaktor2"},
    {35, {}, Zero, Syinställningar, "PFaktor3"},
    {36, {}, Zero, Syinställningar, "PFaktor4"},
    {37, {}, Zero, Syinställningar, "PFaktor5"},
    {38, {}, Zero, Syinställningar, "PFaktor6"},
    {39, {}, Zero, Syinställningar, "PFaktor7"},
    {40, {}, Zero, Syinställningar, "PFaktor8"},
    {41, {}, Zero, Syinställningar, "PFaktor9"},
    {99, {}, Empty, Syinställningar, "PMomsKod"},
    {kLagervärde, {}, Empty, Syinställningar, "PLagervärde"},
    {105, {}, Empty, Syinställningar, "PValutakod"},
    {102, {}, False, Syinställningar, "PPrislista"},
    {103, {}, False, Syinställningar, "PLagerArtikel"},
    {104, {}, False, Syinställningar, "PBatchnummer"},
    {kVärderingsnivå, {}, Zero, Level, {}},
    {kLagervärde, {}, LevelBelowHighest, Text, "I"},
    {kLagervärdeproc, {}, EmptyAndValuedByPercent, Syinställningar, "PLagervärdeproc"},
    {kByName, "KostnadProdukt", False, Syinställningar, "PKostnadProdukt"},
    {kByName, "Avgift", Empty, Syinställningar, "PAvgift"},
    {kByName, "AvgiftKrProc", Empty, Syinställningar, "PAvgiftKrProc"},
    {kByName, "Lagerbokföring", False, Syinställningar, "PLagerbokföring"},
    {kByName, "Prisgrupp", Empty, Syinställningar2, "PPrisGrupp"},
    {kByName, "Spärrarabatt", False, Syinställningar2, "PSpärraRabatt"},
    {kByName, "Inaktiv", False, Syinställningar2, "PInaktiv"},
    {kByName, "Webshop", False, Syinställningar2, "PWebshop"},
};

struct GroupAccount {
    int ordinal;
    std::string_view setting;
};

constexpr GroupAccount kGroupAccounts[] = {
    {7, "PMomskod1"}, {8, "PMomskod2"},    {9, "PMomskod3"},     {10, "PMomsfritt"},   {11, "PUtförselEU"},
    {12, "PExport"},  {13, "PLagerkonto"}, {15, "PVarukostnad"}, {19, "PInternUttag"}, {20, "PRabattKonto"}};

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
            return TillDbl(product.value(kVärderingsnivå), locale) < kHighestLevel;
        case EmptyAndValuedByPercent:
            return isEmpty(product.value(column)) && textOf(product.value(kLagervärde)) == "T";
    }
    return false;
}

}  // namespace

void NewProductDefaults::SättNyProduktStandard(Recordset& product) {
    if (!resolved_) resolve(product);
    for (const Line& line : lines_) {
        attempt(passedOver_, kProductDefaults[line.row].setting, [&] { apply(line, product); });
    }
}

/// Finds the columns of all lines. A line whose columns do not exist is noted here and left out.
void NewProductDefaults::resolve(const Recordset& product) {
    resolved_ = true;
    for (std::size_t row = 0; row < std::size(kProductDefaults); ++row) {
        const Default& each = kProductDefaults[row];
        attempt(passedOver_, each.setting, [&] {
            Line line{row, each.ordinal, -1};
            if (each.ordinal == kByName) line.column = product.ordinal(each.name);
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

void SättGruppKonton(Recordset& group, Recordset& settings, PassedOver& passedOver) {
    for (const GroupAccount& row : kGroupAccounts) {
        attempt(passedOver, row.setting, [&] { group.set(row.ordinal, settings.value(row.setting)); });
    }
}

}  // namespace kolmera
