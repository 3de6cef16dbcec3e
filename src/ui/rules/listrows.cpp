#include "ui/rules/listrows.h"

#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {

std::string FyllUtText(std::string_view text, int width) {
    std::string filled(text);
    const int missing = width - static_cast<int>(characterCount(text));
    if (missing > 0) filled.append(2 * static_cast<std::size_t>(missing), ' ');
    if (text.starts_with('-')) filled += ' ';
    return filled;
}

std::optional<std::string_view> codeAfterTab(std::string_view row) {
    const std::size_t tab = row.find('\t');
    if (tab == std::string_view::npos) return std::nullopt;
    return trimmed(row.substr(tab + 1));
}

}  // namespace kolmera
