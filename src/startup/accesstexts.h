#pragma once

#include <string>

#include "lang/languagetexts.h"
#include "startup/accessplan.h"

namespace kolmera {

/// A remark as one line: "Table.Column: 3 dates without their time of the day".
std::string remarkText(LanguageTexts& texts, const AccessRemark& remark);

}  // namespace kolmera
