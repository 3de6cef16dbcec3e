#include "suite/wordtable.h"

#include <cstddef>
#include <iterator>
#include <tuple>

#include "platform/lettercase.h"

namespace kolmera {

namespace {

struct Word {
    const char* swedish;
    const char* english;
    std::size_t lowerCaseOf = 0;  ///< the entry is that entry in lower case
};

// Blanks at the ends belong to the words.
constexpr Word kWords[] = {
    {"", ""},
    {" för ", " for "},
    {" av ", " of "},
    {" och ", " and "},
    {" från ", " from "},
    {" till ", " to "},
    {" som ", " as "},
    {"med", "with"},
    {"på", "on"},
    {"Tom", "To"},
    {"t.o.m.", "to"},
    {"Välj", "Select"},
    {"Inga", "No"},
    {"ingen", "none"},
    {"Inga", "None"},
    {"alla", "all"},
    {"", "", 12},
    {" rad", " row"},
    {" rader", " rows"},
    {"ändrade", "changed"},
    {"Transaktioner", "Transactions"},
    {" transaktioner", " transactions"},
    {" fakturor", " invoices"},
    {"i", "in"},
    {"Period", "Period"},
    {"Datum", "Date"},
    {"Datumet", "The date"},
    {"Perioden", "The period"},
    {"Saldo : ", "Balance: "},
    {"Sida ", "Page "},
    {" Sid ", " Page "},
    {"kopia", "copy"},
    {" Sök ", " Search "},
    {" nummer ", " number "},
    {"grupp", "group"},
    {"Kund", "Customer"},
    {"Produkt", "Product"},
    {"Leverantör", "Supplier"},
    {"", "", 35},
    {"", "", 36},
    {"", "", 37},
    {"kunder", "customers"},
    {"produkter", "products"},
    {"leverantörer", "suppliers"},
    {"beställning", "purchase order"},
    {"offert", "offer submission"},
    {"order", "sales order"},
    {"serviceorder", "service order"},
    {"kassaorder", "cash register order"},
};

}  // namespace

std::array<std::string, 49> wordTable(std::string_view language) {
    std::array<std::string, 49> table;
    static_assert(std::size(kWords) == std::tuple_size_v<decltype(table)>);
    for (std::size_t entry = 0; entry < table.size(); ++entry) {
        const Word& word = kWords[entry];
        table[entry] = word.lowerCaseOf > 0 ? lowerCase(table[word.lowerCaseOf])
                                            : std::string(language == "EN" ? word.english : word.swedish);
    }
    return table;
}

}  // namespace kolmera
