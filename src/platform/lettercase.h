#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// Upper and lower case of UTF-8 text: ASCII, Latin-1 and Latin Extended-A letters (å ä ö é ü ...). The length in bytes
/// stays; letters without a partner there (ß) and malformed bytes stay as they are.
std::string upperCase(std::string_view text);
std::string lowerCase(std::string_view text);
/// First letter of every word upper, the rest lower ("FTG1.MDB" gives "Ftg1.Mdb"); a word starts behind every
/// character that is neither letter nor digit.
std::string properCase(std::string_view text);
bool equalNoCase(std::string_view a, std::string_view b);
bool startsWithNoCase(std::string_view text, std::string_view beginning);

/// The text without blanks (spaces) and NUL at both ends.
std::string_view trimmed(std::string_view text);
std::string_view trimmedRight(std::string_view text);

/// `text` with every occurrence of `from` replaced by `to`, exact case.
std::string replaceAll(std::string_view text, std::string_view from, std::string_view to);
/// The pieces between the separators: one more than there are separators, so an empty text gives one empty piece.
std::vector<std::string> split(std::string_view text, std::string_view separator);

/// Total order of the Swedish collation SVENSKA: letter case does not count, alphabet a-z å ä ö. Negative, 0, positive.
int compareSwedish(std::string_view a, std::string_view b);

}  // namespace kolmera
