#pragma once

#include <string>

#include "registers/register.h"

namespace kolmera {

/// A row by its key: "100", "4711 / 100".
std::string rowName(const std::vector<std::string>& key);

/// What is wrong, the end of the sentences below: "is no number."
std::string reasonText(LanguageTexts& texts, const RegisterProblem& problem);

/// What a choice of one character means: "M", a price list.
std::string choiceText(LanguageTexts& texts, char choice);

/// What is wrong with a field of a form, one sentence: column and text are named.
std::string fieldText(LanguageTexts& texts, const Register& of, const RegisterProblem& problem);

/// What is wrong with a row, one sentence: row, column and text are named. `row` is as `rowName` has it, or the row of
/// a file.
std::string problemText(LanguageTexts& texts, const Register& of, const std::string& row,
                        const RegisterProblem& problem);

}  // namespace kolmera
