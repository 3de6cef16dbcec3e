#include "pricing/vatrates.h"

#include <fmt/format.h>

#include <string_view>

#include "db/conversions.h"

namespace kolmera {

std::optional<double> VatRates::of(int momskod) {
    constexpr std::array<std::string_view, 3> kColumns = {"1OMomsproc", "2OMomsproc", "3OMomsproc"};
    if (momskod < 1 || momskod > static_cast<int>(kColumns.size())) return std::nullopt;
    if (!rates_) {
        std::array<double, kColumns.size()> rates{};
        attempt(passedOver_, "Syinställningar", [&] {
            const auto settings = sql_.SQLÖppnaRs("Syinställningar", RecordsetType::Dynaset, options::kReadOnly);
            for (std::size_t place = 0; place < kColumns.size(); ++place) {
                attempt(passedOver_, fmt::format("Syinställningar.{}", kColumns[place]),
                        [&] { rates[place] = TillDbl(settings->value(kColumns[place]), sql_.locale()); });
            }
        });
        rates_ = rates;
    }
    return (*rates_)[static_cast<std::size_t>(momskod - 1)];
}

}  // namespace kolmera
