#include "pricing/clsprisavrund.h"

#include <fmt/format.h>

#include <limits>

#include "db/conversions.h"
#include "platform/lettercase.h"
#include "pricing/rounding.h"

namespace kolmera {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kNotCoupled = "-";
constexpr std::string_view kInPrice = "I";
constexpr std::string_view kWeightedInPrice = "V";
constexpr std::string_view kListPlusVat = "M";

struct TextSetting {
    std::string_view column;
    void (ClsPrisAvrund::*write)(std::string_view);
};

constexpr TextSetting kTexts[] = {{"PPrisAvrund", &ClsPrisAvrund::StrInställning},
                                  {"PUtprisValuta", &ClsPrisAvrund::StrPUtprisValuta},
                                  {"PUtprisKopplaMot", &ClsPrisAvrund::StrPUtprisKopplaMot},
                                  {"PUtprisMomsMot", &ClsPrisAvrund::StrPUtprisMomsMot}};

struct FlagSetting {
    std::string_view column;
    bool ClsPrisAvrund::*flag;
};

constexpr FlagSetting kFlags[] = {{"PUtprisFaktorTG", &ClsPrisAvrund::BoolPUtprisFaktorTG},
                                  {"PAutoUppdatUtpris", &ClsPrisAvrund::BoolPAutoUppdatUtpris},
                                  {"PAutoUppdatValuta", &ClsPrisAvrund::BoolPAutoUppdatValuta},
                                  {"PFaktorValuta", &ClsPrisAvrund::BoolPFaktorValuta}};

constexpr bool isPriceList(int index) { return index >= 1 && index <= kPriceLists; }

/// The list that a coupling code names: one digit, 1 to 9.
std::optional<int> listOf(std::string_view code) {
    if (code.size() != 1 || code[0] < '1' || code[0] > '9') return std::nullopt;
    return code[0] - '0';
}

/// The column of a price list, as it is called in messages.
std::string columnOf(int index) { return fmt::format("Produkt.{}Utpris", index); }

/// Rounds as the range says, or to decimals when there is none.
double roundedBy(int range, double price, std::uint8_t decimals) {
    switch (range) {
        case 1:
            return roundDecimals(price, 1);
        case 2:
            return AvrundaHalvor(price);
        case 3:
            return roundHalfEven(price);
        case 4:
            return roundHalfEven(price / 10) * 10;
        case 5:
            return roundHalfEven(price / 100) * 100;
        default:
            return roundDecimals(price, decimals);
    }
}

}  // namespace

ClsPrisAvrund::ClsPrisAvrund(SqlLayer& sql, PassedOver& passedOver)
    : sql_(sql), passedOver_(passedOver), vatRates_(sql, passedOver) {}

// Settings.

void ClsPrisAvrund::InitInstRS(Recordset& DsetInställningar2) {
    const Locale& locale = sql_.locale();
    const auto load = [&](std::string_view column, auto&& store) {
        attempt(passedOver_, fmt::format("Syinställningar2.{}", column),
                [&] { store(DsetInställningar2.value(column)); });
    };
    for (const TextSetting& row : kTexts) {
        load(row.column, [&](const Value& value) { (this->*row.write)(TillText(value, locale)); });
    }
    UppdateraNumValues();
    for (const FlagSetting& row : kFlags) {
        load(row.column, [&](const Value& value) { this->*row.flag = TillBool(value, locale); });
    }
    load("PNoAvrundPLBM", [&](const Value& value) { PNoAvrundPLBM(TillLng(value, locale)); });
}

void ClsPrisAvrund::PNoAvrundPLBM(std::int32_t New_PNoAvrundPLBM) {
    for (int index = 1; index <= kPriceLists; ++index) list(index).noAvrund = (New_PNoAvrundPLBM & (1 << index)) != 0;
}

// Rounding.

void ClsPrisAvrund::StrInställning(std::string_view New_StrInställning) {
    std::vector<std::string> lines = split(New_StrInställning, kLineEnd);
    lines.resize(2 * ranges_.size());
    for (std::size_t place = 0; place < ranges_.size(); ++place) {
        ranges_[place].from = std::move(lines[2 * place]);
        ranges_[place].to = std::move(lines[2 * place + 1]);
    }
}

void ClsPrisAvrund::UppdateraNumValues() {
    for (Range& each : ranges_) {
        each.fromNum = numeric(each.from);
        each.toNum = numeric(each.to);
    }
}

double ClsPrisAvrund::numeric(std::string_view text) const { return sql_.locale().parseNumber(text).value_or(0); }

/// The first range that contains the price, from 1; 0 when none does.
int ClsPrisAvrund::rangeOf(double price) const {
    for (int index = 1; index <= kRanges; ++index) {
        if (range(index).fromNum <= price && price <= range(index).toNum) return index;
    }
    return 0;
}

double ClsPrisAvrund::UtförAvrundning(double DblPris, std::uint8_t StdDecimaler, int IntPLIdx) const {
    const bool byRange = !isPriceList(IntPLIdx) || !list(IntPLIdx).noAvrund;
    const int range = byRange ? rangeOf(DblPris) : 0;
    const double rounded = roundedBy(range, DblPris, StdDecimaler);
    if (trace) tellRounding(range, StdDecimaler, rounded);
    return rounded;
}

void ClsPrisAvrund::tellRounding(int range, std::uint8_t decimals, double rounded) const {
    if (range == 0) {
        return trace->step({.step = PriceStep::Decimals, .value = rounded, .operand = static_cast<double>(decimals)});
    }
    trace->step({.step = PriceStep::Range,
                 .value = rounded,
                 .operand = static_cast<double>(range),
                 .text = StrTom(range),
                 .source = StrFrom(range)});
}

// Coupling.

void ClsPrisAvrund::StrPUtprisKopplaMot(std::string_view New_StrPUtprisKopplaMot) {
    kopplaMot_.read(New_StrPUtprisKopplaMot);
    BoolKopplaMotFinns = false;
    for (int index = 1; index <= kPriceLists; ++index) {
        const std::string& code = kopplaMot_.of(index);
        if (code != kNotCoupled && code != kInPrice) BoolKopplaMotFinns = true;
    }
}

std::int16_t ClsPrisAvrund::MomsMotPL(int Index) const {
    const double number = roundHalfEven(leadingNumber(momsMot_.of(Index)));
    constexpr std::numeric_limits<std::int16_t> range;
    const bool fits = number >= range.min() && number <= range.max();
    return fits ? static_cast<std::int16_t>(number) : std::int16_t{0};
}

void ClsPrisAvrund::SetProdukt(Recordset& ProdTabell) {
    const Locale& locale = sql_.locale();
    for (int index = 1; index <= kPriceLists; ++index) {
        list(index).utpris = TillDbl(ProdTabell.value(utprisOrdinal(index)), locale);
        list(index).pålägg = TillSng(ProdTabell.value(påläggOrdinal(index)), locale);
    }
    attempt(passedOver_, "Produkt.Momskod", [&] {
        if (momskodOrdinal_ < 0) momskodOrdinal_ = ProdTabell.ordinal("Momskod");
        IntProdMomskod = static_cast<std::int16_t>(TillLng(ProdTabell.value(momskodOrdinal_), locale));
    });
}

bool ClsPrisAvrund::CheckFaktorTG(float SinPålägg, bool BoolNoMsgVidNoll) const {
    if (BoolNoMsgVidNoll && SinPålägg == 0) return true;
    if (!BoolPUtprisFaktorTG) return SinPålägg != 0;
    return SinPålägg != 0 && SinPålägg >= -99 && SinPålägg <= 99;
}

void ClsPrisAvrund::UtförPriskoppling(int IntPrisFrånUtpris, bool BoolFrånFaktor) {
    const int first = BoolFrånFaktor ? IntPrisFrånUtpris : IntPrisFrånUtpris + 1;
    for (int index = 1; index <= kPriceLists; ++index) {
        list(index).ändrad = index >= first && canBeRecomputed(index) && recompute(index);
    }
}

bool ClsPrisAvrund::canBeRecomputed(int index) const {
    const std::string& code = kopplaMot_.of(index);
    if (code == kNotCoupled) return tellWhyNot(index, PriceStep::NotCoupled);
    if (CheckFaktorTG(list(index).pålägg, false) || code == kListPlusVat) return true;
    return (!BoolPFaktorValuta && foreign(index)) || tellWhyNot(index, PriceStep::NoMarkup);
}

void ClsPrisAvrund::tellReason(int index, PriceStep reason) const {
    trace->column(columnOf(index));
    trace->step({.step = reason});
}

bool ClsPrisAvrund::recompute(int index) {
    const double base = baseOf(index);
    if (base == 0) return tellWhyNot(index, PriceStep::NoBase);
    if (trace) startFrom(*trace, columnOf(index), baseColumn(index), base);
    double price = newPrice(index, base);
    if (foreign(index)) {
        const ClsValuta& currency = lookUpCurrency(index);
        price = price / currency.Kurs * currency.Faktor;
        if (trace) tellCurrency(index, price);
    }
    list(index).utpris = UtförAvrundning(price, ByteDecimaler, index);
    return true;
}

/// What the new price of a list is computed from, in home currency.
double ClsPrisAvrund::baseOf(int index) {
    const std::string& code = kopplaMot_.of(index);
    if (code == kWeightedInPrice) return DblVägtIP;
    if (const auto other = listOf(code)) return homePrice(*other);
    if (code != kListPlusVat) return DblIPEfterRabatt;
    const int other = MomsMotPL(index);
    return isPriceList(other) ? homePrice(other) : 0;
}

/// The column that `baseOf` takes.
std::string ClsPrisAvrund::baseColumn(int index) const {
    const std::string& code = kopplaMot_.of(index);
    if (code == kWeightedInPrice) return "Produkt.Vägtinpris";
    if (const auto other = listOf(code)) return columnOf(*other);
    return code == kListPlusVat ? columnOf(MomsMotPL(index)) : std::string(PriceTrace::kNetCost);
}

void ClsPrisAvrund::tellCurrency(int index, double price) const {
    trace->step({.step = PriceStep::Rate,
                 .value = price,
                 .operand = Valuta->Kurs,
                 .second = static_cast<double>(Valuta->Faktor),
                 .text = valutaKod_.of(index)});
}

double ClsPrisAvrund::homePrice(int index) {
    const double price = list(index).utpris;
    if (!foreign(index)) return price;
    const ClsValuta& currency = lookUpCurrency(index);
    return price * currency.Kurs / currency.Faktor;
}

double ClsPrisAvrund::newPrice(int index, double base) {
    if (kopplaMot_.of(index) == kListPlusVat) {
        const auto rate = vatRates_.of(IntProdMomskod);
        const double price = rate ? base * *rate / 100 + base : base;
        if (trace) trace->step({.step = PriceStep::Vat, .value = price, .operand = rate.value_or(0)});
        return price;
    }
    const double pålägg = list(index).pålägg;
    if (!CheckFaktorTG(list(index).pålägg, false)) return base;
    const double price = BoolPUtprisFaktorTG ? PrisFrånTG(base, pålägg) : pålägg * base / 100 + base;
    const PriceStep step = BoolPUtprisFaktorTG ? PriceStep::Margin : PriceStep::Markup;
    if (trace) trace->step({.step = step, .value = price, .operand = pålägg});
    return price;
}

ClsValuta& ClsPrisAvrund::lookUpCurrency(int index) {
    if (!Valuta) {
        Valuta = std::make_unique<ClsValuta>(sql_, passedOver_);
        Valuta->InitSQLCashe();
    }
    Valuta->KursOchFaktor(valutaKod_.of(index), ClsValuta::kKundreskontra);
    return *Valuta;
}

}  // namespace kolmera
