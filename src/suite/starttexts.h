#pragma once

#include <array>
#include <map>
#include <string>

#include "lang/languagetexts.h"

namespace kolmera {

/// Words and messages that a program reads once, when its language is known.
class StartTexts {
  public:
    explicit StartTexts(LanguageTexts& texts);

    /// The built-in word table, entries 1 to 48; blanks at the ends belong to the words.
    [[nodiscard]] const std::string& Ordtabell(int entry) const;
    /// One of the messages (RES_5000, RES_5501 ...); empty for any other number.
    [[nodiscard]] std::string message(int number) const;

  private:
    std::array<std::string, 49> words_;
    std::map<int, std::string> messages_;
};

}  // namespace kolmera
