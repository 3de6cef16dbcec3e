#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/masks/entrylist.h"
#include "import/masks/loadedmask.h"
#include "import/run/runreport.h"
#include "platform/date.h"
#include "platform/engine/recordset.h"
#include "pricing/pricetrace.h"
#include "pricing/prisclsroundinprisoutpris.h"

namespace kolmera {

/// What a run needs to know to write product columns.
struct ColumnSettings {
    std::array<double, 3> vatRates{};  ///< per cent, of the update rules 1, 2 and 3
    std::int32_t PPrisDatumBM = kStandardPrisDatumBM;
    Date Idag;
    Locale locale;
};

/// Read from the company's two tables of settings; what cannot be read is noted.
ColumnSettings columnSettings(Recordset& settings, Recordset& settings2, Date Idag, const Locale& locale,
                              PassedOver& passedOver);

/// What the columns of a record ask of the steps behind them.
struct WrittenColumns {
    bool setPriceDate = false;
    std::optional<double> discount;  ///< the processed value of the discount column
};

/// Writes the columns of a mask into the product that is being edited or added, each by its update rule. Everything
/// that does not change from record to record (ordinals, types, rules) is worked out once.
class ColumnWriter {
  public:
    ColumnWriter(const LoadedMask& mask, const Recordset& product, const ColumnSettings& settings,
                 const PrisClsRoundInprisOUtpris& prices, RunReport& report, PriceTrace* trace = nullptr);

    /// A value that a column refuses leaves that column as it was.
    WrittenColumns write(Recordset& product, const EntryList& entries, bool newProduct);

    /// A purchase price, discount or level price is processed in every record, so that coupled prices are recomputed.
    [[nodiscard]] bool changesPrices() const { return changesPrices_; }

  private:
    enum class Kind { Text, Memo, Boolean, Date, Number, Other };
    enum class Action { Write, WriteIfUnset, NoWrite };
    enum class Dating { None, Always, OnLevelChange };

    struct Column {
        Source source;
        int ordinal = 0;
        Kind kind = Kind::Text;
        Action action = Action::NoWrite;
        std::size_t size = 0;  ///< characters of a text column
        double vatRate = 0;    ///< added to a number, per cent
        Dating dating = Dating::None;
        bool discount = false;
        bool price = false;  ///< a purchase or level price
        std::string name;    ///< table and column, for what is passed over
    };

    static Kind kindOf(FieldType type);
    static Action actionOf(Kind kind, char TypKod);
    Column column(const Relation& relation, const FieldDef& field, const ColumnSettings& settings) const;
    Dating datingOf(int ordinal, bool fileHasDate, std::int32_t PPrisDatumBM) const;
    void writeNumber(const Column& column, Recordset& product, std::string_view entry, bool newProduct,
                     WrittenColumns& written);
    void tellNumber(const Column& column, std::string_view entry, std::optional<double> number, double value);
    [[nodiscard]] bool datesPrice(const Column& column, Recordset& product, double value, bool newProduct);
    [[nodiscard]] Value converted(const Column& column, std::string_view entry) const;
    [[nodiscard]] bool unset(Kind kind, const Value& value) const;

    const PrisClsRoundInprisOUtpris& prices_;
    RunReport& report_;
    PriceTrace* trace_;
    Date Idag_;
    Locale locale_;
    std::vector<Column> columns_;
    bool changesPrices_ = false;
};

}  // namespace kolmera
