#include "wholeruns/data/company.h"

#include <fmt/format.h>

#include <span>
#include <string>
#include <variant>
#include <vector>

#include "wholeruns/data/item.h"

namespace kolmera::bench {

namespace {

using Cell = std::variant<std::monostate, double, std::string>;

/// A column and what stands in it for an article.
struct Column {
    const char* name;
    Cell (*cell)(const Item&);
};

double amount(std::int64_t hundredths) { return static_cast<double>(hundredths) / 100; }
double small(const Item& item, std::uint64_t purpose, std::uint64_t below) {
    return static_cast<double>(mixed(item.place, purpose) % below);
}
std::string day(const Item& item, std::uint64_t purpose) {
    const std::uint64_t bits = mixed(item.place, purpose);
    return fmt::format("{}-{:02}-{:02}", 2019 + bits % 5, bits / 8 % 12 + 1, bits / 128 % 28 + 1);
}
std::string memo(const Item& item) {
    return item.name +
           ". Levereras i obruten förpackning, se tillverkarens anvisningar.\r\nMonteras av behörig "
           "installatör. Förvaras torrt.";
}

// The columns that companies commonly use; the rest keep their defaults. Couplings and decimals are those of
// `fillSettings`.
constexpr Column kProduct[] = {
    {"Nummer", [](const Item& i) -> Cell { return i.number; }},
    {"Söknamn", [](const Item& i) -> Cell { return i.name.substr(0, 3) + i.number; }},
    {"Leverantör",
     [](const Item& i) -> Cell { return std::string(i.ofOtherSupplier() ? kSecondSupplier : kSupplier); }},
    {"Levartikelnr", [](const Item& i) -> Cell { return i.article; }},
    {"Grupp", [](const Item& i) -> Cell { return i.group; }},
    {"Benämning", [](const Item& i) -> Cell { return i.name; }},
    {"Benämning2", [](const Item& i) -> Cell { return i.name2; }},
    {"Text", [](const Item& i) -> Cell { return holds(i.place, 20, 30) ? Cell(memo(i)) : Cell(); }},
    {"Fabrikat", [](const Item& i) -> Cell { return fmt::format("Fabrikat {}", mixed(i.place, 21) % 40); }},
    {"Inköpsfaktor", [](const Item& i) -> Cell { return holds(i.place, 22, 5) ? 10.0 : 1.0; }},
    {"Försäljfaktor", [](const Item&) -> Cell { return 1.0; }},
    {"Statistikfaktor", [](const Item&) -> Cell { return 1.0; }},
    {"InköpsEnhet", [](const Item& i) -> Cell { return i.unit; }},
    {"Försäljenhet", [](const Item& i) -> Cell { return holds(i.place, 23, 95) ? Cell(i.unit) : Cell(); }},
    {"Statistikenhet", [](const Item& i) -> Cell { return i.unit; }},
    {"Produkttyp", [](const Item&) -> Cell { return "1"; }},
    {"Vikt", [](const Item& i) -> Cell { return small(i, 24, 5000) / 100; }},
    {"Volym", [](const Item& i) -> Cell { return small(i, 25, 900) / 1000; }},
    {"Inpris", [](const Item& i) -> Cell { return amount(i.purchase); }},
    {"Vägtinpris", [](const Item& i) -> Cell { return amount(i.purchase) * 0.98; }},
    {"1Utpris", [](const Item& i) -> Cell { return amount(i.sales); }},
    {"2Utpris", [](const Item& i) -> Cell { return amount(i.sales) * 0.9; }},
    {"3Utpris", [](const Item& i) -> Cell { return amount(i.purchase) * 1.35; }},
    {"1Pålägg", [](const Item& i) -> Cell { return holds(i.place, 26, 20) ? 40.0 : 0.0; }},
    {"2Pålägg", [](const Item& i) -> Cell { return holds(i.place, 27, 90) ? 12.5 : 0.0; }},
    {"3Pålägg", [](const Item& i) -> Cell { return holds(i.place, 28, 80) ? 35.0 : 0.0; }},
    {"InprisProc", [](const Item& i) -> Cell { return holds(i.place, 29, 10) ? 5.0 : 0.0; }},
    {"Kalkylpris", [](const Item& i) -> Cell { return amount(i.purchase); }},
    {"SenasteInpris", [](const Item& i) -> Cell { return amount(i.purchase); }},
    {"SenasteInköp", [](const Item& i) -> Cell { return holds(i.place, 30, 60) ? Cell(day(i, 31)) : Cell(); }},
    {"Prisändrdat", [](const Item& i) -> Cell { return day(i, 32); }},
    {"Lagersaldo", [](const Item& i) -> Cell { return small(i, 33, 500); }},
    {"Beställningspunkt", [](const Item& i) -> Cell { return small(i, 34, 20); }},
    {"Inköpskvantitet", [](const Item& i) -> Cell { return small(i, 35, 100); }},
    {"Leveranstid", [](const Item& i) -> Cell { return small(i, 36, 30); }},
    {"Lagerplats", [](const Item& i) -> Cell { return fmt::format("H{}", mixed(i.place, 37) % 900); }},
    {"Inventeringsdatum", [](const Item& i) -> Cell { return holds(i.place, 38, 50) ? Cell(day(i, 39)) : Cell(); }},
    {"SåltMånad1", [](const Item& i) -> Cell { return small(i, 40, 90'000) / 100; }},
    {"SåltMånad2", [](const Item& i) -> Cell { return small(i, 41, 90'000) / 100; }},
    {"SåltMånad3", [](const Item& i) -> Cell { return small(i, 42, 90'000) / 100; }},
    {"Försäljning", [](const Item& i) -> Cell { return holds(i.place, 43, 90) ? Cell(std::string()) : Cell(); }},
    {"AntalMånad1", [](const Item& i) -> Cell { return small(i, 44, 90); }},
    {"AntalMånad2", [](const Item& i) -> Cell { return small(i, 45, 90); }},
    {"AntalMånad3", [](const Item& i) -> Cell { return small(i, 46, 90); }},
    {"SåltFgÅr", [](const Item& i) -> Cell { return small(i, 47, 900'000) / 100; }},
    {"AntalFgÅr", [](const Item& i) -> Cell { return small(i, 48, 900); }},
    {"Intäktskonto", [](const Item&) -> Cell { return 3010.0; }},
    {"Kostnadskonto", [](const Item&) -> Cell { return 4010.0; }},
    {"Momskod", [](const Item&) -> Cell { return "1"; }},
    {"Lagervärde", [](const Item&) -> Cell { return "I"; }},
    {"Värderingsnivå", [](const Item&) -> Cell { return 9.0; }},
    {"Prislista", [](const Item&) -> Cell { return 1.0; }},
    {"LagerArtikel", [](const Item& i) -> Cell { return holds(i.place, 49, 70) ? 1.0 : 0.0; }},
    {"Valutakod", [](const Item& i) -> Cell { return holds(i.place, 50, 5) ? "EUR" : "SEK"; }},
    {"Rubrik0", [](const Item&) -> Cell { return "FP"; }},
    {"Rubrik1", [](const Item&) -> Cell { return "FP"; }},
    {"Antal1", [](const Item& i) -> Cell { return small(i, 7, 50) + 1; }},
    {"Statistiknummer", [](const Item& i) -> Cell { return fmt::format("8544{}", mixed(i.place, 51) % 10'000); }},
    {"Ursprungsland", [](const Item& i) -> Cell { return holds(i.place, 52, 60) ? "SE" : "DE"; }},
    {"Upplagddatum", [](const Item& i) -> Cell { return day(i, 53); }},
    {"Förändringsdatum", [](const Item& i) -> Cell { return day(i, 54); }},
    {"Förändradav", [](const Item&) -> Cell { return "AKE"; }},
    {"Prisgrupp", [](const Item& i) -> Cell { return fmt::format("P{}", mixed(i.place, 55) % 12); }},
    {"Webbrubrik", [](const Item& i) -> Cell { return holds(i.place, 56, 25) ? Cell(i.name) : Cell(); }},
};

constexpr Column kPriceList[] = {
    {"Produktnr", [](const Item& i) -> Cell { return i.number; }},
    {"Leverantör", [](const Item&) -> Cell { return std::string(kSupplier); }},
    {"Levartikelnr", [](const Item& i) -> Cell { return i.article; }},
    {"Datum", [](const Item& i) -> Cell { return day(i, 60); }},
    {"Rabatt", [](const Item& i) -> Cell { return small(i, 61, 40); }},
    {"RabattKod", [](const Item& i) -> Cell { return i.discountCode; }},
    {"Inpris", [](const Item& i) -> Cell { return amount(i.purchase) * 0.8; }},
    {"InprisFöreRabatt", [](const Item& i) -> Cell { return amount(i.purchase); }},
    {"Utpris1", [](const Item& i) -> Cell { return amount(i.sales); }},
};

constexpr Column kEan[] = {
    {"Produktnr", [](const Item& i) -> Cell { return i.number; }},
    {"Nummer", [](const Item&) -> Cell { return static_cast<double>(kEanHeading); }},
    {"Alternativnr", [](const Item& i) -> Cell { return i.ean; }},
};

constexpr Column kMicronic[] = {
    {"Produktnr", [](const Item& i) -> Cell { return i.number; }},
    {"Nummer", [](const Item&) -> Cell { return static_cast<double>(kMicronicHeading); }},
    {"Alternativnr", [](const Item& i) -> Cell { return i.micronic; }},
};

/// Adds one row a call.
class Filler {
  public:
    Filler(Connection& company, const std::string& table, std::span<const Column> columns)
        : columns_(columns), insert_(company, statement(table, columns)) {}

    void add(const Item& item) {
        int place = 0;
        std::vector<Cell> cells;
        cells.reserve(columns_.size());
        for (const Column& column : columns_) {
            cells.push_back(column.cell(item));
            ++place;
            if (const auto* text = std::get_if<std::string>(&cells.back())) {
                insert_.bind(place, std::string_view(*text));
            } else if (const auto* number = std::get_if<double>(&cells.back())) {
                insert_.bind(place, *number);
            } else {
                insert_.bindNull(place);
            }
        }
        insert_.run();
    }

  private:
    static std::string statement(const std::string& table, std::span<const Column> columns) {
        std::string names;
        std::string places;
        for (const Column& column : columns) {
            names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", column.name);
            places += places.empty() ? "?" : ", ?";
        }
        return fmt::format("INSERT INTO {} ({}) VALUES ({})", table, names, places);
    }

    std::span<const Column> columns_;
    Statement insert_;
};

// Price list 2 follows list 1, list 3 the purchase price; the other lists have no markup and are not recomputed.
void fillSettings(Connection& company) {
    company.execute(
        "UPDATE Syinställningar SET \"1OMomsproc\" = 25, \"2OMomsproc\" = 12, \"3OMomsproc\" = 6, PGrupp = '100', "
        "PInköpsfaktor = 1, PFörsäljfaktor = 1, PStatistikfaktor = 1, PInköpsenhet = 'ST', PFörsäljenhet = 'ST', "
        "PStatistikenhet = 'ST', PFaktor2 = 12.5, PFaktor3 = 35, PMomsKod = '1', PLagervärde = 'I', PValutakod = "
        "'SEK', "
        "PPrislista = 1, PLagerArtikel = 1;"
        "UPDATE Syinställningar2 SET PDecInpris = 2, PDecUtpris = 2, PAutoUppdatUtpris = 1, "
        "PUtprisKopplaMot = '1=-;2=1;3=I', "
        "PPrisAvrund = replace('0|9,99|10|99,99|100|999,99|1000|9999,99|10000|99999,99', '|', char(13, 10));"
        "INSERT INTO Syvaluta (Kod, Benämning, Kundreskontra, Levreskontra, Faktor) VALUES "
        "('SEK', 'Svenska kronor', 1, 1, 1), ('EUR', 'Euro', 11.45, 11.55, 1), ('NOK', 'Norska kronor', 98, 99, 100);"
        "INSERT INTO Prodaltrubrik (Nummer, Rubrik) VALUES (1, 'EAN'), (2, 'Micronic');"
        "INSERT INTO Leverantör (Nummer, Söknamn, Namn, Ort, Valutakod) VALUES "
        "('1001', 'ELGROSS', 'Elgross i Mälardalen AB', 'Västerås', 'SEK'), "
        "('1002', 'RÖRHUS', 'Rörhuset i Skåne AB', 'Malmö', 'SEK'), "
        "('1003', 'ÅKERI', 'Åkes Järn', 'Åmål', 'SEK')");
}

void fillDiscountLetters(Connection& company) {
    Statement insert(
        company, "INSERT INTO LevrabattBrev (Leverantör, Rabattgrupp, \"1Rabatt\", \"2Rabatt\") VALUES (?, ?, ?, ?)");
    for (const std::string_view supplier : {kSupplier, kSecondSupplier}) {
        for (int code = 0; code < 270; ++code) {  // the last of the 300 codes of the price files have no letter
            const std::string group = fmt::format("R{:03}", code);
            insert.bind(1, supplier);
            insert.bind(2, std::string_view(group));
            insert.bind(3, 10.0 + code % 40);
            code % 3 == 0 ? insert.bind(4, 5.0) : insert.bindNull(4);
            insert.run();
        }
    }
}

void fillGroups(Connection& company) {
    Statement insert(company, "INSERT INTO Prodgrupp (Nummer, Benämning) VALUES (?, ?)");
    for (int group = 100; group < 1000; ++group) {
        const std::string number = fmt::format("0{}", group);
        const std::string name = fmt::format("Varugrupp 0{}", group);
        insert.bind(1, std::string_view(number));
        insert.bind(2, std::string_view(name));
        insert.run();
    }
}

}  // namespace

void fillCompany(Connection& company, Format format, std::uint64_t products) {
    company.execute("BEGIN");
    fillSettings(company);
    fillDiscountLetters(company);
    fillGroups(company);
    Filler product(company, "Produkt", kProduct);
    Filler priceList(company, "Levprislista", kPriceList);
    Filler ean(company, "Prodaltprodnr", kEan);
    Filler micronic(company, "Prodaltprodnr", kMicronic);
    for (std::uint64_t place = 0; place < products; ++place) {
        const Item item(place, format);
        if (!item.known()) continue;
        product.add(item);
        if (holds(place, 70, 97)) priceList.add(item);
        if (holds(place, 71, 90)) ean.add(item);
        if (holds(place, 72, 90)) micronic.add(item);
    }
    company.execute("COMMIT");
}

}  // namespace kolmera::bench
