#include "platform/searchwords.h"

#include <algorithm>

#include "platform/lettercase.h"

namespace kolmera {

SearchWords::SearchWords(std::string_view typed) : words_(split(upperCase(replaceAll(typed, "\t", " ")), " ")) {
    std::erase(words_, std::string());
}

bool SearchWords::in(std::string_view text) const {
    const std::string upper = upperCase(text);
    return std::ranges::all_of(words_, [&](const std::string& word) { return upper.find(word) != std::string::npos; });
}

}  // namespace kolmera
