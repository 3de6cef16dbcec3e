#include "platform/printable.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/encodings.h"

namespace kolmera {
namespace {

struct Range {
    char32_t first, last;
};
constexpr Range kUnprintable[] = {
    {0x00, 0x1F},      // controls, line breaks
    {0x7F, 0x9F},      // delete, further controls
    {0x200B, 0x200F},  // no width, direction marks
    {0x2028, 0x202E},  // line separators, direction of writing
    {0x2060, 0x206F},  // no width, direction of writing
    {0xFEFF, 0xFEFF},  // byte order mark
};

bool unprintable(char32_t character) {
    return std::ranges::any_of(kUnprintable,
                               [&](const Range& range) { return character >= range.first && character <= range.last; });
}

}  // namespace

std::string printable(std::string_view text, std::size_t characters) {
    std::string shown;
    for (; !text.empty() && characters > 0; --characters) {
        const FirstCharacter first = firstCharacter(text);
        if (!first.character) {
            shown += fmt::format("\\x{:02X}", static_cast<unsigned char>(text.front()));
        } else if (unprintable(*first.character)) {
            shown += fmt::format("\\x{:02X}", static_cast<std::uint32_t>(*first.character));
        } else {
            shown += text.substr(0, first.length);
        }
        text.remove_prefix(first.length);
    }
    if (!text.empty()) shown += "...";
    return shown;
}

}  // namespace kolmera
