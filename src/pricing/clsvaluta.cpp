#include "pricing/clsvaluta.h"

#include <algorithm>

#include "db/conversions.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr int kCodeColumn = 1;
constexpr std::array<std::string_view, 2> kRateColumns = {"Kundreskontra", "Levreskontra"};

/// A price file may name any number of currencies that do not exist.
constexpr std::size_t kMostRemembered = 100;

}  // namespace

ClsValuta::ClsValuta(SqlLayer& sql, PassedOver& passedOver) : sql_(sql), passedOver_(passedOver) {
    attempt(passedOver_, "Syvaluta",
            [this] { ValutaTabell = sql_.SQLÖppnaTabell("Syvaluta", "Kod", options::kReadOnly, true); });
}

void ClsValuta::KursOchFaktor(std::string_view StrKod, std::uint8_t Reskontra) {
    if (StrKod == kHomeCurrency) {
        Kurs = 1.0;
        Faktor = 1;
        return;
    }
    if (const Rates* rates = lookUp(StrKod)) {
        Kurs = rates->rates[Reskontra == kLevreskontra ? kLevreskontra : kKundreskontra];
        Faktor = rates->factor;
    }
    neverZero();
}

void ClsValuta::InitSQLCashe() {
    if (!sql_.ÄrSQLFöretag) return;
    cache_.clear();
    const bool complete = forEachCurrency([this] {
        cache_.push_back(readCurrent());
        cache_.back().code = upperCase(cache_.back().code);
    });
    cacheOn_ = complete && !cache_.empty();
}

bool ClsValuta::seek(std::string_view code) {
    if (!ValutaTabell) return false;
    const Value key = std::string(code);
    sql_.SQLSök(*ValutaTabell, "=", Keys(&key, 1), passedOver_);
    return !ValutaTabell->noMatch();
}

ClsValuta::Rates ClsValuta::readCurrent() {
    const Locale& locale = sql_.locale();
    Rates rates;
    rates.code = TillText(ValutaTabell->value(kCodeColumn), locale);
    for (std::size_t ledger = 0; ledger < kRateColumns.size(); ++ledger) {
        rates.rates[ledger] = TillDbl(ValutaTabell->value(kRateColumns[ledger]), locale);
    }
    rates.factor = TillLng(ValutaTabell->value("Faktor"), locale);
    return rates;
}

/// The rates of a currency, or nothing when the table does not have it.
const ClsValuta::Rates* ClsValuta::lookUp(std::string_view code) {
    if (cacheOn_) {
        const auto cached = std::ranges::find(cache_, upperCase(code), &Rates::code);
        return cached == cache_.end() ? nullptr : &*cached;
    }
    if (!ValutaTabell) return nullptr;
    const std::uint64_t stamp = sql_.FtgDB->stamp("Syvaluta");
    if (stamp != stamp_ || remembered_.size() >= kMostRemembered) remembered_.clear();
    stamp_ = stamp;
    auto known = std::ranges::find(remembered_, code, &Rates::code);
    if (known == remembered_.end()) {
        Rates rates{.code = {}, .found = false};
        if (seek(code)) attempt(passedOver_, "Syvaluta", [&] { rates = readCurrent(); });
        rates.code = code;  // as asked for: the index does not tell letter cases apart
        known = remembered_.insert(remembered_.end(), std::move(rates));
    }
    return known->found ? &*known : nullptr;
}

bool ClsValuta::forEachCurrency(const std::function<void()>& visit) {
    if (!ValutaTabell) return false;
    return attempt(passedOver_, "Syvaluta", [&] {
        if (ValutaTabell->bof() && ValutaTabell->eof()) return;
        for (ValutaTabell->moveFirst(); !ValutaTabell->eof(); ValutaTabell->moveNext()) visit();
    });
}

void ClsValuta::neverZero() {
    if (Faktor == 0) Faktor = 1;
    if (Kurs == 0) Kurs = 1.0;
}

}  // namespace kolmera
