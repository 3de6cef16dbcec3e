#include "startup/repairtexts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <numeric>

namespace kolmera {
namespace {

constexpr std::string_view kModule = "KMR";
constexpr int kRepaired = 117;
constexpr int kSaved = 600, kDropped = 601, kShortened = 602, kStrange = 603, kLeftOut = 604, kPasswordLost = 605;

}  // namespace

std::vector<std::string> repairLosses(LanguageTexts& texts, const RepairReport& report) {
    std::vector<std::string> lines;
    const auto number = [](std::int64_t count) { return fmt::format("{}", count); };
    if (report.dropped > 0) lines.push_back(texts.ModulTextMed(kModule, kDropped, number(report.dropped)));
    if (report.shortened > 0) {
        lines.push_back(texts.ModulTextMed(kModule, kShortened,
                                           fmt::format("{} ({} ...)", report.shortened, report.firstShortened)));
    }
    if (report.strange > 0) lines.push_back(texts.ModulTextMed(kModule, kStrange, number(report.strange)));
    if (!report.leftOut.empty()) {
        lines.push_back(texts.ModulTextMed(kModule, kLeftOut, fmt::format("{}", fmt::join(report.leftOut, ", "))));
    }
    if (report.passwordLost) lines.push_back(texts.ModulText(kModule, kPasswordLost));
    return lines;
}

std::string repairText(LanguageTexts& texts, const RepairReport& report) {
    const auto saved = std::accumulate(report.rows.begin(), report.rows.end(), std::int64_t{0},
                                       [](std::int64_t sum, const auto& table) { return sum + table.second; });
    std::string text = texts.ModulTextMed(kModule, kRepaired, report.original.filename().string());
    text += "\r\n\r\n" + texts.ModulTextMed(kModule, kSaved, fmt::format("{}", saved));
    for (const std::string& line : repairLosses(texts, report)) text += "\r\n" + line;
    return text;
}

}  // namespace kolmera
