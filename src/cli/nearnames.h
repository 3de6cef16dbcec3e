#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kolmera::cli {

/// Those of the names that the wanted one may have been meant to be, nearest first, three at most: letter case and
/// blanks apart, a few letters wrong, or a part of the name.
std::vector<std::string> nearNames(std::string_view wanted, const std::vector<std::string>& names);

}  // namespace kolmera::cli
