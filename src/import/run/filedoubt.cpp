#include "import/run/filedoubt.h"

#include <algorithm>

#include "import/run/filelook.h"
#include "lang/keys/look.h"
#include "platform/attempt.h"
#include "platform/printable.h"

namespace kolmera {
namespace {

constexpr std::string_view kLineBreaks = "\r\n\r\n";

constexpr std::size_t kShown = 40;  ///< characters of the file

/// The text of each fact, in the order of FileLook.
constexpr ModuleKey kFacts[] = {text::look::kEmpty,
                                text::look::kZip,
                                text::look::kOfficeDocument,
                                text::look::kPdf,
                                text::look::kArchive,
                                text::look::kWebPage,
                                text::look::kUtf16,
                                text::look::kByteOrderMark,
                                text::look::kUtf8,
                                text::look::kLineFeeds,
                                text::look::kSomeLineFeeds,
                                text::look::kNoTabs,
                                text::look::kOtherRecordLength,
                                text::look::kNoSearchKeys,
                                text::look::kOtherNumbers,
                                text::look::kNoPriceLines,
                                text::look::kNoCoupledCodes,
                                text::look::kOutsideGroups,
                                text::look::kMostlyNoNumbers};
static_assert(std::size(kFacts) == static_cast<std::size_t>(FileLook::NotNumbers) + 1);

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
    std::string text = texts.ModulTextMed(kFacts[static_cast<std::size_t>(fact.look)], printable(fact.example, kShown));
    if (fact.look == FileLook::NoTabs && !fact.example.empty()) {
        text.append(" ").append(texts.ModulTextMed(text::look::kSeparator, fact.example));
    }
    if (isOfEncoding(fact.look))
        text.append(" ").append(texts.ModulTextMed(text::look::kEncoding, nameOf(fact.codePage)));
    if (fact.look == FileLook::OtherNumbers)
        text.append(" ").append(texts.ModulTextMed(text::look::kNumberForm, numberForm(locale)));
    return fact.file.empty() ? text : fact.file + ": " + text;
}

DoubtfulFile doubtfulFile(LanguageTexts& texts, const FileFacts& facts, std::string_view priceFile,
                          std::string_view emptied, const Locale& locale) {
    DoubtfulFile doubt{.title = texts.ModulText(text::look::kTitle),
                       .text = texts.ModulTextMed(text::look::kUnexpected, priceFile),
                       .garbage = std::ranges::any_of(facts, &FileFact::garbage),
                       .otherNumbers = has(facts, FileLook::OtherNumbers)};
    for (const FileFact& fact : facts) doubt.text.append(kLineBreaks).append(factText(texts, fact, locale));
    if (!emptied.empty()) doubt.text.append(kLineBreaks).append(texts.ModulTextMed(text::look::kEmptiedFirst, emptied));
    return doubt;
}

}  // namespace kolmera
