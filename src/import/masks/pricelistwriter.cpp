#include "import/masks/pricelistwriter.h"

#include "import/rows/fieldconversion.h"

namespace kolmera {

PriceListWriter::PriceListWriter(const LoadedMask& mask, SqlLayer& sql, std::unique_ptr<Recordset> priceList,
                                 std::uint8_t InprisDec, Date Idag, RunSummary& summary, PriceTrace* trace)
    : mask_(mask),
      sql_(sql),
      report_(summary.report),
      trace_(trace),
      prices_(sql, report_, std::move(priceList)),
      letters_(sql, report_, trace),
      InprisDec_(InprisDec),
      Idag_(Idag) {
    prices_.row.countIn(summary.priceList);
    prices_.row.tellTo(trace);
}

bool PriceListWriter::write(std::string_view productNumber, std::string_view supplier,
                            const std::function<std::string()>& articleNumber, std::optional<double> discount,
                            const EntryList& entries) {
    return prices_.row.change([&] {
        const bool exists = prices_.row.find(productNumber, supplier);
        prices_.row.begin(exists);
        if (!exists) prices_.name(productNumber, supplier, articleNumber());
        prices_.row.write(prices_.Datum, dateOf(entries));
        if (mask_.hasPurchasePrice()) writePurchasePrice(supplier, discount, entries);
        for (std::size_t list = 1; list < mask_.prices.size(); ++list) {
            const Source& price = mask_.prices[list];
            const Column& column = prices_.Utpris(list);
            if (price.present()) prices_.row.write(column, number(column, price, entries));
        }
        prices_.row.update();
    });
}

void PriceListWriter::writePurchasePrice(std::string_view supplier, std::optional<double> discount,
                                         const EntryList& entries) {
    const double gross = number(prices_.Inpris, mask_.prices[0], entries);
    const double net = mask_.discountCode.present() ? netByLetter(gross, supplier, entries.text(mask_.discountCode))
                                                    : netByDiscount(gross, discount, entries);
    const double rounded = roundDecimals(net, InprisDec_);
    if (trace_) {
        const auto decimals = static_cast<double>(InprisDec_);
        trace_->step({.step = PriceStep::Decimals, .value = rounded, .operand = decimals});
    }
    prices_.row.write(prices_.Inpris, rounded);
    prices_.row.write(prices_.InprisFöreRabatt, gross);
}

void PriceListWriter::tellDiscount(double gross, double percent, double net) {
    if (!trace_) return;
    startFrom(*trace_, prices_.Inpris.statement, prices_.InprisFöreRabatt.statement, gross);
    trace_->step({.step = PriceStep::Deduction, .value = net, .operand = percent});
}

/// Without a discount code: by the record's discount, or by the one that the row has.
double PriceListWriter::netByDiscount(double gross, std::optional<double> discount, const EntryList& entries) {
    // A discount of 0 may be a text that is no number, which the product's column did not take.
    const bool unsure = !discount || *discount == 0;
    if (unsure && mask_.discount.present()) {
        const double own = number(prices_.Rabatt, mask_.discount, entries);
        if (!discount) discount = own;
    }
    if (discount) prices_.row.write(prices_.Rabatt, *discount);
    const double percent = prices_.row.number(prices_.Rabatt);
    const double net = gross - gross * percent / 100;
    tellDiscount(gross, percent, net);
    return net;
}

double PriceListWriter::netByLetter(double gross, std::string_view supplier, std::string_view code) {
    const double fraction = letters_.BeräknaRabattbrev(supplier, code);
    prices_.row.write(prices_.Rabatt, roundDecimals(fraction * 100, 2));
    prices_.row.write(prices_.RabattKod, code);
    const double net = gross - gross * fraction;
    tellDiscount(gross, fraction * 100, net);
    return net;
}

Date PriceListWriter::dateOf(const EntryList& entries) const {
    if (!mask_.date.present()) return Idag_;
    return TolkaDatum(entries.text(mask_.date), Idag_, sql_.locale()).value_or(Idag_);
}

double PriceListWriter::number(const Column& column, const Source& source, const EntryList& entries) {
    const std::string_view text = entries.text(source);
    const std::optional<double> number = readNumber(text, source.Division, sql_.locale());
    if (trace_) {
        const Column& told = column.ordinal == prices_.Inpris.ordinal ? prices_.InprisFöreRabatt : column;
        tellFileNumber(*trace_, told.statement, std::to_string(source.entry), text, number.value_or(0),
                       impliedDecimals(source.Division), number.has_value());
    }
    if (number) return *number;
    if (!text.empty()) {
        report_.zero(Remark::NotNumber, source.entry, column.statement, text);
    } else if (column.ordinal != prices_.Rabatt.ordinal) {
        report_.zero(Remark::MissingPrice, source.entry, column.statement, text);
    }
    return 0;
}

}  // namespace kolmera
