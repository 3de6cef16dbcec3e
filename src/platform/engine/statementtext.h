#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/locale.h"

namespace kolmera {

/// A piece of a statement or of a criteria text.
struct Token {
    enum class Kind {
        Word,    ///< a name or a keyword, also one that begins with a digit (1Utpris)
        Name,    ///< a name in brackets, without them
        Number,  ///< with "." as the decimal point
        Text,    ///< between single or double quotes, without them
        Date,    ///< between "#", without them
        Symbol,  ///< an operator of one or two characters, "?", or anything else
    };
    Kind kind;
    std::string text;
    std::size_t begin, end;  ///< where it stands in the source

    [[nodiscard]] bool is(std::string_view word) const;  ///< a word or symbol, without regard to letter case
    [[nodiscard]] bool isName() const { return kind == Kind::Word || kind == Kind::Name; }
};

/// Cuts a statement into its pieces; blanks between them are passed over. A doubled quote inside a text stands for one.
std::vector<Token> tokens(std::string_view statement);

/// The exact spelling of a table's or column's name, when there is one that equals it without regard to letter case.
using NameLookup = std::function<std::optional<std::string>(std::string_view)>;

/// Turns a statement as the programs write them into SQLite's language: texts between double quotes become literals
/// (SQLite would take them for column names), dates between "#" become ISO texts, and names get their exact spelling,
/// because SQLite does not know that "ä" and "Ä" are one letter. Throws kWrongType for "#" around what is no date.
std::string translated(std::string_view statement, const Locale& locale, const NameLookup& exactName);

/// A text as a literal of SQLite.
std::string textLiteral(std::string_view text);

}  // namespace kolmera
