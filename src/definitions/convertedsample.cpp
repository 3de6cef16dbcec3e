#include "definitions/convertedsample.h"

#include <algorithm>

#include "definitions/masktarget.h"
#include "platform/lettercase.h"
#include "platform/workplaces.h"
#include "source/conversion/sourceconverter.h"
#include "source/detection/detection.h"
#include "source/readers/opensource.h"

namespace kolmera {
namespace {

constexpr std::size_t kSampleRows = 100;
constexpr std::uint64_t kRecords = 1000, kRoom = std::uint64_t{64} << 20;

std::size_t columnsOf(const std::filesystem::path& file, const SourceFormat& format) {
    std::size_t columns = 0;
    for (const SampleRow& row : sampleRows(file, format, kSampleRows)) columns = std::max(columns, row.cells.size());
    return columns;
}

const SourceColumn* named(const SourceSettings& settings, int column) {
    const auto found = std::ranges::find(settings.columns, column, &SourceColumn::column);
    return found == settings.columns.end() ? nullptr : &*found;
}

}  // namespace

TargetLayout sampleLayout(const std::optional<WholeMask>& mask, std::size_t columns) {
    TargetLayout layout;
    layout.records = TargetLayout::Records::Tabs;
    if (mask) layout = targetLayout(*mask);
    if (layout.records != TargetLayout::Records::Tabs) return layout;
    layout.columns.resize(std::max(layout.columns.size(), columns));
    for (TargetLayout::Column& column : layout.columns) {
        // What the mask does not read is shown as it stands.
        if (column.use == ColumnUse::Nothing) column.use = ColumnUse::Text;
    }
    return layout;
}

std::size_t columnsNamed(const std::vector<SourceColumn>& columns) {
    constexpr int kMost = 999;
    int last = 0;
    for (const SourceColumn& column : columns) last = std::max(last, std::min(column.column, kMost));
    return static_cast<std::size_t>(last);
}

ConvertedSample convertSample(const std::filesystem::path& file, SourceSettings settings,
                              const std::optional<WholeMask>& mask, const std::filesystem::path& dataFolder) {
    const TargetLayout layout =
        sampleLayout(mask, std::max(columnsOf(file, settings.format), columnsNamed(settings.columns)));
    ConvertedSample sample{.content = workFile(workPlaces(dataFolder), kRoom), .path = {}, .headings = {}};
    auto converter = std::make_unique<SourceConverter>(openRows(file, settings.format), settings, layout);
    if (converter->fault().any()) {
        for (SourceColumn& column : settings.columns) {
            if (column.from.number != 0) column.from.heading.clear();
        }
        converter = std::make_unique<SourceConverter>(openRows(file, settings.format), settings, layout);
    }
    std::string bytes;
    while (converter->records() < kRecords && converter->next(bytes)) {
    }
    sample.content.write(bytes);
    sample.path = pathOf(sample.content);
    const std::vector<std::string>& headings = converter->headings();
    for (std::size_t column = 0; column < layout.columns.size() && !headings.empty(); ++column) {
        const SourceColumn* from = named(settings, static_cast<int>(column) + 1);
        const bool byName = from != nullptr && !from->from.heading.empty();
        sample.headings.push_back(byName                     ? from->from.heading
                                  : column < headings.size() ? headings[column]
                                                             : std::string());
    }
    return sample;
}

void bindToHeadings(SourceSettings& settings, const WholeMask& mask) {
    if (mask.mask.FilTyp != 'T' || !settings.format.headings) return;
    for (const Relation& relation : mask.relations) {
        const auto place = static_cast<std::size_t>(relation.Källa) - 1;
        if (relation.Källa < 1 || place >= settings.headings.size() || named(settings, relation.Källa)) continue;
        const std::string& heading = settings.headings[place];
        const auto same = [&](const std::string& other) { return equalNoCase(trimmed(other), trimmed(heading)); };
        if (trimmed(heading).empty() || std::ranges::count_if(settings.headings, same) != 1) continue;
        settings.columns.push_back(
            {.column = relation.Källa, .from = {.heading = heading, .number = relation.Källa}, .rule = {}});
    }
}

}  // namespace kolmera
