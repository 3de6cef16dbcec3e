#include "import/masks/columnwriter.h"

#include "db/conversions.h"
#include "import/rows/fieldconversion.h"
#include "platform/encodings.h"
#include "pricing/rounding.h"

namespace kolmera {
namespace {

constexpr int kInpris = ordinal(kProdukt, "Inpris");
constexpr int kRabatt = ordinal(kProdukt, "Rabatt");

bool isVatRule(char TypKod) { return TypKod >= '1' && TypKod <= '3'; }

bool changesPrice(int ordinal) { return ordinal == kInpris || ordinal == kRabatt || priceListOf(ordinal) != 0; }

}  // namespace

ColumnSettings columnSettings(Recordset& settings, Recordset& settings2, Date Idag, const Locale& locale,
                              PassedOver& passedOver) {
    ColumnSettings read;
    read.Idag = Idag;
    read.locale = locale;
    for (std::size_t rate = 0; rate < read.vatRates.size(); ++rate) {
        const std::string column = std::to_string(rate + 1) + "OMomsproc";
        attempt(passedOver, "Syinställningar." + column,
                [&] { read.vatRates[rate] = TillDbl(settings.value(column), locale); });
    }
    attempt(passedOver, "Syinställningar2.PPrisDatumBM", [&] {
        const std::int32_t mask = TillLng(settings2.value("PPrisDatumBM"), locale);
        if (mask != 0) read.PPrisDatumBM = mask;
    });
    return read;
}

ColumnWriter::ColumnWriter(const LoadedMask& mask, const Recordset& product, const ColumnSettings& settings,
                           const PrisClsRoundInprisOUtpris& prices, RunReport& report, PriceTrace* trace)
    : prices_(prices), report_(report), trace_(trace), Idag_(settings.Idag), locale_(settings.locale) {
    const auto& fields = product.fields();
    for (const Relation& relation : mask.relations) {
        const auto ordinal = static_cast<std::size_t>(columnOf(relation.Mål));
        if (ordinal == 0 || ordinal >= fields.size()) continue;
        Column column = this->column(relation, fields[ordinal], settings);
        const bool number = column.kind == Kind::Number;
        if (number ? relation.TypKod == 'I' : column.action == Action::NoWrite) continue;
        if (number) {
            column.dating = datingOf(column.ordinal, mask.date.present(), settings.PPrisDatumBM);
            column.discount = column.ordinal == kRabatt;
            column.price = changesPrice(column.ordinal) && !column.discount;
            changesPrices_ = changesPrices_ || changesPrice(column.ordinal);
        }
        columns_.push_back(std::move(column));
    }
}

ColumnWriter::Kind ColumnWriter::kindOf(FieldType type) {
    switch (type) {
        case FieldType::Text:
            return Kind::Text;
        case FieldType::Memo:
            return Kind::Memo;
        case FieldType::Boolean:
            return Kind::Boolean;
        case FieldType::Date:
            return Kind::Date;
        case FieldType::Single:
        case FieldType::Double:
            return Kind::Number;
        default:
            return Kind::Other;
    }
}

ColumnWriter::Action ColumnWriter::actionOf(Kind kind, char TypKod) {
    if (TypKod == 'U') return Action::Write;
    if (TypKod == 'S') return Action::WriteIfUnset;
    return kind == Kind::Number && isVatRule(TypKod) ? Action::Write : Action::NoWrite;
}

ColumnWriter::Column ColumnWriter::column(const Relation& relation, const FieldDef& field,
                                          const ColumnSettings& settings) const {
    Column column;
    column.source = {relation.Källa, relation.Division, relation.TypKod};
    column.ordinal = columnOf(relation.Mål);
    column.kind = kindOf(field.type);
    column.action = actionOf(column.kind, relation.TypKod);
    column.size = static_cast<std::size_t>(field.size);
    if (isVatRule(relation.TypKod)) column.vatRate = settings.vatRates[static_cast<std::size_t>(relation.TypKod - '1')];
    column.name = "Produkt." + field.name;
    return column;
}

/// Whether a price that a record brings dates the product: never when the file brings the date itself.
ColumnWriter::Dating ColumnWriter::datingOf(int ordinal, bool fileHasDate, std::int32_t PPrisDatumBM) const {
    constexpr std::int32_t kPurchasePriceBit = 2;
    if (fileHasDate) return Dating::None;
    if (ordinal == kInpris) return (PPrisDatumBM & kPurchasePriceBit) != 0 ? Dating::Always : Dating::None;
    const int list = priceListOf(ordinal);
    return list != 0 && daterarPris(PPrisDatumBM, list) ? Dating::OnLevelChange : Dating::None;
}

WrittenColumns ColumnWriter::write(Recordset& product, const EntryList& entries, bool newProduct) {
    WrittenColumns written;
    for (const Column& column : columns_) {
        const std::string_view entry = entries.text(column.source);
        if (column.kind == Kind::Number) {
            writeNumber(column, product, entry, newProduct, written);
            continue;
        }
        attempt(report_, column.name, [&] {
            if (column.action == Action::WriteIfUnset && !unset(column.kind, product.value(column.ordinal))) return;
            product.set(column.ordinal, converted(column, entry));
        });
    }
    return written;
}

void ColumnWriter::writeNumber(const Column& column, Recordset& product, std::string_view entry, bool newProduct,
                               WrittenColumns& written) {
    const std::optional<double> number = readNumber(entry, column.source.Division, locale_);
    double value = number.value_or(0);
    value += value * column.vatRate / 100;
    PriceTrace* trace = column.price || column.discount ? trace_ : nullptr;
    if (trace) tellNumber(column, entry, number, value);
    // Compares with the price before the write.
    if (datesPrice(column, product, value, newProduct)) written.setPriceDate = true;
    if (column.discount) written.discount = value;
    if (column.action == Action::NoWrite) return;
    attempt(report_, column.name, [&] {
        if (column.action == Action::WriteIfUnset && !unset(column.kind, product.value(column.ordinal))) {
            if (trace) trace->step({.step = PriceStep::Kept, .value = TillDbl(product.value(column.ordinal), locale_)});
            return;
        }
        const double rounded = prices_.Avrunda(column.ordinal, value);
        product.set(column.ordinal, rounded);
        if (trace) trace->written(column.name, rounded);
        if (number) return;
        if (!entry.empty()) {
            report_.zero(Remark::NotNumber, column.source.entry, column.name, entry);
        } else if (column.price) {
            report_.zero(Remark::MissingPrice, column.source.entry, column.name, entry);
        }
    });
}

void ColumnWriter::tellNumber(const Column& column, std::string_view entry, std::optional<double> number,
                              double value) {
    const int decimals = impliedDecimals(column.source.Division);
    tellFileNumber(*trace_, column.name, std::to_string(column.source.entry), entry, number.value_or(0), decimals,
                   number.has_value());
    if (column.vatRate != 0) trace_->step({.step = PriceStep::Vat, .value = value, .operand = column.vatRate});
}

bool ColumnWriter::datesPrice(const Column& column, Recordset& product, double value, bool newProduct) {
    if (column.dating != Dating::OnLevelChange || newProduct) return column.dating != Dating::None;
    bool dates = false;
    attempt(report_, column.name, [&] {
        // A level with a markup is coupled: whether its price changes is seen when it is recomputed.
        const double markup = TillDbl(product.value(påläggOrdinal(priceListOf(column.ordinal))), locale_);
        dates = markup == 0 && !NästanLika(TillDbl(product.value(column.ordinal), locale_), value);
    });
    return dates;
}

Value ColumnWriter::converted(const Column& column, std::string_view entry) const {
    switch (column.kind) {
        case Kind::Text:
            return std::string(firstCharacters(entry, column.size));
        case Kind::Memo:
            return memoText(entry);
        case Kind::Boolean:
            return TolkaJaNej(entry);
        case Kind::Date:
            // No date is an empty text, which the column refuses: the old date stays.
            if (const auto date = TolkaDatum(entry, Idag_, locale_)) return *date;
            return std::string();
        default:
            return std::string(entry);
    }
}

bool ColumnWriter::unset(Kind kind, const Value& value) const {
    switch (kind) {
        case Kind::Boolean:
            return !TillBool(value, locale_);
        case Kind::Number:
            return TillDbl(value, locale_) == 0;
        default:
            // A stored 0 of a whole number or an amount of money is a value.
            return isNull(value) || (std::holds_alternative<std::string>(value) && textOf(value).empty());
    }
}

}  // namespace kolmera
