#include "discounts/lettermessages.h"

#include "lang/errortext.h"

namespace kolmera {
namespace {

constexpr std::string_view kModule = "KMR";
constexpr int kCannotOpenFile = 1502;
constexpr int kDatabaseStopped = 111, kDiskFullStopped = 112, kCancelled = 222, kStoppedRestored = 330,
              kCancelledRestored = 331, kCannotSaveFile = 124;
constexpr int kUnwritableSheet = 130, kUnreadableSheet = 131;
constexpr int kWithoutCode = 620, kBeyond = 621;
constexpr int kLinesPassedOver = 304, kNotNumbers = 305, kNoGroups = 306, kQuestionMarks = 310;
constexpr std::string_view kParagraph = "\r\n\r\n";

std::string named(const std::string& text, const std::filesystem::path& file) {
    return text + " " + file.string() + ".";
}

std::string explained(LanguageTexts& texts, std::string text, const PlatformError& error) {
    return text.append(kParagraph).append(errorText(texts, error));
}

void addRemark(std::vector<std::string>& lines, LanguageTexts& texts, int text, const NotedGroups& groups) {
    if (groups.count > 0) lines.push_back(texts.ModulTextMed(kModule, text, groups.text()));
}

/// Why the letter is not the file's.
std::string readingEnded(LanguageTexts& texts, const LetterRead& report) {
    if (report.cancelled) {
        return report.restored ? texts.ModulText(kModule, kCancelledRestored) : texts.ModulText(kModule, kCancelled);
    }
    const std::string reason = errorText(texts, *report.stopped);
    if (report.restored) return texts.ModulTextMed(kModule, kStoppedRestored, reason);
    return report.stopped->number() == errors::kDiskFull ? texts.ModulTextMed(kModule, kDiskFullStopped, reason)
                                                         : texts.ModulTextMed(kModule, kDatabaseStopped, reason);
}

}  // namespace

std::string readingFailed(LanguageTexts& texts, const std::filesystem::path& file, const PlatformError& error) {
    const bool damagedSheet = isSpreadsheet(file) && error.number() != errors::kFileNotFound;
    return explained(texts,
                     damagedSheet ? texts.ModulTextMed(kModule, kUnreadableSheet, file.filename().string())
                                  : named(texts.ResText(kCannotOpenFile), file),
                     error);
}

std::string noGroups(LanguageTexts& texts, const std::filesystem::path& file) {
    return texts.ModulTextMed(kModule, kNoGroups, file.filename().string());
}

std::string writingFailed(LanguageTexts& texts, const std::filesystem::path& file, const PlatformError& error) {
    if (!isSpreadsheet(file)) return explained(texts, named(texts.ResText(kCannotOpenFile), file), error);
    if (error.number() == errors::kUnwritableFormat) {
        return texts.ModulTextMed(kModule, kUnwritableSheet, file.filename().string());
    }
    return explained(texts, named(texts.ModulText(kModule, kCannotSaveFile), file), error);
}

std::vector<std::string> remarks(LanguageTexts& texts, const LetterRead& report) {
    if (report.cancelled || report.stopped) return {readingEnded(texts, report)};
    std::vector<std::string> lines;
    addRemark(lines, texts, kWithoutCode, report.withoutCode);
    addRemark(lines, texts, kLinesPassedOver, report.passedOver);
    addRemark(lines, texts, kNotNumbers, report.notNumbers);
    addRemark(lines, texts, kBeyond, report.beyond);
    return lines;
}

std::vector<std::string> remarks(LanguageTexts& texts, const LetterWritten& report) {
    std::vector<std::string> lines;
    addRemark(lines, texts, kQuestionMarks, report.questionMarks);
    return lines;
}

}  // namespace kolmera
