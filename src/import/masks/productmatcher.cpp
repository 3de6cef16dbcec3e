#include "import/masks/productmatcher.h"

#include "db/conversions.h"
#include "platform/lettercase.h"

namespace kolmera {

using Outcome = ProductMatch::Outcome;

namespace {

bool isAlternativeKey(int keyTarget) {
    return keyTarget != target("Nummer") && keyTarget != target("Söknamn") && keyTarget != target("Levartikelnr");
}

}  // namespace

ProductMatcher::ProductMatcher(const LoadedMask& mask, std::string_view jobSupplier, SqlLayer& sql,
                               std::unique_ptr<Recordset>& products, PassedOver& passedOver)
    : mask_(mask), jobSupplier_(jobSupplier), sql_(sql), products_(products), passedOver_(passedOver), priceList_(sql) {
    if (isAlternativeKey(mask.keyTarget)) {
        alternatives_ = sql.SQLÖppnaTabell("Prodaltprodnr", "Alternativnr", options::kReadOnly, false);
    }
    if (mask.UppdatLev && mask.keyTarget == target("Levartikelnr")) {
        priceList_.StrSpecKolumner = "Produktnr";
        priceList_.OpenRs("Levprislista", options::kReadOnly);
        priceList_.StrIndex("Levartikelnr");
    }
}

std::string_view ProductMatcher::index(int keyTarget) {
    switch (keyTarget) {
        case target("Söknamn"):
            return "Söknamn";
        case target("Levartikelnr"):
            return "Levartikelnr";
        default:
            return "Nummer";
    }
}

ProductMatch ProductMatcher::match(const EntryList& entries) {
    ProductMatch match;
    match.key = entries.text(mask_.key);
    match.supplier = recordSupplier(entries);
    switch (mask_.keyTarget) {
        case target("Nummer"):
            match.outcome = byNumber(match.key);
            break;
        case target("Söknamn"):
            match.outcome = bySearchName(match.key);
            break;
        case target("Levartikelnr"):
            match.outcome = byArticle(match.key, match.supplier);
            break;
        default:
            match.outcome = byAlternative(match.key);
    }
    match.productNumber = productNumber_;
    if (match.key.empty()) match.skipped = Remark::NoKey;
    return match;
}

/// Only records that are found by the supplier's article number may name another supplier than the job's.
std::string_view ProductMatcher::recordSupplier(const EntryList& entries) const {
    if (mask_.keyTarget != target("Levartikelnr")) return jobSupplier_;
    const std::string_view own = entries.text(mask_.supplier);
    return own.empty() ? std::string_view(jobSupplier_) : own;
}

Outcome ProductMatcher::foundOr(bool found) const {
    if (found) return Outcome::Edit;
    return mask_.SkapaNya ? Outcome::Add : Outcome::Skip;
}

Outcome ProductMatcher::byNumber(std::string_view key) {
    if (key.empty()) return Outcome::Skip;
    return foundOr(!sql_.SQLSökIngenTräff(products_, "=", keys_.of(key)));
}

Outcome ProductMatcher::bySearchName(std::string_view key) {
    sql_.SQLSök(*products_, "=", keys_.of(key), passedOver_);
    return foundOr(!products_->noMatch());
}

Outcome ProductMatcher::byAlternative(std::string_view key) {
    sql_.SQLSök(*alternatives_, "=", keys_.of(key), passedOver_);
    if (alternatives_->noMatch()) return Outcome::Skip;
    const std::string number = TillText(alternatives_->value("Produktnr"), sql_.locale());
    // The product may have been deleted without its alternative numbers.
    return sql_.SQLSökIngenTräff(products_, "=", keys_.of(number)) ? Outcome::Skip : Outcome::Edit;
}

Outcome ProductMatcher::byArticle(std::string_view key, std::string_view supplier) {
    // A search that selects anew: the rows are walked, and a server's open recordset has those of its opening only.
    const bool found = !sql_.SQLSökIngenTräff(products_, "=", keys_.of(key));
    // Such a mask tries the first product with the article number only, then the price list.
    if (mask_.UppdatLev && !mask_.SkapaNya && !(found && isOf(supplier))) return throughPriceList(key, supplier);
    return foundOr(found && walkToSupplier(key, supplier));
}

Outcome ProductMatcher::throughPriceList(std::string_view key, std::string_view supplier) {
    priceList_.SQLSeek("=", keys_.of(key, supplier));
    if (priceList_.BoolNoMatch) return Outcome::Skip;
    productNumber_ = priceList_.TxtFmtRs("Produktnr");
    return Outcome::PriceListOnly;
}

bool ProductMatcher::isOf(std::string_view supplier) {
    return equalNoCase(textOf(products_->value(ordinal(kProdukt, "Leverantör"))), supplier);
}

bool ProductMatcher::walkToSupplier(std::string_view key, std::string_view supplier) {
    while (!products_->eof() && equalNoCase(textOf(products_->value(ordinal(kProdukt, "Levartikelnr"))), key)) {
        if (isOf(supplier)) return true;
        products_->moveNext();
    }
    return false;
}

}  // namespace kolmera
