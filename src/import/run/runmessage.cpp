#include "import/run/runmessage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "lang/errortext.h"
#include "lang/keys/run.h"
#include "platform/printable.h"

namespace kolmera {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kErrorCharacters = 300;
constexpr std::string_view kIndent = "    ";

class MessageText {
  public:
    MessageText(LanguageTexts& texts, std::size_t examples) : texts_(texts), examples_(examples) {}

    void paragraph(std::string_view text) {
        if (!text_.empty()) text_ += "\r\n\r\n";
        text_ += text;
    }
    void counted(ModuleKey label, std::int64_t count) {
        paragraph(fmt::format("{}: {}", texts_.ModulText(label), count));
    }
    void line(std::string_view text) { (text_ += kLineEnd).append(kIndent).append(text); }
    void examples(const RunReport::Tally& tally);
    void failures(const RunReport& report);

    [[nodiscard]] std::string text() && { return std::move(text_); }

  private:
    [[nodiscard]] std::string where(std::int64_t record, std::string_view product);
    void more(std::size_t all) {
        if (all > examples_) line(texts_.ModulTextMed(text::run::kMore, fmt::format("{}", all - examples_)));
    }

    LanguageTexts& texts_;
    std::size_t examples_;
    std::string text_;
};

/// "post 12, 4711"
std::string MessageText::where(std::int64_t record, std::string_view product) {
    std::string where;
    if (record > 0) where = texts_.ModulTextMed(text::run::kRecord, fmt::format("{}", record));
    if (!where.empty() && !product.empty()) where += ", ";
    return where += product;
}

void MessageText::examples(const RunReport::Tally& tally) {
    for (std::size_t i = 0; i < std::min(examples_, tally.examples.size()); ++i) {
        const RunReport::Example& example = tally.examples[i];
        std::string said = where(example.record, example.product);
        if (!example.column.empty()) said += ": \"" + example.text + "\" (" + example.column + ")";
        line(said);
    }
    more(static_cast<std::size_t>(tally.count));
}

void MessageText::failures(const RunReport& report) {
    const auto& failures = report.failures();
    for (std::size_t i = 0; i < std::min(examples_, failures.size()); ++i) {
        const RunReport::Failure& failure = failures[i];
        std::string said = where(failure.record, failure.product);
        if (!said.empty()) said += ": ";
        said += failure.statement + ": " + printable(errorText(texts_, failure.error), kErrorCharacters);
        if (failure.count > 1) said += fmt::format(" ({} x)", failure.count);
        line(said);
    }
    more(failures.size());
}

std::string codesByName(LanguageTexts& texts, const RunReport& report) {
    std::vector<std::string> codes;
    for (const auto& [code, count] : report.uncoupledCodes()) {
        codes.push_back(fmt::format("{} {}", code.empty() ? texts.ModulText(text::run::kNoCode) : code, count));
    }
    return fmt::format(" ({})", fmt::join(codes, ", "));
}

/// What is gone when the file has brought less than it should.
void addDeleted(const RunSummary& summary, MessageText& message) {
    const std::pair<ModuleKey, std::int64_t> deleted[] = {
        {text::run::kDeletedProducts, summary.deleted.products},
        {text::run::kDeletedSupplierPrices, summary.deleted.priceList},
        {text::run::kDeletedAlternatives, summary.deleted.alternatives}};
    for (const auto& [label, count] : deleted) {
        if (count > 0) message.counted(label, count);
    }
}

}  // namespace

std::string runMessage(LanguageTexts& texts, const RunSummary& summary, std::string_view priceFile,
                       std::size_t examples) {
    const RunReport& report = summary.report;
    MessageText message(texts, examples);
    if (summary.readAsOneLine) message.paragraph(texts.ModulTextMed(text::run::kReadAsOneLine, priceFile));
    if (summary.nothingUsed()) message.paragraph(texts.ModulTextMed(text::run::kNothingUsed, priceFile));
    addDeleted(summary, message);
    for (const RemarkKind& kind : kRemarks) {
        if (report.count(kind.remark) == 0 || (kind.asItStands && kind.skips)) continue;
        message.counted(kind.text, report.count(kind.remark));
        message.examples(report.tally(kind.remark));
    }
    if (!report.failures().empty()) {
        message.counted(text::run::kFailedStatements, report.failedStatements());
        message.failures(report);
    }
    if (summary.skipped > 0) {
        message.counted(text::run::kSkippedRecords, summary.skipped);
        for (const std::string& reason : skipReasons(texts, report)) message.line(reason);
    }
    return std::move(message).text();
}

std::vector<std::string> skipReasons(LanguageTexts& texts, const RunReport& report) {
    std::vector<std::string> reasons;
    for (const RemarkKind& kind : kRemarks) {
        const std::int64_t count = report.count(kind.remark);
        if (!kind.skips || count == 0) continue;
        std::string& reason = reasons.emplace_back(fmt::format("{}: {}", texts.ModulText(kind.text), count));
        if (kind.remark == Remark::UncoupledCode) reason += codesByName(texts, report);
    }
    return reasons;
}

}  // namespace kolmera
