#include "import/recordimport.h"

#include "db/conversions.h"
#include "platform/attempt.h"
#include "pricing/changedate.h"

namespace kolmera {
namespace {

using Outcome = ProductMatch::Outcome;

ColumnSettings columnSettings(MaskTables& tables, Date Idag, const Locale& locale, PassedOver& passedOver) {
    ColumnSettings settings;
    settings.Idag = Idag;
    settings.locale = locale;
    for (std::size_t rate = 0; rate < settings.vatRates.size(); ++rate) {
        const std::string column = std::to_string(rate + 1) + "OMomsproc";
        attempt(passedOver, "Syinställningar.OMomsproc",
                [&] { settings.vatRates[rate] = TillDbl(tables.settings->value(column), locale); });
    }
    attempt(passedOver, "Syinställningar2.PPrisDatumBM", [&] {
        const std::int32_t mask = TillLng(tables.settings2->value("PPrisDatumBM"), locale);
        if (mask != 0) settings.PPrisDatumBM = mask;
    });
    return settings;
}

}  // namespace

RecordImport::RecordImport(const LoadedMask& mask, std::string_view jobSupplier, ImportContext& context,
                           MaskTables& tables, RunSummary& summary)
    : mask_(mask),
      sql_(context.state.sql),
      port_(context.port),
      summary_(summary),
      Idag_(context.Idag),
      products_(tables.products),
      Vägtinpris_(products_->ordinal("Vägtinpris")),
      Prisändrdat_(products_->ordinal("Prisändrdat")),
      Förändringsdatum_(products_->ordinal(kFörändringsdatum)),
      settings_(columnSettings(tables, context.Idag, context.state.locale, context.port)),
      prices_(sql_, port_, Idag_, settings_.PPrisDatumBM),
      columns_(mask, *products_, settings_, prices_, port_, summary.notNumbers),
      defaults_(*tables.settings, *tables.settings2, context.state.locale, port_),
      matcher_(mask, jobSupplier, sql_, products_, port_),
      coupling_(mask.hasPurchasePrice(), sql_, prices_, port_) {
    prices_.Init();
    if (mask.hasAlternatives) {
        alternatives_.emplace(mask, storedAlternatives(sql_, std::move(tables.alternatives), port_), port_);
    }
    if (mask.UppdatLev) {
        priceList_.emplace(mask, sql_, std::move(tables.priceList), prices_.InprisDec, Idag_, port_);
    }
    if (mask.document.present()) documents_.emplace(mask, sql_, Idag_, port_);
}

void RecordImport::import(const EntryList& entries) {
    const ProductMatch found = match(entries);
    bool written = false;
    switch (found.outcome) {
        case Outcome::Skip:
            break;
        case Outcome::PriceListOnly:
            written = importPriceListOnly(found, entries);
            break;
        case Outcome::Edit:
        case Outcome::Add:
            written = importProduct(found, entries);
            break;
    }
    ++summary_.records;
    if (summary_.notNumbers.count > 0 && summary_.notNumbers.firstRecord == 0) {
        summary_.notNumbers.firstRecord = summary_.records;
    }
    if (!written) ++summary_.skipped;
}

ProductMatch RecordImport::match(const EntryList& entries) {
    ProductMatch found;
    attempt(port_, "Produkt: sökning", [&] { found = matcher_.match(entries); });
    return found;
}

bool RecordImport::importProduct(const ProductMatch& match, const EntryList& entries) {
    const bool newProduct = match.outcome == Outcome::Add;
    std::optional<double> discount;
    if (!saveProduct(newProduct, entries, discount)) return false;
    ++(newProduct ? summary_.newProducts : summary_.changed);
    takeProductNumber();
    if (columns_.changesPrices()) coupling_.couple(*products_);
    if (alternatives_) summary_.alternatives += alternatives_->write(productNumber_, entries);
    if (priceList_) {
        const auto articleNumber = [this] { return std::string(textOf(products_->value(target::kLevartikelnr))); };
        if (priceList_->write(productNumber_, match.supplier, articleNumber, discount, entries)) ++summary_.priceList;
    }
    if (documents_ && documents_->write(productNumber_, entries)) ++summary_.documents;
    return true;
}

bool RecordImport::importPriceListOnly(const ProductMatch& match, const EntryList& entries) {
    const auto articleNumber = [&match] { return std::string(match.key); };
    const bool written = priceList_->write(match.productNumber, match.supplier, articleNumber, std::nullopt, entries,
                                           &summary_.notNumbers);
    if (written) ++summary_.priceList;
    return written;
}

bool RecordImport::saveProduct(bool newProduct, const EntryList& entries, std::optional<double>& discount) {
    Recordset& product = *products_;
    if (!attempt(port_, "Produkt", [&] { newProduct ? product.addNew() : product.edit(); })) return false;
    const WrittenColumns written = columns_.write(product, entries, newProduct);
    discount = written.discount;
    if (newProduct) completeNewProduct();
    attempt(port_, "Produkt.Förändringsdatum", [&] { SättÄndringsdatum(product, Förändringsdatum_, Idag_); });
    if (written.setPriceDate) attempt(port_, "Produkt.Prisändrdat", [&] { product.set(Prisändrdat_, Idag_); });
    return attempt(port_, "Produkt", [&] {
        product.update();
        if (newProduct) product.moveToModified();
    });
}

void RecordImport::completeNewProduct() {
    Recordset& product = *products_;
    defaults_.SättNyProduktStandard(product);
    if (!mask_.hasPurchasePrice()) return;
    attempt(port_, "Produkt.Vägtinpris", [&] {
        if (TillDbl(product.value(Vägtinpris_), sql_.locale()) != 0) return;
        product.set(Vägtinpris_, product.value(target::kInpris));
    });
}

void RecordImport::takeProductNumber() {
    attempt(port_, "Produkt.Nummer", [&] { productNumber_ = textOf(products_->value(target::kNummer)); });
}

}  // namespace kolmera
