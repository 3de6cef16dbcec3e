#include "wholeruns/data/pricefiles.h"

#include <fmt/format.h>

#include <fstream>
#include <numeric>
#include <string>
#include <utility>

#include "platform/encodings.h"
#include "wholeruns/data/item.h"

namespace kolmera::bench {

namespace {

/// A text left-aligned in a field of `width` bytes of the code page.
std::string field(std::string_view text, std::size_t width, CodePage page) {
    std::string bytes = fromUtf8(text, page);
    bytes.resize(width, ' ');
    return bytes;
}

std::string digits(std::int64_t number, int width) { return fmt::format("{:0{}}", number, width); }

/// Hundredths with a decimal comma.
std::string price(std::int64_t hundredths) { return fmt::format("{},{:02}", hundredths / 100, hundredths % 100); }

std::string tabLine(const Item& item) {
    std::string line;
    for (const std::string& column : {item.number, item.newName(), item.article, price(item.newPurchase),
                                      item.discountCode, price(item.newSales), item.unit}) {
        line += fromUtf8(column, CodePage::Windows1252) + '\t';
    }
    return line + (holds(item.place, 80, 2) ? std::string() : item.ean) + "\r\n";
}

std::string fourLines(const Item& item) {
    return item.number + "\r\n" + fromUtf8(item.newName(), CodePage::Oem850) + "\r\n" + price(item.newPurchase) +
           "\r\n" + price(item.newSales) + "\r\n";
}

std::string fixedRecord(const Item& item) {
    constexpr CodePage page = CodePage::Windows1252;
    return field(item.article, 20, page) + field(item.name2, 30, page) + digits(item.newPurchase, 9) +
           digits(item.newSales, 9) + field(item.unit, 4, page) + '\n';
}

/// The main supplier's price line; every tenth article has the second supplier's too, every fiftieth one of a supplier
/// that nobody knows.
std::string priceLines(const Item& item, std::size_t codeWidth) {
    const auto line = [&](std::string_view supplier, std::int64_t hundredths) {
        return fmt::format("2{}{:08} {:{}}\r\n", supplier, hundredths, item.discountCode, codeWidth);
    };
    std::string lines = line(kSupplierCode, item.newPurchase);
    if (item.place % 10 == 3) lines += line(kSecondCode, item.newPurchase + 100);
    if (item.place % 50 == 7) lines += line("ZZ", item.newPurchase);
    return lines;
}

std::string eioLines(const Item& item) {
    return fmt::format("10{}{}20240115\r\n{}", item.number, field(item.newName(), 25, CodePage::Windows1252),
                       priceLines(item, 4));
}

std::string rskLines(const Item& item) {
    constexpr CodePage page = CodePage::Oem850;
    return fmt::format("10{}{}{:3} {:4}\r\n{}", item.number, field(item.newName(), 27, page), item.unit, item.group,
                       priceLines(item, 6));
}

std::string finfoLine(const Item& item) {
    constexpr CodePage page = CodePage::Oem850;
    std::string line(336, ' ');
    const auto put = [&](std::size_t first, std::size_t width, std::string_view text) {
        line.replace(first - 1, width, field(text, width, page));
    };
    put(1, 10, holds(item.place, 81, 2) ? "ZZ" : kSupplierCode);
    put(11, 18, item.article);
    put(29, 18, item.number);
    put(65, 6, item.micronic);
    put(71, 15, item.ean);
    put(116, 35, item.newName());
    put(246, 8, digits(item.newPurchase, 8));
    put(254, 3, item.unit);
    put(264, 8, "20240115");
    put(296, 11, digits(static_cast<std::int64_t>(mixed(item.place, 7) % 50 + 1) * 1'000'000, 11));
    put(307, 3, "FP");
    put(329, 8, digits(holds(item.place, 82, 10) ? 0 : item.newSales, 8));
    return line + "\r\n";
}

std::string recordOf(const Item& item, Format format) {
    switch (format) {
        case Format::Tab:
            return tabLine(item);
        case Format::Lines:
            return fourLines(item);
        case Format::Fixed:
            return fixedRecord(item);
        case Format::Eio:
            return eioLines(item);
        case Format::Rsk:
            return rskLines(item);
        case Format::Finfo:
            return finfoLine(item);
    }
    return {};
}

}  // namespace

std::vector<std::uint64_t> placesInOrder(std::uint64_t records, bool shuffled) {
    std::vector<std::uint64_t> places(records);
    std::iota(places.begin(), places.end(), 0);
    if (shuffled) {
        for (std::uint64_t left = records; left > 1; --left)
            std::swap(places[left - 1], places[mixed(left, 90) % left]);
    }
    return places;
}

void writePriceFile(const std::filesystem::path& folder, Format format, const std::vector<std::uint64_t>& places) {
    std::ofstream file(folder / kPriceFile, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    if (format == Format::Rsk && !places.empty()) file << "0240115\r\n";
    for (const std::uint64_t place : places) file << recordOf(Item(place, format), format);
    if (format != Format::Rsk) return;

    std::ofstream groups(folder / kGroupFile, std::ios::binary);
    for (int group = 100; group < 1000; ++group) {
        groups << '0' << group << "Varugrupp 0" << group << (group % 10 == 0 ? " (ny)" : "") << "\r\n";
    }
}

}  // namespace kolmera::bench
