#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/date.h"

namespace kolmera {

/// How the user writes numbers and dates. Two locales are known, Swedish and English; they are chosen by the name
/// of the user's locale and work on machines where that locale was never generated.
class Locale {
  public:
    enum class Kind { Swedish, English };

    explicit Locale(Kind kind = Kind::Swedish) : kind_(kind) {}

    /// From LC_ALL, LC_NUMERIC, LANG in this order: "en..." is English, everything else Swedish. "C" and "POSIX" say
    /// nothing about the user, only that a service or a schedule set none: a price of "12,50" must not become 0 there.
    static Locale ofUser();

    [[nodiscard]] Kind kind() const { return kind_; }
    [[nodiscard]] char decimalSign() const { return kind_ == Kind::Swedish ? ',' : '.'; }

    /// The number that the *whole* text is in this locale (blanks around it do not count; a sign, digit groups of
    /// three behind a blank, a no-break space (Swedish) or a comma (English), and an exponent are taken). Nothing for
    /// "12abc", "nan", "inf", "0x1F", "1.2.3" and for what does not fit a double.
    [[nodiscard]] std::optional<double> parseNumber(std::string_view text) const;
    /// The shortest text of up to 15 significant digits, with this locale's decimal sign ("13,5").
    [[nodiscard]] std::string formatNumber(double value) const;
    /// At most 7 significant digits, for 32-bit values.
    [[nodiscard]] std::string formatSingle(float value) const;
    /// The pattern "##########0.00" for 2 decimals: `decimals` (0-15) digits behind the sign, no digit groups. Rounds
    /// the exact binary value, as printf does; what rounds to zero has no minus sign.
    [[nodiscard]] std::string formatFixed(double value, int decimals) const;

    /// The short date: "2026-11-22" in Swedish, "11/22/2026" in English.
    [[nodiscard]] std::string formatDate(Date date) const;
    /// A date in any spelling that users of this locale write ("2026-11-22", "22/11 2026", "22 nov 2026",
    /// "11/22/2026", "Nov 22, 2026" ...), names of months in both languages. A time of day behind it is left out. Of
    /// the orders that give a date, the locale's own comes first. A year has four digits, or two for 1930 to 2029.
    /// Nothing for other texts, among them a day without year and digits without separators.
    [[nodiscard]] std::optional<Date> parseDate(std::string_view text) const;

  private:
    Kind kind_;
};

/// The number at the start of a text, read with "." as the only decimal point; blanks are passed over, within it too
/// ("1 200 kr" gives 1200), and a text that does not begin with a number gives 0 ("12,5 kr" gives 12).
double leadingNumber(std::string_view text);

/// Rounds to whole units, halves to the even neighbour.
double roundHalfEven(double value);
/// Rounds to n decimals (0-15): x * 10^n in double arithmetic, half to even, divided by 10^n. No other correction.
/// A value too large to be multiplied has no decimals and stays.
double roundDecimals(double value, int decimals);

}  // namespace kolmera
