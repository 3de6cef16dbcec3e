#include "lang/originalwords.h"

#include <algorithm>

#include "platform/printable.h"

namespace kolmera {
namespace {

constexpr std::size_t kKept = 100;
/// A list of errors cuts long sentences, and shows signs that cannot be printed in another way.
constexpr std::size_t kCompared = 200;

std::string beginningOf(std::string_view sentence) {
    std::string shown = printable(sentence, sentence.size());
    if (shown.size() > kCompared) shown.resize(kCompared);
    return shown;
}

}  // namespace

void OriginalWords::keep(std::string_view sentence, std::string words) {
    std::string beginning = beginningOf(sentence);
    if (beginning.empty()) return;
    std::erase_if(told_, [&](const Told& told) { return told.beginning == beginning; });
    told_.push_back({std::move(beginning), std::move(words)});
    if (told_.size() > kKept) told_.pop_front();
}

std::string OriginalWords::in(std::string_view text) const {
    const std::string shown = printable(text, text.size());
    std::string words;
    for (const Told& told : told_) {
        if (shown.find(told.beginning) == std::string::npos) continue;
        if (!words.empty()) words += '\n';
        words += told.words;
    }
    return words;
}

}  // namespace kolmera
