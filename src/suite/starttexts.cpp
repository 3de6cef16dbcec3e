#include "suite/starttexts.h"

#include "suite/wordtable.h"

namespace kolmera {
namespace {

constexpr int kMessages[] = {5000, 5001, 1344, 1345, 1346, 1354, 1355, 5501, 5502, 5503, 5504, 5505,
                             5601, 5602, 5603, 5604, 5605, 5606, 5607, 5608, 5609, 5610, 5611};

}  // namespace

StartTexts::StartTexts(LanguageTexts& texts) : words_(wordTable(texts.language())) {
    for (const int number : kMessages) messages_[number] = texts.ResText(number);
}

const std::string& StartTexts::Ordtabell(int entry) const { return words_.at(static_cast<std::size_t>(entry)); }

std::string StartTexts::message(int number) const {
    const auto found = messages_.find(number);
    return found == messages_.end() ? std::string() : found->second;
}

}  // namespace kolmera
