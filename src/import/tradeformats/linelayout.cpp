#include "import/tradeformats/linelayout.h"

#include "platform/lettercase.h"

namespace kolmera {
namespace {

std::string_view untrimmed(std::string_view line, Columns columns) {
    const auto before = static_cast<std::size_t>(columns.first - 1);
    if (before >= line.size()) return {};
    return line.substr(before, static_cast<std::size_t>(columns.last) - before);
}

}  // namespace

std::string_view cut(std::string_view line, Columns columns) { return trimmed(untrimmed(line, columns)); }

Digits cutDigits(std::string_view line, Columns columns, double unitsOfOne) {
    const std::string_view text = cut(line, columns);
    if (text.empty()) return {};
    // The rest of the digits is missing: 0001255 of 00012550 would be another price.
    if (line.size() < static_cast<std::size_t>(columns.last)) return {.state = Digits::State::Unreadable};
    std::int64_t number = 0;
    for (const char character : text) {
        if (character < '0' || character > '9') return {.state = Digits::State::Unreadable};
        number = number * 10 + (character - '0');
    }
    return {.state = Digits::State::Whole, .number = static_cast<double>(number) / unitsOfOne};
}

}  // namespace kolmera
