#pragma once

#include <string_view>

namespace kolmera {

// The names of texts. The build makes them from the last column of data/lang/texts.tsv, a header a group
// (lang/keys/run.h has text::run::kStoppedTitle): a name that has no text does not compile.

/// SP_FRM_..._String...: a numbered text of a form.
struct FormKey {
    std::string_view form;
    int number;
    bool operator==(const FormKey&) const = default;
};

/// SP_MOD_...: a numbered text of a module.
struct ModuleKey {
    std::string_view module;
    int number;
    bool operator==(const ModuleKey&) const = default;
};

/// RES_...: a message by number.
struct MessageKey {
    int number;
    bool operator==(const MessageKey&) const = default;
};

}  // namespace kolmera
