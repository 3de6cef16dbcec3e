#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

namespace kolmera {

/// Columns of a line in the notation of the trades' own sheets: counted from 1, first and last included, in bytes of
/// the line before decoding. Each line's table stands once, in the file of its format.
struct Columns {
    std::string_view name;
    int first, last;
};

/// `last` of columns that reach to the end of the line.
inline constexpr int kToEndOfLine = std::numeric_limits<int>::max();

/// The columns of that name; a misspelt name does not compile.
consteval Columns columns(std::span<const Columns> layout, std::string_view name) {
    for (const Columns& candidate : layout) {
        if (candidate.name == name) return candidate;
    }
    throw "no such columns";
}

/// True when the columns stand in the order of the line and none is empty or named twice; for static_assert. They may
/// leave gaps, and one may be the beginning of another.
consteval bool wellFormed(std::span<const Columns> layout) {
    for (std::size_t i = 0; i < layout.size(); ++i) {
        if (layout[i].first < 1 || layout[i].last < layout[i].first) return false;
        if (i > 0 && layout[i].first <= layout[i - 1].last && layout[i].first != layout[i - 1].first) return false;
        for (std::size_t j = 0; j < i; ++j) {
            if (layout[j].name == layout[i].name) return false;
        }
    }
    return !layout.empty();
}

/// The bytes in these columns, without blanks and NUL at both ends; those that the line has, when it ends earlier.
std::string_view cut(std::string_view line, Columns columns);

/// How a column of digits can be read.
struct Digits {
    enum class State {
        Absent,      ///< blank, or the line ends before the columns
        Whole,       ///< digits only, blanks around them not counting
        Unreadable,  ///< anything else, also digits that the end of the line cuts short
    };
    State state = State::Absent;
    double number = 0;  ///< 0 unless whole

    [[nodiscard]] bool whole() const { return state == State::Whole; }
    [[nodiscard]] bool unreadable() const { return state == State::Unreadable; }
};

/// Reads columns of digits with implied decimals: `unitsOfOne` 100 is hundredths. At most 18 columns.
Digits cutDigits(std::string_view line, Columns columns, double unitsOfOne);

}  // namespace kolmera
