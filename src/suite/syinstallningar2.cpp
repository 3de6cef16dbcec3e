#include "suite/syinstallningar2.h"

#include "db/conversions.h"

namespace kolmera {

ClsSyInställningar_2::ClsSyInställningar_2(SqlLayer& sql)
    : locale_(sql.locale()),
      settings_(sql.SQLÖppnaRs("Syinställningar2", RecordsetType::Dynaset, options::kReadOnly)) {}

/// The result of one read, or its type's zero when that fails.
template <typename Read>
auto ClsSyInställningar_2::reading(Read read) {
    decltype(read()) result{};
    PassedOverSilently passedOver;
    attempt(passedOver, "Syinställningar2", [&] { result = read(); });
    return result;
}

std::int32_t ClsSyInställningar_2::LngVal(std::string_view column) {
    return reading([&] { return TillLng(settings_->value(column), locale_); });
}

double ClsSyInställningar_2::DblVal(std::string_view column) {
    return reading([&] { return TillDbl(settings_->value(column), locale_); });
}

float ClsSyInställningar_2::SinVal(std::string_view column) {
    return reading([&] { return TillSng(settings_->value(column), locale_); });
}

std::string ClsSyInställningar_2::TxtVal(std::string_view column) {
    return reading([&] {
        const int ordinal = settings_->ordinal(column);
        const FieldType type = settings_->fields()[static_cast<std::size_t>(ordinal)].type;
        return TillText(settings_->value(ordinal), type, locale_);
    });
}

bool ClsSyInställningar_2::BoolVal(std::string_view column) {
    return reading([&] { return TillBool(settings_->value(column), locale_); });
}

}  // namespace kolmera
