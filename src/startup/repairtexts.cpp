#include "startup/repairtexts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <numeric>

#include "lang/keys/repair.h"

namespace kolmera {
namespace {}  // namespace

std::vector<std::string> repairLosses(LanguageTexts& texts, const RepairReport& report) {
    std::vector<std::string> lines;
    const auto number = [](std::int64_t count) { return fmt::format("{}", count); };
    if (report.dropped > 0) lines.push_back(texts.ModulTextMed(text::repair::kDropped, number(report.dropped)));
    if (report.shortened > 0) {
        lines.push_back(texts.ModulTextMed(text::repair::kShortened,
                                           fmt::format("{} ({} ...)", report.shortened, report.firstShortened)));
    }
    if (report.strange > 0) lines.push_back(texts.ModulTextMed(text::repair::kStrange, number(report.strange)));
    if (!report.leftOut.empty()) {
        lines.push_back(texts.ModulTextMed(text::repair::kLeftOut, fmt::format("{}", fmt::join(report.leftOut, ", "))));
    }
    if (report.passwordLost) lines.push_back(texts.ModulText(text::repair::kPasswordLost));
    return lines;
}

std::string repairText(LanguageTexts& texts, const RepairReport& report) {
    const auto saved = std::accumulate(report.rows.begin(), report.rows.end(), std::int64_t{0},
                                       [](std::int64_t sum, const auto& table) { return sum + table.second; });
    std::string text = texts.ModulTextMed(text::repair::kRepaired, report.original.filename().string());
    text += "\r\n\r\n" + texts.ModulTextMed(text::repair::kSaved, fmt::format("{}", saved));
    for (const std::string& line : repairLosses(texts, report)) text += "\r\n" + line;
    return text;
}

}  // namespace kolmera
