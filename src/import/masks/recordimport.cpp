#include "import/masks/recordimport.h"

#include "db/conversions.h"
#include "platform/attempt.h"
#include "pricing/changedate.h"

namespace kolmera {
namespace {

using Outcome = ProductMatch::Outcome;

}  // namespace

RecordImport::RecordImport(const LoadedMask& mask, std::string_view jobSupplier, ImportContext& context,
                           MaskTables& tables, RunSummary& summary)
    : mask_(mask),
      sql_(context.state.sql),
      summary_(summary),
      report_(summary.report),
      trace_(context.trace),
      Idag_(context.Idag),
      products_(tables.products),
      Vägtinpris_(products_->ordinal("Vägtinpris")),
      Prisändrdat_(products_->ordinal("Prisändrdat")),
      Förändringsdatum_(products_->ordinal(kFörändringsdatum)),
      settings_(columnSettings(*tables.settings, *tables.settings2, context.Idag, context.state.locale, report_)),
      prices_(sql_, report_, Idag_, settings_.PPrisDatumBM, context.trace),
      columns_(mask, *products_, settings_, prices_, report_, context.trace),
      defaults_(*tables.settings, *tables.settings2, context.state.locale, report_),
      matcher_(mask, jobSupplier, sql_, products_, report_),
      coupling_(mask.hasPurchasePrice(), sql_, prices_, report_, context.trace) {
    prices_.Init();
    if (mask.hasAlternatives) {
        alternatives_.emplace(mask, sql_, std::move(tables.alternatives), summary);
    }
    if (mask.UppdatLev) {
        priceList_.emplace(mask, sql_, std::move(tables.priceList), prices_.InprisDec, Idag_, summary, context.trace);
    }
    if (mask.document.present()) documents_.emplace(mask, sql_, Idag_, summary);
}

void RecordImport::import(const EntryList& entries, std::int64_t number) {
    ++summary_.records;
    report_.at(number);
    if (trace_) trace_->record(number);
    report_.about(entries.text(mask_.key));
    const ProductMatch found = match(entries);
    if (found.outcome == Outcome::Skip) return report_.remark(found.skipped);
    if (found.key.empty()) report_.remark(Remark::EmptyKey);
    if (!write(found, entries)) return report_.remark(Remark::NotSaved);
    ++summary_.used;
}

void RecordImport::remember(const Memory& memory) {
    productNumber_ = memory.productNumber;
    coupling_.currency(memory.currency);
    prices_.currency(memory.listCurrency);
}

ProductMatch RecordImport::match(const EntryList& entries) {
    ProductMatch found;
    found.skipped = Remark::NotSaved;
    attempt(report_, "Produkt", [&] { found = matcher_.match(entries); });
    return found;
}

bool RecordImport::write(const ProductMatch& match, const EntryList& entries) {
    return match.outcome == Outcome::PriceListOnly ? importPriceListOnly(match, entries)
                                                   : importProduct(match, entries);
}

bool RecordImport::importProduct(const ProductMatch& match, const EntryList& entries) {
    bool newProduct = match.outcome == Outcome::Add;
    std::optional<double> discount;
    if (!saveProduct(newProduct, entries, discount)) return false;
    takeProductNumber();
    if (trace_) trace_->product(productNumber_);
    summary_.productSaved(productNumber_, newProduct);
    if (columns_.changesPrices()) coupling_.couple(*products_);
    if (alternatives_) alternatives_->write(productNumber_, entries);
    if (priceList_) {
        const auto articleNumber = [this] {
            return std::string(textOf(products_->value(ordinal(kProdukt, "Levartikelnr"))));
        };
        priceList_->write(productNumber_, match.supplier, articleNumber, discount, entries);
    }
    if (documents_) documents_->write(productNumber_, entries);
    return true;
}

bool RecordImport::importPriceListOnly(const ProductMatch& match, const EntryList& entries) {
    const auto articleNumber = [&match] { return std::string(match.key); };
    if (trace_) trace_->product(match.productNumber);
    return priceList_->write(match.productNumber, match.supplier, articleNumber, std::nullopt, entries);
}

/// `newProduct` becomes false when another run has added the product since it was searched for.
bool RecordImport::saveProduct(bool& newProduct, const EntryList& entries, std::optional<double>& discount) {
    Recordset& product = *products_;
    if (!attempt(report_, "Produkt", [&] { newProduct ? product.addNew() : product.edit(); })) return false;
    const WrittenColumns written = columns_.write(product, entries, newProduct);
    discount = written.discount;
    if (newProduct) completeNewProduct();
    attempt(report_, "Produkt.Förändringsdatum", [&] { SättÄndringsdatum(product, Förändringsdatum_, Idag_); });
    if (written.setPriceDate) attempt(report_, "Produkt.Prisändrdat", [&] { product.set(Prisändrdat_, Idag_); });
    const bool added = newProduct;
    const bool saved = attempt(report_, "Produkt", [&] {
        try {
            product.update();
            if (newProduct) product.moveToModified();
        } catch (const PlatformError& error) {
            const bool duplicate = newProduct && error.number() == errors::kDuplicateKey && !error.endsRun();
            if (!duplicate || matcher_.match(entries).outcome != Outcome::Edit) throw;
            newProduct = false;
        }
    });
    return added && !newProduct ? saveProduct(newProduct, entries, discount) : saved;
}

void RecordImport::completeNewProduct() {
    Recordset& product = *products_;
    defaults_.SättNyProduktStandard(product);
    if (!mask_.hasPurchasePrice()) return;
    attempt(report_, "Produkt.Vägtinpris", [&] {
        if (TillDbl(product.value(Vägtinpris_), sql_.locale()) != 0) return;
        product.set(Vägtinpris_, product.value(ordinal(kProdukt, "Inpris")));
    });
}

void RecordImport::takeProductNumber() {
    attempt(report_, "Produkt.Nummer", [&] { productNumber_ = textOf(products_->value(ordinal(kProdukt, "Nummer"))); });
}

}  // namespace kolmera
