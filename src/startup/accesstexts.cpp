#include "startup/accesstexts.h"

#include <fmt/format.h>

#include <array>

#include "lang/keys/access.h"

namespace kolmera {

namespace {

/// In the order of AccessRemark::Kind.
constexpr std::array kRemarks = {
    text::access::kBinaryLeftOut,     text::access::kTimeCut,         text::access::kDigitsRounded,
    text::access::kNotFitting,        text::access::kUnreadable,      text::access::kCharactersDamaged,
    text::access::kOtherType,         text::access::kAsText,          text::access::kStandardLeftOut,
    text::access::kRuleLeftOut,       text::access::kRequiredLeftOut, text::access::kCounterLeftOut,
    text::access::kPropertiesLeftOut, text::access::kColumnLeftOut,   text::access::kRowsRefused,
    text::access::kRowsLost,          text::access::kTableLeftOut,    text::access::kIndexLeftOut,
    text::access::kLinkLeftOut,       text::access::kQueryLeftOut,    text::access::kRelationLeftOut,
    text::access::kObjectLeftOut,     text::access::kPasswordLeftOut, text::access::kMissing,
    text::access::kMissing,
};
static_assert(kRemarks.size() == static_cast<std::size_t>(AccessRemark::Kind::ColumnMissing) + 1);

}  // namespace

std::string remarkText(LanguageTexts& texts, const AccessRemark& remark) {
    std::string line = remark.place;
    if (!line.empty()) line += ": ";
    if (remark.count > 0) line += fmt::format("{} ", remark.count);
    return line += texts.ModulText(kRemarks[static_cast<std::size_t>(remark.kind)]);
}

}  // namespace kolmera
