#include "import/filedoubt.h"

#include <algorithm>

#include "import/pricefilelook.h"
#include "platform/attempt.h"
#include "platform/printable.h"

namespace kolmera {
namespace {

constexpr std::string_view kModule = "KMR";
constexpr std::string_view kLineBreaks = "\r\n\r\n";
constexpr int kTitle = 500, kUnexpected = 501, kEmptiedFirst = 502;
constexpr int kNumberForm = 504, kSeparator = 530, kEncoding = 745;

/// The text of each fact, in the order of FileLook.
constexpr std::size_t kShown = 40;  ///< characters of the file
constexpr int kFirstFact = 510;
int textNumber(FileLook look) { return kFirstFact + static_cast<int>(look); }

/// Under which names other programs save what we read.
std::string_view nameOf(CodePage page) {
    switch (page) {
        case CodePage::Oem850:
            return "DOS 850";
        case CodePage::Oem437:
            return "DOS 437";
        default:
            return "Windows-1252 (ANSI)";
    }
}

bool isOfEncoding(FileLook look) {
    return look == FileLook::Utf16 || look == FileLook::Utf8Mark || look == FileLook::Utf8;
}

}  // namespace

std::string factText(LanguageTexts& texts, const FileFact& fact, const Locale& locale) {
    std::string text = texts.ModulTextMed(kModule, textNumber(fact.look), printable(fact.example, kShown));
    if (fact.look == FileLook::NoTabs && !fact.example.empty()) {
        text += " " + texts.ModulTextMed(kModule, kSeparator, fact.example);
    }
    if (isOfEncoding(fact.look)) text += " " + texts.ModulTextMed(kModule, kEncoding, nameOf(fact.codePage));
    if (fact.look == FileLook::OtherNumbers) text += " " + texts.ModulTextMed(kModule, kNumberForm, numberForm(locale));
    return fact.file.empty() ? text : fact.file + ": " + text;
}

DoubtfulFile doubtfulFile(LanguageTexts& texts, const FileFacts& facts, std::string_view priceFile,
                          std::string_view emptied, const Locale& locale) {
    DoubtfulFile doubt{.title = texts.ModulText(kModule, kTitle),
                       .text = texts.ModulTextMed(kModule, kUnexpected, priceFile),
                       .garbage = std::ranges::any_of(facts, &FileFact::garbage),
                       .otherNumbers = has(facts, FileLook::OtherNumbers)};
    for (const FileFact& fact : facts) doubt.text.append(kLineBreaks).append(factText(texts, fact, locale));
    if (!emptied.empty()) doubt.text.append(kLineBreaks).append(texts.ModulTextMed(kModule, kEmptiedFirst, emptied));
    return doubt;
}

std::vector<std::string> misreadSample(LanguageTexts& texts, const Mask& mask, const std::vector<Relation>& relations,
                                       const std::filesystem::path& sample) {
    const LoadedMask loaded(mask, relations);
    std::vector<std::string> remarks;
    if (relations.empty() || loaded.emptyRecords()) return remarks;
    const Locale locale;
    PassedOverSilently passedOver;
    attempt(passedOver, "sample", [&] {
        for (const FileFact& fact : lookThroughMask(sample, loaded, {}, locale)) {
            if (fact.garbage) remarks.push_back(factText(texts, fact, locale));
        }
    });
    return remarks;
}

}  // namespace kolmera
