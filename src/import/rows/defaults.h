#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/attempt.h"
#include "platform/engine/recordset.h"
#include "platform/locale.h"

namespace kolmera {

/// The company's defaults for the products that a run creates. Made once a run from the open rows of "Syinställningar"
/// and "Syinställningar2", which stay open meanwhile; columns are resolved with the first product.
class NewProductDefaults {
  public:
    NewProductDefaults(Recordset& settings, Recordset& settings2, const Locale& locale, PassedOver& passedOver)
        : settings_(settings), settings2_(settings2), locale_(locale), passedOver_(passedOver) {}

    /// Fills the columns of the new row (added, not yet saved) that are still unset. A default that is missing or that
    /// the column refuses leaves the column as it is.
    void SättNyProduktStandard(Recordset& product);

  private:
    /// A line of the table of defaults with its columns found; -1 for a constant.
    struct Line {
        std::size_t row;
        int column;
        int setting;
        std::string statement;  ///< what it is called when it fails
    };
    void resolve(const Recordset& product);
    void apply(const Line& line, Recordset& product);

    Recordset& settings_;
    Recordset& settings2_;
    Locale locale_;
    PassedOver& passedOver_;
    std::vector<Line> lines_;
    bool resolved_ = false;
};

/// A column of a new row, and the settings column that its default stands in.
struct SettingDefault {
    std::string_view column, table, setting;
};
/// The settings that fill new products, and new product groups.
std::vector<SettingDefault> productDefaultSettings();
std::vector<SettingDefault> groupDefaultSettings();

/// Copies the account defaults of the company into a new product group (added, not yet saved).
void SättGruppKonton(Recordset& group, Recordset& settings, PassedOver& passedOver);

}  // namespace kolmera
