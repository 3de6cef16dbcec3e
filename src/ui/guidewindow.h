#pragma once

#include <filesystem>

#include "lang/languagetexts.h"

class QWidget;

namespace kolmera {

/// The user's guide beside the program, "guide.sv.md" or "guide.en.md": in the program's language, else in the other;
/// empty when there is none.
[[nodiscard]] std::filesystem::path guideFile(const std::filesystem::path& programFolder, std::string_view language);

/// Shows the guide in a window of its own above `parent`, which stays usable. False when there is no guide.
bool openGuide(QWidget* parent, LanguageTexts& texts, const std::filesystem::path& programFolder);

}  // namespace kolmera
