#include "import/run/sourcestage.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>

#include "lang/keys/source.h"
#include "platform/pricefile.h"

namespace kolmera {
namespace {

constexpr std::size_t kPiece = 1 << 18;
constexpr std::uint64_t kSmall = std::uint64_t{64} << 20;

/// How a note of the source is told of. A number that does not fit is told by what reads it.
constexpr struct {
    SourceNote::Kind kind;
    Remark remark;
} kRemarkOf[] = {{SourceNote::Kind::Misfit, Remark::UnfitValue},
                 {SourceNote::Kind::Lacking, Remark::LackingCharacters},
                 {SourceNote::Kind::Cut, Remark::CutValue},
                 {SourceNote::Kind::Short, Remark::UnevenRecord},
                 {SourceNote::Kind::LeftOut, Remark::LeftOutRow},
                 {SourceNote::Kind::Breaks, Remark::BreakInValue},
                 {SourceNote::Kind::Malformed, Remark::MalformedText},
                 {SourceNote::Kind::StrayQuotes, Remark::StrayQuote},
                 {SourceNote::Kind::ErrorValue, Remark::ErrorValue}};

std::uint64_t sizeOf(const std::filesystem::path& file) {
    std::error_code unknown;
    const std::uintmax_t size = std::filesystem::file_size(file, unknown);
    return unknown ? 0 : size;
}

std::string quoted(const std::vector<std::string>& headings) {
    return fmt::format("\"{}\"", fmt::join(headings, "\", \""));
}

}  // namespace

Descriptor keptBytes(const std::filesystem::path& pipe, const std::vector<WorkPlace>& places,
                     const std::function<bool()>& cancelled) {
    Descriptor kept = workFile(places, kSmall);
    Descriptor from = pipe == kStandardInput ? Descriptor(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0))
                                             : Descriptor(pipe, O_RDONLY | O_NONBLOCK);
    PriceFile file(std::move(from), cancelled);
    file.tell([&kept](std::string_view bytes) { kept.write(bytes); });
    while (!file.bytes(kPiece).empty()) {
    }
    return kept;
}

std::optional<HeadingsChanged> convert(TakenSource& source, const SourceSettings& settings, const TargetLayout& layout,
                                       const std::vector<WorkPlace>& places, const std::function<bool()>& cancelled,
                                       const std::function<void(double)>& progress) {
    SourceLimits limits;
    limits.cancelled = cancelled;
    SourceConverter converter(openRows(source.bytes(), settings.format, limits), settings, layout);
    if (converter.fault().any()) return HeadingsChanged{converter.fault(), converter.headings()};
    const std::uint64_t expected = 2 * sizeOf(source.bytes()) + kSmall;
    Descriptor content = workFile(places, expected);
    RowNumbers rows(workFile(places, kSmall));
    std::string bytes;
    while (converter.next(bytes)) {
        rows.add(converter.row());
        if (bytes.size() < kPiece) continue;
        content.write(bytes);
        bytes.clear();
        progress(converter.progress());
    }
    content.write(bytes);
    rows.finish();
    source.content = std::move(content);
    source.rows = std::move(rows);
    source.notes = converter.notes();
    source.settings = settings;
    if (converter.asItIs() && layout.records == TargetLayout::Records::Lines)
        source.rowsPerRecord = static_cast<std::int64_t>(std::max(layout.lines, std::size_t{1}));
    return std::nullopt;
}

std::string headingMessage(LanguageTexts& texts, const HeadingsChanged& changed, const SourceSettings& settings) {
    const auto paragraph = [&](ModuleKey text, const std::vector<std::string>& headings) {
        return headings.empty() ? std::string() : texts.ModulTextMed(text, quoted(headings)) + "\r\n\r\n";
    };
    return paragraph(text::source::kHeadingsMissing, changed.fault.missing) +
           paragraph(text::source::kHeadingsDoubled, changed.fault.doubled) +
           paragraph(text::source::kHeadingsBefore, settings.headings) +
           paragraph(text::source::kHeadingsNow, changed.headings) + texts.ModulText(text::source::kNothingRead);
}

void tell(const SourceNotes& notes, RunReport& report) {
    for (const auto& [kind, remark] : kRemarkOf) {
        const SourceNotes::Tally& tally = notes.tally(kind);
        for (const SourceNote& note : tally.kept) {
            report.at(static_cast<std::int64_t>(note.row));
            report.about(note.key);
            report.remark(remark, note.column, note.text);
        }
        report.more(remark, static_cast<std::int64_t>(tally.count - tally.kept.size()));
    }
    report.at(0);
}

}  // namespace kolmera
