#include "db/sqltexts.h"

#include "platform/lettercase.h"

namespace kolmera {

namespace {

bool isQuote(char sign) { return sign == '\'' || sign == '"'; }

/// Length of the quoted text at the start of `text`, quotes included (a doubled quote inside belongs to it); 0 when
/// the quote is never closed.
std::size_t quotedLength(std::string_view text) {
    const char quote = text.front();
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] != quote) continue;
        if (i + 1 == text.size() || text[i + 1] != quote) return i + 1;
        ++i;
    }
    return 0;
}

std::string unquoted(std::string_view quotedText) {
    const std::string quote(1, quotedText.front());
    return replaceAll(quotedText.substr(1, quotedText.size() - 2), quote + quote, quote);
}

bool needsParameter(std::string_view text) {
    // "\" takes the meaning from a closing quote on some servers; at NUL a driver may take the statement to end.
    constexpr std::string_view kUnsafe("#\\\0", 3);
    return text.find_first_of(kUnsafe) != std::string_view::npos ||
           (text.find('\'') != std::string_view::npos && text.find('"') != std::string_view::npos);
}

std::string serverWords(std::string_view text) {
    return replaceAll(replaceAll(replaceAll(text, "FALSE", "0"), "TRUE", "1"), "#", "'");
}

}  // namespace

BoundStatement serverStatement(std::string_view statement, std::span<const Value> parameters) {
    BoundStatement bound;
    std::string plain;  // rewritten in one piece, so that nothing depends on where a quoted text begins
    std::size_t next = 0;
    for (std::size_t i = 0; i < statement.size();) {
        const std::size_t length = isQuote(statement[i]) ? quotedLength(statement.substr(i)) : 0;
        if (length > 0) {
            const std::string text = unquoted(statement.substr(i, length));
            if (needsParameter(text)) {
                plain += '?';
                bound.parameters.emplace_back(text);
            } else {
                plain += statement.substr(i, length);
            }
            i += length;
            continue;
        }
        if (statement[i] == '?' && next < parameters.size()) bound.parameters.push_back(parameters[next++]);
        plain += statement[i++];
    }
    bound.text = serverWords(plain);
    return bound;
}

}  // namespace kolmera
