#include "definitions/headingwords.h"

#include <algorithm>

#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "platform/recordfolder.h"
#include "platform/tsv.h"

namespace kolmera {
namespace {

/// What says nothing of the column at the end of a heading, as `lettersOf` leaves it.
constexpr std::string_view kEndings[] = {"exklmoms", "exmoms", "inklmoms", "exclvat",  "exvat",   "inclvat", "sek",
                                         "eur",      "nok",    "dkk",      "usd",      "kr",      "kronor",  "persek",
                                         "st",       "perst",  "perstyck", "perenhet", "perunit", "perpc",   "each"};

/// What a price is for, behind a slash: "Pris/enhet" is no "Prisenhet".
constexpr std::string_view kUnits[] = {"enhet", "st", "styck", "unit", "pc",   "pce",
                                       "ea",    "m",  "kg",    "frp",  "förp", "100"};

/// Without what stands in brackets; a heading that is nothing else keeps it.
std::string withoutBrackets(std::string_view heading) {
    std::string kept;
    int depth = 0;
    for (const char letter : heading) {
        if (letter == '(' || letter == '[') ++depth;
        if (depth == 0) kept += letter;
        if ((letter == ')' || letter == ']') && depth > 0) --depth;
    }
    return trimmed(kept).empty() ? std::string(heading) : kept;
}

/// Letters and digits in lower case.
std::string lettersOf(std::string_view heading) {
    std::string letters;
    for (const char letter : lowerCase(composed(withoutBrackets(heading)))) {
        const auto byte = static_cast<unsigned char>(letter);
        const bool kept = byte >= 0x80 || (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
        if (kept) letters += letter;
    }
    return replaceAll(letters, "\xC2\xA0", "");
}

}  // namespace

HeadingWords HeadingWords::read(const std::filesystem::path& dataFolder) {
    HeadingWords words;
    words.add(readWholeText(dataFolder, kOwnHeadingWords));
    words.add(kHeadingWordsText);
    return words;
}

void HeadingWords::add(std::string_view table) {
    const Tsv tsv = Tsv::parse(table);
    const int heading = tsv.column("heading"), target = tsv.column("target");
    if (heading < 0 || target < 0) return;
    for (const auto& row : tsv.rows) {
        targets_[lettersOf(row[static_cast<std::size_t>(heading)])].push_back(row[static_cast<std::size_t>(target)]);
    }
}

std::vector<std::string> HeadingWords::targets(std::string_view heading) const {
    const std::size_t slash = heading.rfind('/');
    if (slash != std::string_view::npos &&
        std::ranges::find(kUnits, lettersOf(heading.substr(slash))) != std::end(kUnits))
        heading = heading.substr(0, slash);
    std::string letters = lettersOf(heading);
    if (letters.empty()) return {};
    while (true) {
        if (const auto found = targets_.find(letters); found != targets_.end()) return found->second;
        std::size_t shorter = letters.size();
        for (const std::string_view ending : kEndings) {
            if (letters.size() > ending.size() && letters.ends_with(ending)) shorter = letters.size() - ending.size();
        }
        if (shorter == letters.size()) return {};
        letters.resize(shorter);
    }
}

}  // namespace kolmera
