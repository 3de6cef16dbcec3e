#include "source/conversion/headings.h"

#include <algorithm>

#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "source/conversion/values.h"

namespace kolmera {
namespace {

/// Letter case, blanks at the ends, and how wide and of which kind those within are, make no other heading.
std::string compared(std::string_view heading) {
    heading = trimmedBlanks(heading);
    std::string text;
    while (!heading.empty()) {
        const std::size_t length = firstCharacter(heading).length;
        if (trimmedBlanks(heading.substr(0, length)).empty()) {
            if (!text.ends_with(' ')) text += ' ';
        } else {
            text += heading.substr(0, length);
        }
        heading.remove_prefix(length);
    }
    return upperCase(composed(text));
}

void note(std::vector<std::string>& headings, const std::string& heading) {
    if (std::ranges::find(headings, heading) == headings.end()) headings.push_back(heading);
}

}  // namespace

ColumnFinder::ColumnFinder(const std::vector<std::string>& headings) {
    for (const std::string& heading : headings) headings_.push_back(compared(heading));
}

std::optional<std::size_t> ColumnFinder::find(const ColumnName& name) {
    if (name.heading.empty()) {
        if (name.number == 0) return std::nullopt;
        return static_cast<std::size_t>(name.number - 1);
    }
    const std::string wanted = compared(name.heading);
    const auto found = std::ranges::find(headings_, wanted);
    if (found == headings_.end()) {
        note(fault_.missing, name.heading);
        return std::nullopt;
    }
    if (std::find(found + 1, headings_.end(), wanted) != headings_.end()) note(fault_.doubled, name.heading);
    return static_cast<std::size_t>(found - headings_.begin());
}

}  // namespace kolmera
