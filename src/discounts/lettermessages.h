#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "discounts/letterexchange.h"
#include "lang/languagetexts.h"
#include "platform/error.h"

namespace kolmera {

// What the user is told of a letter's way from and to files, in the window and on the command line.

/// A file could not be read.
std::string readingFailed(LanguageTexts& texts, const std::filesystem::path& file, const PlatformError& error);
/// A file has no line that could become a group.
std::string noGroups(LanguageTexts& texts, const std::filesystem::path& file);
/// A file could not be written.
std::string writingFailed(LanguageTexts& texts, const std::filesystem::path& file, const PlatformError& error);

/// What ended the reading, else what was passed over or left out, a line each; nothing when everything went well.
std::vector<std::string> remarks(LanguageTexts& texts, const LetterRead& report);
std::vector<std::string> remarks(LanguageTexts& texts, const LetterWritten& report);

}  // namespace kolmera
