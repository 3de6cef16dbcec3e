#include "registers/registertable.h"

#include <algorithm>
#include <iterator>

#include "db/productcolumns.h"
#include "import/rows/defaults.h"
#include "lang/keys/registers.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

using enum SettingForm;

constexpr std::string_view kSettings = "Syinställningar";
constexpr std::string_view kSettings2 = "Syinställningar2";

constexpr std::string_view kSupplierList[] = {"Nummer", "Söknamn", "Namn", "Ort", "Telefon", "Valutakod", "Rabatt"};
constexpr std::string_view kGroupList[] = {"Nummer", "Benämning", "Pålägg", "Rabatt"};
constexpr std::string_view kProductList[] = {"Nummer", "Söknamn",    "Leverantör", "Levartikelnr", "Grupp",
                                             "Inpris", "InprisProc", "1Utpris",    "Momskod",      "Valutakod"};
constexpr std::string_view kSupplierPriceList[] = {"Produktnr", "Leverantör", "Levartikelnr", "Datum",
                                                   "Rabatt",    "RabattKod",  "Inpris",       "InprisFöreRabatt"};

constexpr SettingColumn kVatColumns[] = {{"Momskod", text::registers::kVatCode},
                                         {"Procent", text::registers::kPercent}};
constexpr SettingColumn kRoundingColumns[] = {
    {"Intervall", text::registers::kRange}, {"Från", text::registers::kFrom}, {"Till", text::registers::kTo}};
constexpr SettingColumn kListColumns[] = {
    {"Prislista", text::registers::kPriceList}, {"Pålägg", text::registers::kMarkup},
    {"Valuta", text::registers::kCurrency},     {"KopplaMot", text::registers::kCoupledTo},
    {"MomsMot", text::registers::kVatOn},       {"Avrundas", text::registers::kRounded}};
constexpr SettingColumn kDefaultColumns[] = {{"Kolumn", text::registers::kColumn}, {"Värde", text::registers::kValue}};
constexpr SettingColumn kSettingColumns[] = {{"Inställning", text::registers::kSetting},
                                             {"Värde", text::registers::kValue}};

std::vector<SettingRow> vatRates() {
    constexpr std::string_view kColumns[] = {"1OMomsproc", "2OMomsproc", "3OMomsproc"};
    std::vector<SettingRow> rows;
    rows.reserve(std::size(kColumns));
    for (const std::string_view column : kColumns) {
        const int code = static_cast<int>(rows.size()) + 1;
        rows.push_back({.number = code, .cells = {{.table = kSettings, .column = column}}});
    }
    return rows;
}

/// Ten lines: From 1, To 1, ... From 5, To 5.
std::vector<SettingRow> roundingRanges() {
    constexpr int kRanges = 5;
    std::vector<SettingRow> rows;
    for (int range = 0; range < kRanges; ++range) {
        const auto line = [](int place) { return SettingCell{kSettings2, "PPrisAvrund", Line, place}; };
        rows.push_back({.number = range + 1, .cells = {line(2 * range), line(2 * range + 1)}});
    }
    return rows;
}

std::vector<SettingRow> priceLists() {
    constexpr std::string_view kMarkups[] = {"PFaktor1", "PFaktor2", "PFaktor3", "PFaktor4", "PFaktor5",
                                             "PFaktor6", "PFaktor7", "PFaktor8", "PFaktor9"};
    static_assert(std::size(kMarkups) == kPriceLists);
    std::vector<SettingRow> rows;
    for (int list = 1; list <= kPriceLists; ++list) {
        rows.push_back({.number = list,
                        .cells = {{.table = kSettings, .column = kMarkups[list - 1]},
                                  {kSettings2, "PUtprisValuta", ListText, list, "SEK", {}, 3, "Syvaluta"},
                                  {kSettings2, "PUtprisKopplaMot", ListText, list, "I", "IVM123456789-", 1},
                                  {kSettings2, "PUtprisMomsMot", ListText, list, "0", "0123456789", 1},
                                  {kSettings2, "PNoAvrundPLBM", BitUnset, list}}});
    }
    return rows;
}

std::vector<SettingRow> rowsOf(std::string_view table, std::span<const SettingDefault> defaults) {
    std::vector<SettingRow> rows;
    for (const SettingDefault& each : defaults) {
        rows.push_back(
            {.table = table, .column = each.column, .cells = {{.table = each.table, .column = each.setting}}});
    }
    return rows;
}
std::vector<SettingRow> productRows() {
    std::vector<SettingDefault> defaults = productDefaultSettings();
    // The markups stand with the price lists.
    std::erase_if(defaults, [](const SettingDefault& each) { return each.setting.starts_with("PFaktor"); });
    return rowsOf("Produkt", defaults);
}
std::vector<SettingRow> groupRows() { return rowsOf("Prodgrupp", groupDefaultSettings()); }

std::vector<SettingRow> priceSettings() {
    const auto row = [](FormKey caption, std::string_view column) {
        return SettingRow{.column = column, .caption = caption, .cells = {{.table = kSettings2, .column = column}}};
    };
    return {row(text::registers::kPurchaseDecimals, "PDecInpris"), row(text::registers::kSalesDecimals, "PDecUtpris"),
            row(text::registers::kRecompute, "PAutoUppdatUtpris"), row(text::registers::kMargins, "PUtprisFaktorTG"),
            row(text::registers::kForeignMarkup, "PFaktorValuta"), row(text::registers::kDateMask, "PPrisDatumBM")};
}

const RegisterDefinition kRegisters[] = {
    {"vat", "moms", text::registers::kVat, {}, {}, {}, kVatColumns, vatRates},
    {"currencies", "valutor", text::registers::kCurrencies, "Syvaluta", "Kod"},
    {"rounding", "avrundning", text::registers::kRounding, {}, {}, {}, kRoundingColumns, roundingRanges},
    {"price-lists", "prislistor", text::registers::kPriceLists, {}, {}, {}, kListColumns, priceLists},
    {"price-settings",
     "prisinställningar",
     text::registers::kPriceSettings,
     {},
     {},
     {},
     kSettingColumns,
     priceSettings},
    {"groups", "varugrupper", text::registers::kGroups, "Prodgrupp", "Nummer", kGroupList},
    {"group-defaults", "gruppkonton", text::registers::kGroupDefaults, {}, {}, {}, kDefaultColumns, groupRows},
    {"defaults", "standardvärden", text::registers::kDefaults, {}, {}, {}, kDefaultColumns, productRows},
    {"suppliers", "leverantörer", text::registers::kSuppliers, "Leverantör", "Nummer", kSupplierList},
    {"letters", "rabattbrev", text::registers::kLetters, "LevrabattBrev", "Leverantör"},
    {"headings", "rubriker", text::registers::kHeadings, "Prodaltrubrik", "Nummer"},
    {"products", "produkter", text::registers::kProducts, "Produkt", "Nummer", kProductList},
    {"supplier-prices", "leverantörspriser", text::registers::kSupplierPrices, "Levprislista", "Produktnr",
     kSupplierPriceList},
    {"alternatives", "alternativnummer", text::registers::kAlternatives, "Prodaltprodnr", "Produktnr"},
    {"documents", "dokument", text::registers::kDocuments, "Proddokument", "Nummer"},
};

struct Naming {
    std::string_view table;
    std::vector<std::string_view> columns;
};
const Naming kNaming[] = {{"Leverantör", {"Söknamn", "Namn"}},
                          {"Prodgrupp", {"Benämning"}},
                          {"Produkt", {"Benämning", "Söknamn"}},
                          {"Prodaltrubrik", {"Rubrik"}},
                          {"Syvaluta", {"Benämning"}}};

/// Of all tables that have them.
constexpr std::string_view kKept[] = {"ID", "Förändringsdatum", "Räknare", "Postversion", "Postlås"};

}  // namespace

std::span<const RegisterDefinition> registerDefinitions() { return kRegisters; }

const RegisterDefinition* registerNamed(std::string_view name) {
    const auto* const found = std::ranges::find_if(
        kRegisters, [&](const auto& one) { return equalNoCase(one.name, name) || equalNoCase(one.namn, name); });
    return found == std::end(kRegisters) ? nullptr : found;
}

const RegisterDefinition* registerOfTable(std::string_view table) {
    const auto* const found = std::ranges::find_if(
        kRegisters, [&](const auto& one) { return !one.table.empty() && equalNoCase(one.table, table); });
    return found == std::end(kRegisters) ? nullptr : found;
}

std::span<const std::string_view> namingColumns(std::string_view table) {
    const auto* const found =
        std::ranges::find_if(kNaming, [&](const auto& one) { return equalNoCase(one.table, table); });
    if (found == std::end(kNaming)) return {};
    return found->columns;
}

std::string_view suggestedRegister(std::string_view column) {
    return equalNoCase(column, "Momskod") || equalNoCase(column, "PMomsKod") ? "vat" : "";
}

bool isKeptByProgram(std::string_view column) {
    return std::ranges::any_of(kKept, [&](std::string_view kept) { return equalNoCase(kept, column); });
}

}  // namespace kolmera
