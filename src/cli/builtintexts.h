#pragma once

#include <span>
#include <string_view>

namespace kolmera::cli {

/// The lines of data/lang/texts.tsv as they were when the program was built: the terminal speaks without DVLang.sys
/// too.
std::span<const std::string_view> builtInTexts();

}  // namespace kolmera::cli
