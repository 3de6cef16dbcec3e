#pragma once

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "wholeruns/floor/row.h"
#include "wholeruns/sqlite.h"

namespace kolmera::bench {

/// Halves to the even neighbour, on x * 10^decimals.
double roundTo(double value, int decimals);

/// The company's settings that the loaders need, read once.
class Settings {
  public:
    explicit Settings(Connection& connection);

    using Default = std::pair<int, std::variant<double, std::string>>;  ///< a column and its value

    int purchaseDecimals = 2;
    int salesDecimals = 2;
    double vatRate1 = 0;
    std::array<char, 10> coupledTo{};  ///< price lists 1-9: '-', 'I', '1' to '9'
    bool someCoupled = false;          ///< some list is coupled to more than the purchase price
    std::vector<Default> productDefaults;

    /// A sales price under the company's ranges.
    [[nodiscard]] double roundedSales(double price) const;
    [[nodiscard]] double roundedPurchase(double price) const { return roundTo(price, purchaseDecimals); }

  private:
    struct Range {
        double from, to;
    };
    std::array<Range, 5> ranges_{};
};

/// Discount letters by supplier and code: five chained discounts as one fraction, remembered.
class DiscountLetters {
  public:
    explicit DiscountLetters(Connection& connection);
    double fraction(std::string_view supplier, std::string_view code);

  private:
    Statement select_;
    std::unordered_map<std::string, double> known_;
    std::string key_;
};

/// Rates of the supplier ledger; an unknown code keeps the rate of the one before.
class Currencies {
  public:
    explicit Currencies(Connection& connection)
        : select_(connection, "SELECT Levreskontra, Faktor FROM Syvaluta WHERE Kod = ?1") {}
    /// `amount` of the currency in the home currency.
    double home(double amount, std::string_view code);

  private:
    Statement select_;
    std::string code_;
    double rate_ = 1;
    double factor_ = 1;
};

}  // namespace kolmera::bench
