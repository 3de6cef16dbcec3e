#include "import/pricelistwriter.h"

#include "db/conversions.h"
#include "import/fieldconversion.h"
#include "platform/attempt.h"

namespace kolmera {

PriceListWriter::Columns::Columns(const Recordset& priceList)
    : Produktnr(priceList.ordinal("Produktnr")),
      Leverantör(priceList.ordinal("Leverantör")),
      Levartikelnr(priceList.ordinal("Levartikelnr")),
      Datum(priceList.ordinal("Datum")),
      Rabatt(priceList.ordinal("Rabatt")),
      RabattKod(priceList.ordinal("RabattKod")),
      Inpris(priceList.ordinal("Inpris")),
      InprisFöreRabatt(priceList.ordinal("InprisFöreRabatt")),
      Utpris{} {
    for (std::size_t level = 1; level < Utpris.size(); ++level) {
        Utpris[level] = priceList.ordinal("Utpris" + std::to_string(level));
    }
}

PriceListWriter::PriceListWriter(const LoadedMask& mask, SqlLayer& sql, std::unique_ptr<Recordset> priceList,
                                 std::uint8_t InprisDec, Date Idag, RunReport& report)
    : mask_(mask),
      sql_(sql),
      priceList_(std::move(priceList)),
      report_(report),
      letters_(sql, report),
      columns_(*priceList_),
      InprisDec_(InprisDec),
      Idag_(Idag) {
    for (const FieldDef& field : priceList_->fields()) names_.push_back("Levprislista." + field.name);
}

bool PriceListWriter::write(std::string_view productNumber, std::string_view supplier,
                            const std::function<std::string()>& articleNumber, std::optional<double> discount,
                            const EntryList& entries) {
    const auto writeRow = [&] {
        startRow(productNumber, supplier, articleNumber);
        set(columns_.Datum, dateOf(entries));
        if (mask_.hasPurchasePrice()) writePurchasePrice(supplier, discount, entries);
        for (std::size_t level = 1; level < mask_.prices.size(); ++level) {
            const Source& price = mask_.prices[level];
            if (price.present()) set(columns_.Utpris[level], number(columns_.Utpris[level], price, entries));
        }
        priceList_->update();
    };
    return attempt(report_, "Levprislista", [&] { searchAgainOnDuplicate(writeRow); });
}

void PriceListWriter::startRow(std::string_view productNumber, std::string_view supplier,
                               const std::function<std::string()>& articleNumber) {
    if (!sql_.SQLSökIngenTräff(priceList_, "=", keys_.of(productNumber, supplier))) {
        priceList_->edit();
        return;
    }
    priceList_->addNew();
    set(columns_.Produktnr, std::string(productNumber));
    set(columns_.Leverantör, std::string(supplier));
    set(columns_.Levartikelnr, articleNumber());
}

void PriceListWriter::set(int column, Value value) {
    attempt(report_, names_[static_cast<std::size_t>(column)], [&] { priceList_->set(column, std::move(value)); });
}

void PriceListWriter::writePurchasePrice(std::string_view supplier, std::optional<double> discount,
                                         const EntryList& entries) {
    const double gross = number(columns_.Inpris, mask_.prices[0], entries);
    const double net = mask_.discountCode.present() ? netByLetter(gross, supplier, entries.text(mask_.discountCode))
                                                    : netByDiscount(gross, discount, entries);
    set(columns_.Inpris, roundDecimals(net, InprisDec_));
    set(columns_.InprisFöreRabatt, gross);
}

/// Without a discount code: by the record's discount, or by the one that the row has.
double PriceListWriter::netByDiscount(double gross, std::optional<double> discount, const EntryList& entries) {
    // A discount of 0 may be a text that is no number, which the product's column did not take.
    const bool unsure = !discount || *discount == 0;
    if (unsure && mask_.discount.present()) {
        const double own = number(columns_.Rabatt, mask_.discount, entries);
        if (!discount) discount = own;
    }
    if (discount) set(columns_.Rabatt, *discount);
    return gross - gross * TillDbl(priceList_->value(columns_.Rabatt), sql_.locale()) / 100;
}

double PriceListWriter::netByLetter(double gross, std::string_view supplier, std::string_view code) {
    const double fraction = letters_.BeräknaRabattbrev(supplier, code);
    set(columns_.Rabatt, roundDecimals(fraction * 100, 2));
    set(columns_.RabattKod, std::string(code));
    return gross - gross * fraction;
}

Date PriceListWriter::dateOf(const EntryList& entries) const {
    if (!mask_.date.present()) return Idag_;
    return TolkaDatum(entries.text(mask_.date), Idag_, sql_.locale()).value_or(Idag_);
}

double PriceListWriter::number(int column, const Source& source, const EntryList& entries) {
    const std::string_view text = entries.text(source);
    const std::optional<double> number = readNumber(text, source.Division, sql_.locale());
    if (number) return *number;
    const std::string& name = names_[static_cast<std::size_t>(column)];
    if (!text.empty()) {
        report_.zero(Remark::NotNumber, source.entry, name, text);
    } else if (column != columns_.Rabatt) {
        report_.zero(Remark::MissingPrice, source.entry, name, text);
    }
    return 0;
}

}  // namespace kolmera
