#pragma once

#include <string_view>

namespace kolmera {

/// A column by which the rows of a table name rows of another one.
struct Reference {
    std::string_view table, column;    ///< who names
    std::string_view named, byColumn;  ///< who is named
};

/// The tables stand in the order in which they can be removed: who names before who is named.
inline constexpr Reference kReferences[] = {
    {"Levprislista", "Produktnr", "Produkt", "Nummer"},
    {"Levprislista", "Leverantör", "Leverantör", "Nummer"},
    {"LevrabattBrev", "Leverantör", "Leverantör", "Nummer"},
    {"Prodaltprodnr", "Produktnr", "Produkt", "Nummer"},
    {"Prodaltprodnr", "Nummer", "Prodaltrubrik", "Nummer"},
    {"Proddokument", "Produktnr", "Produkt", "Nummer"},
    {"Produkt", "Leverantör", "Leverantör", "Nummer"},
    {"Produkt", "Grupp", "Prodgrupp", "Nummer"},
    {"Produkt", "Valutakod", "Syvaluta", "Kod"},
    {"Syinställningar", "PGrupp", "Prodgrupp", "Nummer"},
    {"Syinställningar", "PValutakod", "Syvaluta", "Kod"},
    {"Leverantör", "Valutakod", "Syvaluta", "Kod"},
};

/// Columns by which tables that this program does not know (orders, stock) name a product.
inline constexpr Reference kForeignReferences[] = {
    {"", "Produktnr", "Produkt", "Nummer"},
    {"", "Produktnummer", "Produkt", "Nummer"},
    {"", "ProduktID", "Produkt", "ID"},
};

}  // namespace kolmera
