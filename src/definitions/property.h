#pragma once

#include <string>
#include <vector>

namespace kolmera {

/// One property that a window shows: a box with choices, or one to type in. `Name` is an enumeration.
template <typename NameType>
struct Property {
    using Name = NameType;

    Name name;
    std::string caption;
    std::vector<std::string> choices;  ///< none: what is typed
    int chosen = -1;
    std::string text;     ///< typed
    bool sure = true;     ///< not a guess
    bool enabled = true;  ///< has a meaning beside the others
};

}  // namespace kolmera
