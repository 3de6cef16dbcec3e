#include "discounts/lettermessages.h"

#include "lang/errortext.h"
#include "lang/keys/files.h"
#include "lang/keys/letter.h"
#include "lang/keys/run.h"
#include "lang/keys/shared.h"

namespace kolmera {
namespace {

constexpr std::string_view kParagraph = "\r\n\r\n";

std::string named(const std::string& text, const std::filesystem::path& file) {
    return text + " " + file.string() + ".";
}

std::string explained(LanguageTexts& texts, std::string text, const PlatformError& error) {
    return text.append(kParagraph).append(errorText(texts, error));
}

void addRemark(std::vector<std::string>& lines, LanguageTexts& texts, ModuleKey text, const NotedGroups& groups) {
    if (groups.count > 0) lines.push_back(texts.ModulTextMed(text, groups.text()));
}

/// Why the letter is not the file's.
std::string readingEnded(LanguageTexts& texts, const LetterRead& report) {
    if (report.cancelled) {
        return report.restored ? texts.ModulText(text::letter::kCancelledRestored)
                               : texts.ModulText(text::run::kCancelled);
    }
    const std::string reason = errorText(texts, *report.stopped);
    if (report.restored) return texts.ModulTextMed(text::letter::kStoppedRestored, reason);
    return report.stopped->number() == errors::kDiskFull ? texts.ModulTextMed(text::run::kDiskFull, reason)
                                                         : texts.ModulTextMed(text::run::kDatabaseStopped, reason);
}

}  // namespace

std::string readingFailed(LanguageTexts& texts, const std::filesystem::path& file, const PlatformError& error) {
    const bool damagedSheet = isSpreadsheet(file) && error.number() != errors::kFileNotFound;
    return explained(texts,
                     damagedSheet ? texts.ModulTextMed(text::files::kUnreadableSheet, file.filename().string())
                                  : named(texts.ResText(text::shared::kCannotOpenFile), file),
                     error);
}

std::string noGroups(LanguageTexts& texts, const std::filesystem::path& file) {
    return texts.ModulTextMed(text::letter::kNoGroups, file.filename().string());
}

std::string writingFailed(LanguageTexts& texts, const std::filesystem::path& file, const PlatformError& error) {
    if (!isSpreadsheet(file)) return explained(texts, named(texts.ResText(text::shared::kCannotOpenFile), file), error);
    if (error.number() == errors::kUnwritableFormat) {
        return texts.ModulTextMed(text::files::kUnwritableSheet, file.filename().string());
    }
    return explained(texts, named(texts.ModulText(text::files::kCannotSave), file), error);
}

std::vector<std::string> remarks(LanguageTexts& texts, const LetterRead& report) {
    if (report.cancelled || report.stopped) return {readingEnded(texts, report)};
    std::vector<std::string> lines;
    addRemark(lines, texts, text::letter::kWithoutCode, report.withoutCode);
    addRemark(lines, texts, text::letter::kLinesPassedOver, report.passedOver);
    addRemark(lines, texts, text::letter::kNotNumbers, report.notNumbers);
    addRemark(lines, texts, text::letter::kBeyond, report.beyond);
    return lines;
}

std::vector<std::string> remarks(LanguageTexts& texts, const LetterWritten& report) {
    std::vector<std::string> lines;
    addRemark(lines, texts, text::letter::kQuestionMarks, report.questionMarks);
    return lines;
}

}  // namespace kolmera
