#include "suite/pricesettings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <functional>
#include <vector>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr int kRanges = 5;

std::string joined(const std::vector<std::string>& lines, std::string_view separator) {
    return fmt::format("{}", fmt::join(lines, separator));
}

void replaceBound(ClsPrisAvrund& prices, int line, std::string_view bound) {
    std::vector<std::string> lines = split(StrInställning(prices), kLineEnd);
    lines.at(static_cast<std::size_t>(line)) = bound;
    prices.StrInställning(joined(lines, kLineEnd));
    prices.UppdateraNumValues();
}

std::string listSetting(std::string_view standard, const std::function<std::string(int list)>& ofList) {
    std::vector<std::string> entries;
    for (int list = 1; list <= kPriceLists; ++list) {
        const std::string text = ofList(list);
        if (!text.empty() && text != standard) entries.push_back(fmt::format("{}={}", list, text));
    }
    return joined(entries, ";");
}

}  // namespace

void InitInstOBJ(ClsPrisAvrund& prices, ClsSyInställningar_2& ObjSyInställningar_2) {
    prices.StrInställning(ObjSyInställningar_2.TxtVal("PPrisAvrund"));
    prices.UppdateraNumValues();
    prices.StrPUtprisValuta(ObjSyInställningar_2.TxtVal("PUtprisValuta"));
    prices.StrPUtprisKopplaMot(ObjSyInställningar_2.TxtVal("PUtprisKopplaMot"));
    prices.StrPUtprisMomsMot(ObjSyInställningar_2.TxtVal("PUtprisMomsMot"));
    prices.BoolPUtprisFaktorTG = ObjSyInställningar_2.BoolVal("PUtprisFaktorTG");
    prices.BoolPAutoUppdatUtpris = ObjSyInställningar_2.BoolVal("PAutoUppdatUtpris");
    prices.BoolPAutoUppdatValuta = ObjSyInställningar_2.BoolVal("PAutoUppdatValuta");
    prices.BoolPFaktorValuta = ObjSyInställningar_2.BoolVal("PFaktorValuta");
    prices.PNoAvrundPLBM(ObjSyInställningar_2.LngVal("PNoAvrundPLBM"));
}

std::string StrInställning(const ClsPrisAvrund& prices) {
    std::vector<std::string> lines;
    for (int range = 1; range <= kRanges; ++range) {
        lines.push_back(prices.StrFrom(range));
        lines.push_back(prices.StrTom(range));
    }
    return joined(lines, kLineEnd);
}

void StrFrom(ClsPrisAvrund& prices, int Index, std::string_view New_StrFrom) {
    replaceBound(prices, 2 * (Index - 1), New_StrFrom);
}

void StrTom(ClsPrisAvrund& prices, int Index, std::string_view New_StrTom) {
    replaceBound(prices, 2 * (Index - 1) + 1, New_StrTom);
}

std::string StrPUtprisValuta(const ClsPrisAvrund& prices) {
    return listSetting(kHomeCurrency, [&](int list) { return prices.StrValuta(list); });
}

std::string StrPUtprisKopplaMot(const ClsPrisAvrund& prices) {
    return listSetting("I", [&](int list) { return prices.StrKopplaMot(list); });
}

std::string StrPUtprisMomsMot(const ClsPrisAvrund& prices) {
    return listSetting("0", [&](int list) { return std::to_string(prices.MomsMotPL(list)); });
}

double TBFrånPålägg(double pris, double pålägg) { return pris * (1 - 100 / (pålägg + 100)); }

double VändMoms(VatRates& rates, int IntMomskod, double DblPris) {
    const auto rate = rates.of(IntMomskod);
    return rate ? DblPris - TBFrånPålägg(DblPris, *rate) : DblPris;
}

}  // namespace kolmera
