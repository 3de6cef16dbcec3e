#include "platform/engine/odbc/connectstring.h"

#include <algorithm>
#include <charconv>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

/// Behind the part that the text begins with; a value in braces may hold semicolons.
std::size_t partLength(std::string_view text) {
    bool braces = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '{') braces = true;
        if (text[at] == '}') braces = false;
        if (text[at] == ';' && !braces) return at;
    }
    return text.size();
}

/// Takes the number of a part "Key=number"; false for any other part.
bool takeSeconds(std::string_view part, std::string_view key, std::chrono::seconds& into) {
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos || !equalNoCase(part.substr(0, equals), key)) return false;
    const std::string_view digits = part.substr(equals + 1);
    int number = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (parsed.ec != std::errc() || parsed.ptr != digits.data() + digits.size() || number < 0) return false;
    into = std::chrono::seconds(number);
    return true;
}

}  // namespace

ConnectString::ConnectString(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = partLength(text);
        const std::string_view part = text.substr(0, length);
        if (!takeSeconds(part, "LoginTimeout", login) && !takeSeconds(part, "QueryTimeout", answer)) {
            if (!forDriver.empty()) forDriver += ';';
            forDriver += part;
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
}

void forEachPart(std::string_view connectString,
                 const std::function<void(std::string_view key, std::string_view value)>& part) {
    while (!connectString.empty()) {
        const std::size_t length = partLength(connectString);
        const std::string_view text = connectString.substr(0, length);
        const std::size_t equals = text.find('=');
        if (equals != std::string_view::npos) part(trimmed(text.substr(0, equals)), trimmed(text.substr(equals + 1)));
        connectString.remove_prefix(std::min(length + 1, connectString.size()));
    }
}

}  // namespace kolmera
