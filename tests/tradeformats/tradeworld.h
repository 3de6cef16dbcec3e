#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "support/world.h"

namespace kolmera::test {

/// A world whose job is a trade format: suppliers 1010 (code AB, the main one) and 1020 (code CD), prices with two
/// decimals.
class TradeWorld : public World {
  public:
    explicit TradeWorld(const std::string& jobName) {
        job.name = jobName;
        job.mask.clear();
        setting("PDecInpris", std::int64_t{2});
        setting("PDecUtpris", std::int64_t{2});
        add("Leverantör", {{"Nummer", "1010"}, {"Söknamn", "Grossisten"}});
        add("Leverantör", {{"Nummer", "1020"}, {"Söknamn", "Lyskällan"}});
        coupling("AB", "1010", true);
        coupling("CD", "1020");
    }
};

/// A line with texts at columns counted from 1, as on the trade's sheet.
inline std::string line(std::initializer_list<std::pair<std::size_t, std::string_view>> texts) {
    std::string line;
    for (const auto& [column, text] : texts) {
        if (line.size() < column - 1 + text.size()) line.resize(column - 1 + text.size(), ' ');
        line.replace(column - 1, text.size(), text);
    }
    return line + "\r\n";
}

/// How many rows `World::rows` has found.
inline std::ptrdiff_t count(const std::string& rows) { return std::ranges::count(rows, '\n'); }

}  // namespace kolmera::test
