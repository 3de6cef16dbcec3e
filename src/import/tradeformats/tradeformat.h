#pragma once

#include <memory>
#include <string_view>

#include "definitions/jobfile.h"
#include "import/run/runreport.h"
#include "import/tradeformats/suppliercouplings.h"
#include "import/tradeformats/tradetables.h"
#include "platform/date.h"
#include "platform/locale.h"

namespace kolmera {

/// What became of a line of the price file.
enum class LineUse {
    Noted,       ///< remembered for the lines behind it
    Written,     ///< a price record that went to the tables
    PassedOver,  ///< nothing that can be used; the report has been told why
};

/// A trade format: takes the lines of a price file one by one, without their ends and before decoding, and writes the
/// price records among them. It knows neither the file nor who runs it.
class TradeFormat {
  public:
    virtual ~TradeFormat() = default;
    virtual LineUse takeLine(std::string_view line) = 0;
    /// The same with what it remembers of the lines so far.
    [[nodiscard]] virtual std::unique_ptr<TradeFormat> copy() const = 0;

  protected:
    TradeFormat() = default;
    TradeFormat(const TradeFormat&) = default;
    TradeFormat& operator=(const TradeFormat&) = default;
};

/// What a format works with; all of it outlives the format.
struct TradeFormatParts {
    TradeTables& tables;
    RunReport& report;
    SupplierLookup& suppliers;
    const Job& job;  ///< product groups in upper case
    const Locale& locale;
    Date Idag;

    /// Tells why a line is not used.
    [[nodiscard]] LineUse passOver(Remark why, std::string_view column = {}, std::string_view text = {}) const {
        report.remark(why, column, text);
        return LineUse::PassedOver;
    }
};

}  // namespace kolmera
