#include "ui/rules/listrows.h"

#include <algorithm>

#include "db/sqllayer.h"
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

std::optional<std::string_view> codeOfRow(std::string_view row) {
    const std::optional<std::string_view> behind = codeAfterTab(row);
    if (!behind) return std::nullopt;
    const std::string_view front = trimmed(row.substr(0, row.find('\t')));
    return SqlLayer::ÄrSQLDatabas(upperCase(front)) ? front : behind;
}

int rowOfCode(const std::vector<std::string>& rows, std::string_view code) {
    const auto found = std::ranges::find_if(rows, [code = trimmed(code)](const std::string& row) {
        const auto own = codeOfRow(row);
        return own && equalNoCase(*own, code);
    });
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

}  // namespace kolmera
