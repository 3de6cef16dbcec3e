#include "history/window/openrecord.h"

#include <QElapsedTimer>
#include <algorithm>

#include "history/changereport.h"
#include "history/fileexcerpt.h"
#include "history/runfolder.h"
#include "history/warnings.h"
#include "history/window/changewindow.h"
#include "history/window/companyproducts.h"
#include "history/window/excerptwindow.h"
#include "import/run/recordeddefinition.h"
#include "import/run/runreport.h"
#include "lang/errortext.h"
#include "lang/keys/boxes.h"
#include "lang/keys/changes.h"
#include "lang/keys/terminal.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "ui/forms.h"
#include "ui/lockwait.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kPatience = 300;  ///< milliseconds before the waiting is shown

RecordSource sourceOf(const RecordReader& reader) {
    return {.header = reader.header(),
            .forEachChange = [&](const auto& take) { reader.forEachChange(take); },
            .forEachRemark = [&](const auto& take) { reader.forEachRemark(take); }};
}

std::string remarkText(LanguageTexts& texts, std::string_view name) {
    if (name == kFailedStatement) return texts.ModulText(text::terminal::kFailedStatements);
    for (const RemarkKind& kind : kRemarks) {
        if (kind.name == name) return texts.ModulText(kind.text);
    }
    return std::string(name);
}

bool readReport(Program& program, QWidget& parent, ChangeReport& report) {
    LockWait wait(parent);
    QElapsedTimer waited;
    waited.start();
    const bool whole = report.read([&](std::int64_t changes) {
        return waited.elapsed() < kPatience ||
               wait.keepWaiting(
                   toQt(program.texts.ModulTextMed(text::changes::kReading, grouped(changes, program.state.locale))),
                   toQt(program.texts.ModulText(text::boxes::kCancel)));
    });
    if (!whole) return false;
    PassedOverSilently passedOver;  // what cannot be read says less, and no more: the changes themselves are there
    attempt(passedOver, "Körningar", [&] {
        const std::vector<RunHeader> runs = RunFolder(program.state.dataFolder()).list();
        report.warn(previousRun(runs, report.header()));
    });
    attempt(passedOver, "Produkt", [&] { nameProducts(program, report); });
    return true;
}

/// Of a text that a preview told: what the notices of its record do not say already, a line.
std::string notNoticed(const std::string& told, std::span<const Notice> notices) {
    std::string line;
    for (const std::string& paragraph : split(told, "\r\n\r\n")) {
        // One that quotes the file says more than a notice.
        const bool quotes = paragraph.find(": \"") != std::string::npos;
        const auto saysIt = [&](const Notice& notice) { return paragraph.starts_with(notice.text + ": "); };
        if (!quotes && std::ranges::any_of(notices, saysIt)) continue;
        line.append(line.empty() ? "" : "  ").append(replaceAll(paragraph, "\r\n", " "));
    }
    return line;
}

std::vector<Notice> noticesOf(std::span<const std::string> told, std::span<const Notice> known) {
    std::vector<Notice> notices;
    for (const std::string& text : told) {
        std::string line = notNoticed(text, known);
        if (!line.empty()) notices.push_back({.warning = true, .name = {}, .text = std::move(line), .records = {}});
    }
    return notices;
}

void tellUnreadable(Program& program, const PlatformError& error) {
    program.boxes.MeddelandeVarning(
        program.texts.ModulTextMed(text::changes::kUnreadableRecord, errorText(program.texts, error)));
}

}  // namespace

bool showRecord(Program& program, QWidget* parent, const RecordReader& record, std::span<const std::string> told) {
    try {
        ChangeReport report(sourceOf(record), program.texts, program.state.locale,
                            [&](std::string_view name) { return remarkText(program.texts, name); });
        if (!readReport(program, *parent, report)) return false;
        report.warn(noticesOf(told, report.notices()));
        ChangeWindow form(program, report, parent);
        const RecordedDefinition definition = recordedDefinition(record.header());
        RecordedPriceFile file(record.header().priceFile, definition.codePage, definition.source);
        form.showRecords = [&](QWidget* over, const std::vector<std::int64_t>& records, std::size_t first) {
            const auto placeOf = [&](std::int64_t number) {
                return definition.source ? RecordPlace{.record = number} : record.place(number);
            };
            ExcerptWindow excerpt(program, file, placeOf, records, first, over);
            VisaFormulär(program, excerpt, true);
        };
        const bool remarked = std::ranges::any_of(report.notices(), [](const Notice& each) { return !each.warning; });
        if (program.saveRejects && remarked) {
            form.saveRejects = [&](QWidget* over) { program.saveRejects(over, record); };
        }
        if (program.explainPrice && record.header().kind != RunKind::Undo) {
            form.explainPrice = [&](QWidget* over, const std::string& product, const std::string& column) {
                program.explainPrice(over, record.header(), product, column);
            };
        }
        form.load();
        VisaFormulär(program, form, true);
        return form.runs();
    } catch (const PlatformError& error) {
        tellUnreadable(program, error);
        return false;
    }
}

bool showRecord(Program& program, QWidget* parent, const std::filesystem::path& file) {
    std::optional<RecordReader> record;
    try {
        record.emplace(file);
    } catch (const PlatformError& error) {
        tellUnreadable(program, error);
        return false;
    }
    return showRecord(program, parent, *record);
}

}  // namespace kolmera
