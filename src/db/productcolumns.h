#pragma once

#include <span>
#include <string_view>

namespace kolmera {

/// A column that is found by its place in the table's column order, counted from 0: masks store places, not names.
struct ColumnPlace {
    std::string_view name;
    int ordinal;
};

inline constexpr ColumnPlace kProdukt[] = {
    {"Nummer", 1},          {"Söknamn", 2},        {"Leverantör", 3},      {"Levartikelnr", 4},
    {"Grupp", 5},           {"Inköpsfaktor", 11},  {"Försäljfaktor", 12},  {"Statistikfaktor", 13},
    {"InköpsEnhet", 14},    {"Försäljenhet", 15},  {"Statistikenhet", 16}, {"Produkttyp", 17},
    {"Inpris", 21},         {"Rabatt", 22},        {"Vägtinpris", 23},     {"1Utpris", 24},
    {"9Utpris", 32},        {"1Pålägg", 33},       {"2Pålägg", 34},        {"3Pålägg", 35},
    {"4Pålägg", 36},        {"5Pålägg", 37},       {"6Pålägg", 38},        {"7Pålägg", 39},
    {"8Pålägg", 40},        {"9Pålägg", 41},       {"InprisProc", 42},     {"Prisändrdat", 49},
    {"Lagervärdeproc", 50}, {"Momskod", 99},       {"Lagervärde", 100},    {"Värderingsnivå", 101},
    {"Prislista", 102},     {"LagerArtikel", 103}, {"Batchnummer", 104},   {"Valutakod", 105},
    {"Dokument", 123},      {"Prisgrupp", 134},    {"Postversion", 143},   {"Postlås", 144},
};

inline constexpr ColumnPlace kProdgrupp[] = {
    {"Momskonto1", 7},   {"Momskonto2", 8},  {"Momskonto3", 9},         {"Momsfrittkonto", 10},    {"EUkonto", 11},
    {"Exportkonto", 12}, {"Lagerkonto", 13}, {"Varukostnadskonto", 15}, {"Internuttagskonto", 19}, {"Rabattkonto", 20},
};

/// A misspelt name does not compile.
consteval int ordinal(std::span<const ColumnPlace> table, std::string_view name) {
    for (const ColumnPlace& column : table) {
        if (column.name == name) return column.ordinal;
    }
    throw "no such column";
}

inline constexpr int kPriceLists = 9;

/// The product's out price and markup of a price list, 1 to 9.
constexpr int utprisOrdinal(int list) { return ordinal(kProdukt, "1Utpris") + list - 1; }
constexpr int påläggOrdinal(int list) { return ordinal(kProdukt, "1Pålägg") + list - 1; }
static_assert(utprisOrdinal(kPriceLists) == ordinal(kProdukt, "9Utpris"));
static_assert(påläggOrdinal(kPriceLists) == ordinal(kProdukt, "9Pålägg"));

/// The price list whose out price stands in that column of the product; 0 for other columns.
constexpr int priceListOf(int ordinal) {
    const int list = ordinal - utprisOrdinal(0);
    return list >= 1 && list <= kPriceLists ? list : 0;
}

}  // namespace kolmera
