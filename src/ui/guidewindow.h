#pragma once

#include <filesystem>

#include "lang/languagetexts.h"

class QWidget;

namespace kolmera {

/// The user's guide beside the program, "guide.sv.md" or "guide.en.md": in the program's language, else in the other;
/// empty when there is none.
[[nodiscard]] std::filesystem::path guideFile(const std::filesystem::path& programFolder, std::string_view language);

/// The heading of a guide, from 1, that a mark above it gives to a window: a line "<!-- PrisMTyp, MaskSample -->" of
/// object names. 0 when there is none.
[[nodiscard]] int guideHeading(std::string_view guide, std::string_view topic);

/// Shows the guide in a window of its own above `parent`, which stays usable, at what it says of the window `topic`.
/// False when there is no guide.
bool openGuide(QWidget* parent, LanguageTexts& texts, const std::filesystem::path& programFolder,
               std::string_view topic);

}  // namespace kolmera
