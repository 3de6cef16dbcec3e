#include "wholeruns/data/item.h"

#include <array>
#include <cstdio>

#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera::bench {

namespace {

constexpr std::array kNouns = {"Kabel",         "Rörkoppling", "Strömbrytare", "Armatur", "Ventil",
                               "Kopplingsdosa", "Säkring",     "Böj 90°",      "Uttag",   "Kontaktor",
                               "Reläsockel",    "Skruv",       "Tätning",      "Givare"};
constexpr std::array kKinds = {"EKK",      "infälld",   "utanpåliggande", "IP44",
                               "syrafast", "förzinkad", "med lås",        "halogenfri"};
constexpr std::array kUnits = {"ST", "M", "FP", "RL", "ST", "ST"};

std::string text(const char* pattern, auto... values) {
    char room[80];
    std::snprintf(room, sizeof room, pattern, values...);
    return room;
}

/// Characters of a name in the price file: the company has the same, from an earlier one.
std::size_t nameWidth(Format format) {
    switch (format) {
        case Format::Eio:
            return 25;
        case Format::Rsk:
            return 27;
        case Format::Finfo:
            return 35;
        default:
            return 60;
    }
}

std::string nameOf(std::uint64_t place, Format format) {
    const char* noun = kNouns[mixed(place, 1) % kNouns.size()];
    const char* kind = kKinds[mixed(place, 2) % kKinds.size()];
    const std::string name = text("%s %s %d", noun, kind, static_cast<int>(mixed(place, 3) % 900 + 1));
    return std::string(trimmed(firstCharacters(name, nameWidth(format))));
}

std::string groupOf(const std::string& number, Format format) {
    if (format == Format::Finfo) return number.substr(0, 5);
    if (format == Format::Rsk) return text("0%.3s", number.c_str());
    return number.substr(0, 3);
}

}  // namespace

Item::Item(std::uint64_t at, Format format)
    : place(at),
      number(text("%07d", static_cast<int>(1'000'000 + at * 8 + mixed(at, 4) % 8))),
      article(format == Format::Eio || format == Format::Rsk
                  ? number
                  : text("%c%c-%s", 'A' + static_cast<int>(mixed(at, 5) % 26),
                         'A' + static_cast<int>(mixed(at, 6) % 26), number.c_str())),
      name(nameOf(at, format)),
      name2(text("Art %d, förp. om %d", static_cast<int>(at), static_cast<int>(mixed(at, 7) % 50 + 1))),
      unit(kUnits[mixed(at, 8) % kUnits.size()]),
      group(groupOf(number, format)),
      discountCode(text("R%03d", static_cast<int>(mixed(at, 9) % 300))),
      ean(text("73%011llu", static_cast<unsigned long long>(mixed(at, 10) % 100'000'000'000U))),
      micronic(text("%06d", static_cast<int>(mixed(at, 11) % 1'000'000))),
      purchase(static_cast<std::int64_t>(100 + mixed(at, 13) % 50'000 * (holds(at, 14, 10) ? 20 : 1))),
      sales(purchase * 17 / 10),
      newPurchase(holds(at, 15, 90) ? purchase * static_cast<std::int64_t>(97 + mixed(at, 16) % 12) / 100 : purchase),
      newSales(newPurchase * 17 / 10) {}

std::string Item::newName() const { return holds(place, 17, 5) ? name + " ny" : name; }

}  // namespace kolmera::bench
