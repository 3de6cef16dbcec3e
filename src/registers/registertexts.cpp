#include "registers/registertexts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "lang/keys/registers.h"
#include "platform/printable.h"

namespace kolmera {
namespace {

constexpr std::size_t kShownCharacters = 60;

ModuleKey sentence(RegisterProblem::What what) {
    using What = RegisterProblem::What;
    switch (what) {
        case What::Missing:
            return text::registers::kMissing;
        case What::TooLong:
            return text::registers::kTooLong;
        case What::NoNumber:
            return text::registers::kNoNumber;
        case What::NoWholeNumber:
            return text::registers::kNoWholeNumber;
        case What::OutOfRange:
            return text::registers::kOutOfRange;
        case What::NoDate:
            return text::registers::kNoDate;
        case What::NoTruth:
            return text::registers::kNoTruth;
        case What::NoChoice:
            return text::registers::kNoChoice;
        case What::NoSuchRow:
            return text::registers::kNoSuchRow;
        case What::Taken:
            return text::registers::kTaken;
        case What::NotThere:
            return text::registers::kNotThere;
        case What::Changed:
            return text::registers::kChanged;
        case What::Named:
            return text::registers::kNamed;
        case What::AlwaysThere:
            return text::registers::kAlwaysThere;
        case What::Fixed:
            break;
    }
    return text::registers::kFixed;
}

}  // namespace

std::string rowName(const std::vector<std::string>& key) { return fmt::format("{}", fmt::join(key, " / ")); }

std::string reasonText(LanguageTexts& texts, const RegisterProblem& problem) {
    return texts.ModulTextMed(sentence(problem.what), printable(problem.about, kShownCharacters));
}

std::string choiceText(LanguageTexts& texts, char choice) {
    switch (choice) {
        case 'I':
            return texts.FormulärSträng(text::registers::kOnNetPrice);
        case 'V':
            return texts.FormulärSträng(text::registers::kOnAveragePrice);
        case 'M':
            return texts.FormulärSträng(text::registers::kOnListWithVat);
        case '0':
        case '-':
            return texts.FormulärSträng(text::registers::kOnNothing);
        default:
            return fmt::format("{} {}", texts.FormulärSträng(text::registers::kPriceList), choice);
    }
}

std::string fieldText(LanguageTexts& texts, const Register& of, const RegisterProblem& problem) {
    std::string text = problem.column < 0 ? of.shortName() : of.column(problem.column).caption;
    if (!problem.text.empty()) text += fmt::format(" \"{}\"", printable(problem.text, kShownCharacters));
    return text + ' ' + reasonText(texts, problem);
}

std::string problemText(LanguageTexts& texts, const Register& of, const std::string& row,
                        const RegisterProblem& problem) {
    std::string text = texts.ModulTextMed(text::registers::kRow, printable(row, kShownCharacters));
    if (problem.column >= 0) text += fmt::format(", {}:", of.column(problem.column).caption);
    if (!problem.text.empty()) text += fmt::format(" \"{}\"", printable(problem.text, kShownCharacters));
    return text + ' ' + reasonText(texts, problem);
}

}  // namespace kolmera
