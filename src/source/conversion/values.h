#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "source/conversion/targetlayout.h"
#include "source/rowreader.h"
#include "source/sourcesettings.h"

namespace kolmera {

/// How numbers are written.
struct NumberSigns {
    char decimal = '.';
    std::string thousands;
};

/// The number that a whole text means, with a decimal point and without thousands signs, as many decimals as it has.
/// Currencies and blanks around it, a minus behind it and ":-" are understood; thousands signs have to stand where they
/// should, blanks are always ones. Nothing for every other text.
std::optional<std::string> numberText(std::string_view text, const NumberSigns& signs);

/// The date that a whole text means, as YYYYMMDD; a time of day behind it is left out. Where the order is not known,
/// only a year of four digits in front tells.
std::optional<std::string> dateText(std::string_view text, DateOrder order);

/// Without blanks of any kind at its ends.
std::string_view trimmedBlanks(std::string_view text);

struct SourceValue {
    std::string before;  ///< the cell's text, other column included
    std::string text;    ///< what the mask is given, UTF-8
    bool fits = true;    ///< the text means what the rule says
};

/// Makes cells of one column into what the mask is to read. What does not fit is given so that it is no number where a
/// number is read, as nothing where a date is, else as it stands.
class ValueReader {
  public:
    ValueReader(const ValueRule& rule, const SourceFormat& format, ColumnUse use, char decimalSign);

    /// `joined` is the text of the other column, where the rule names one.
    void read(const Cell& cell, std::string_view joined, SourceValue& value) const;

  private:
    void interpret(Cell::Kind kind, SourceValue& value) const;
    void misfit(SourceValue& value) const;
    void affixAndFill(std::string& text) const;

    const ValueRule& rule_;
    NumberSigns signs_;
    DateOrder order_;
    ValueRule::Meaning meaning_;
    ColumnUse use_;
    char decimalSign_;
};

}  // namespace kolmera
