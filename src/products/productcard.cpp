#include "products/productcard.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>

#include "db/conversions.h"
#include "db/productcolumns.h"
#include "history/captions.h"
#include "lang/keys/products.h"
#include "lang/keys/registers.h"
#include "platform/lettercase.h"
#include "pricing/vatrates.h"
#include "registers/register.h"

namespace kolmera {
namespace {

/// What the first table shows, in this order; empty ones are left out.
constexpr std::string_view kShown[] = {"Nummer",       "Söknamn",      "Benämning",   "Benämning2", "Leverantör",
                                       "Levartikelnr", "Grupp",        "Prisgrupp",   "Inpris",     "Rabatt",
                                       "InprisProc",   "Vägtinpris",   "Valutakod",   "Momskod",    "Inköpsfaktor",
                                       "InköpsEnhet",  "Försäljenhet", "Prisändrdat", "Lagerplats"};

class CardReader {
  public:
    CardReader(SqlLayer& sql, LanguageTexts& texts) : sql_(sql), texts_(texts) {}

    std::optional<ProductCard> read(std::string_view number);

  private:
    std::unique_ptr<Recordset> rowsOf(std::string_view table, std::string_view column, std::string_view key,
                                      std::string_view order);
    void addProduct(Recordset& product);
    void addPrices(Recordset& product);
    void addSupplierPrices();
    void addAlternatives();
    void addDocuments();
    CardTable& addTable(const char* name, FormKey title);
    [[nodiscard]] std::string coupling(std::string_view code, std::string_view vat);
    [[nodiscard]] std::string nameOf(std::string_view table, std::string_view column, std::string_view key);
    [[nodiscard]] std::string text(Recordset& row, std::string_view column) {
        const int place = row.ordinal(column);
        return TillText(row.value(place), row.fields()[static_cast<std::size_t>(place)].type, sql_.locale());
    }
    [[nodiscard]] std::string caption(std::string_view table, std::string_view column);
    std::string word(ModuleKey key) { return texts_.ModulText(key); }
    std::string formText(FormKey key) { return texts_.FormulärSträng(key); }
    void remember(const char* table, Recordset& row) {
        card_.ids[table].insert(TillLng(row.value("ID"), sql_.locale()));
    }

    SqlLayer& sql_;
    LanguageTexts& texts_;
    ProductCard card_;
};

std::unique_ptr<Recordset> CardReader::rowsOf(std::string_view table, std::string_view column, std::string_view key,
                                              std::string_view order) {
    return sql_.SQLÖppnaRs(fmt::format("SELECT * FROM {} WHERE {} = {}{}{}", table, column, SqlLayer::SQLText(key),
                                       order.empty() ? "" : " ORDER BY ", order),
                           RecordsetType::Snapshot, options::kReadOnly);
}

CardTable& CardReader::addTable(const char* name, FormKey title) {
    card_.tables.push_back({.name = name, .title = formText(title), .fields = {}, .headings = {}, .rows = {}});
    return card_.tables.back();
}

std::string CardReader::caption(std::string_view table, std::string_view column) {
    const TableDef& definition = sql_.FtgDB->table(table);
    for (std::size_t place = 0; place < definition.fields.size(); ++place) {
        if (!equalNoCase(definition.fields[place].name, column)) continue;
        const std::string whole = columnCaption(texts_, definition, static_cast<int>(place));
        const std::size_t colon = table == "Produkt" ? std::string::npos : whole.find(": ");
        return colon == std::string::npos ? whole : whole.substr(colon + 2);
    }
    return std::string(column);
}

std::string CardReader::nameOf(std::string_view table, std::string_view column, std::string_view key) {
    if (key.empty()) return {};
    const auto row = rowsOf(table, "Nummer", key, {});
    return row->eof() ? std::string() : text(*row, column);
}

std::optional<ProductCard> CardReader::read(std::string_view number) {
    const auto product = rowsOf("Produkt", "Nummer", trimmed(number), {});
    if (product->eof()) return std::nullopt;
    card_.number = text(*product, "Nummer");
    card_.name = text(*product, "Benämning");
    remember("Produkt", *product);
    addProduct(*product);
    addPrices(*product);
    addSupplierPrices();
    addAlternatives();
    addDocuments();
    return std::move(card_);
}

void CardReader::addProduct(Recordset& product) {
    CardTable& table = addTable("product", text::registers::kProducts);
    table.title = word(text::products::kProduct);
    table.headings = {formText(text::registers::kColumn), formText(text::registers::kValue), {}};
    table.fields = {"Kolumn", "Värde", "Anmärkning"};
    PassedOverSilently passedOver;
    VatRates rates(sql_, passedOver);
    for (const std::string_view column : kShown) {
        const std::string value = text(product, column);
        if (value.empty()) continue;
        std::string remark;
        if (column == "Leverantör") remark = nameOf("Leverantör", "Namn", value);
        if (column == "Grupp") remark = nameOf("Prodgrupp", "Benämning", value);
        if (column == "Momskod") {
            if (const auto rate = rates.of(TillLng(product.value(column), sql_.locale())))
                remark = TillText(Value(*rate), sql_.locale()) + " %";
        }
        table.rows.push_back({caption("Produkt", column), value, remark});
    }
}

/// What a price list's price is worked out of, by its letter in the settings.
std::string CardReader::coupling(std::string_view code, std::string_view vat) {
    if (code == "I") return word(text::products::kFromPurchase);
    if (code == "V") return word(text::products::kFromWeighted);
    if (code == "M") return texts_.ModulTextMed(text::products::kPlusVat, vat);
    if (code == "-" || code.empty()) return word(text::products::kNotCoupled);
    return texts_.ModulTextMed(text::products::kFromList, code);
}

void CardReader::addPrices(Recordset& product) {
    CardTable& table = addTable("prices", text::registers::kPriceLists);
    Register lists(*registerNamed("price-lists"), sql_, texts_);
    const auto heading = [&](std::string_view field) { return lists.column(lists.columnNamed(field)).caption; };
    table.headings = {heading("Prislista"), word(text::products::kPrice), heading("Pålägg"),  heading("Valuta"),
                      heading("KopplaMot"), heading("MomsMot"),           heading("Avrundas")};
    table.fields = {"Prislista", "Pris", "Pålägg", "Valuta", "KopplaMot", "MomsMot", "Avrundas"};
    lists.forEachRow([&](const RegisterRow& row) {
        const auto setting = [&](std::string_view field) { return lists.textOf(row, lists.columnNamed(field)); };
        const std::string list = setting("Prislista");
        std::string vat = setting("MomsMot");
        if (vat == "0") vat.clear();
        table.rows.push_back({list, text(product, list + "Utpris"), text(product, list + "Pålägg"), setting("Valuta"),
                              coupling(setting("KopplaMot"), setting("MomsMot")), vat, setting("Avrundas")});
        return true;
    });
}

void CardReader::addSupplierPrices() {
    constexpr std::string_view kColumns[] = {"Leverantör", "Levartikelnr", "Datum", "InprisFöreRabatt",
                                             "RabattKod",  "Rabatt",       "Inpris"};
    CardTable& table = addTable("supplier_prices", text::registers::kSupplierPrices);
    for (const std::string_view column : kColumns) {
        table.fields.emplace_back(column);
        table.headings.push_back(caption("Levprislista", column));
    }
    for (const auto rows = rowsOf("Levprislista", "Produktnr", card_.number, "Leverantör"); !rows->eof();
         rows->moveNext()) {
        remember("Levprislista", *rows);
        std::vector<std::string> cells;
        for (const std::string_view column : kColumns) cells.push_back(text(*rows, column));
        table.rows.push_back(std::move(cells));
    }
}

void CardReader::addAlternatives() {
    CardTable& table = addTable("alternative_numbers", text::registers::kAlternatives);
    table.fields = {"Nummer", "Rubrik", "Alternativnr"};
    table.headings = {caption("Prodaltprodnr", "Nummer"), caption("Prodaltrubrik", "Rubrik"),
                      caption("Prodaltprodnr", "Alternativnr")};
    std::map<std::string, std::string> headings;
    for (const auto rows =
             sql_.SQLÖppnaRs("SELECT Nummer, Rubrik FROM Prodaltrubrik", RecordsetType::Snapshot, options::kReadOnly);
         !rows->eof(); rows->moveNext()) {
        headings[text(*rows, "Nummer")] = text(*rows, "Rubrik");
    }
    for (const auto rows = rowsOf("Prodaltprodnr", "Produktnr", card_.number, "Nummer"); !rows->eof();
         rows->moveNext()) {
        remember("Prodaltprodnr", *rows);
        const std::string number = text(*rows, "Nummer");
        table.rows.push_back({number, headings[number], text(*rows, "Alternativnr")});
    }
}

void CardReader::addDocuments() {
    CardTable& table = addTable("documents", text::registers::kDocuments);
    table.fields = {"Nummer", "Dokument"};
    table.headings = {caption("Proddokument", "Nummer"), caption("Proddokument", "Dokument")};
    for (const auto rows = rowsOf("Proddokument", "Produktnr", card_.number, "Nummer"); !rows->eof();
         rows->moveNext()) {
        remember("Proddokument", *rows);
        table.rows.push_back({text(*rows, "Nummer"), text(*rows, "Dokument")});
    }
}

}  // namespace

std::optional<ProductCard> productCard(SqlLayer& sql, LanguageTexts& texts, std::string_view number) {
    return CardReader(sql, texts).read(number);
}

}  // namespace kolmera
