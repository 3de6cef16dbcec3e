#include "source/detection/textlayout.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/encodings.h"
#include "platform/error.h"
#include "source/characters.h"
#include "source/detection/recordlength.h"
#include "source/readers/readers.h"

namespace kolmera {
namespace {

constexpr std::size_t kLookedRows = 500;
constexpr std::size_t kFewRows = 50;
constexpr std::size_t kSample = std::size_t{2} << 20;
constexpr std::size_t kMostAbove = 20;
constexpr double kAbove = 0.4;    // the weight of such a row
constexpr double kRagged = 0.75;  // of a row with several cells, but not as many as most have

/// How well a delimiter and a quote take a text apart.
struct Cutting {
    char delimiter = ';';
    char quote = '"';
    std::size_t columns = 1;
    double evenness = 0;    ///< share of the rows with as many cells as most have; see kRagged
    bool isBroken = false;  ///< a quote is never closed, or a row has too many cells
    SourceRemarks remarks;

    [[nodiscard]] double score() const {
        // In ';' texts the decimal sign is a comma, in tab texts the texts have them.
        const double prior = delimiter == ',' ? 0.8 : delimiter == '|' ? 0.95 : 1;
        return isBroken || columns < 2 ? 0 : evenness * evenness * prior;
    }
};

Cutting cutWith(const std::string& text, char delimiter, char quote) {
    SourceFormat format;
    format.delimiter = delimiter;
    format.quote = quote;
    Cutting cutting;
    cutting.delimiter = delimiter;
    cutting.quote = quote;
    std::map<std::size_t, std::size_t> rowsByCells;
    std::size_t rows = 0;
    std::size_t above = 0;
    const auto reader = readDelimited(SourceFile::ofBytes(text), format, {});
    try {
        for (Row row; rows < kLookedRows && reader->next(row);) {
            if (row.cells.size() < 2 && (row.cells.empty() || row.cells[0].text.empty())) continue;
            // What stands above a table says little of its delimiter.
            if (row.cells.size() < 2 && rows == 0 && ++above <= kMostAbove) continue;
            ++rowsByCells[row.cells.size()];
            ++rows;
        }
    } catch (const PlatformError&) {
        // The quote may be closed behind the end of the sample.
        cutting.isBroken = text.size() < kSample / 2 || rows < kFewRows;
    }
    cutting.remarks = reader->remarks();
    std::size_t most = 0;
    for (const auto& [cells, count] : rowsByCells) {
        if (cells < 2 || count * cells < most * cutting.columns) continue;
        most = count;
        cutting.columns = cells;
    }
    double even = static_cast<double>(most);
    for (const auto& [cells, count] : rowsByCells) {
        if (cells > 1 && cells != cutting.columns) even += static_cast<double>(count) * kRagged;
    }
    const double all = static_cast<double>(rows) + static_cast<double>(above) * kAbove;
    cutting.evenness = rows == 0 ? 0 : even / all;
    return cutting;
}

/// Quotes are quotes unless the text is more even without them.
Cutting cutWith(const std::string& text, char delimiter, const KnownOfSource& known) {
    if (known.quote) return cutWith(text, delimiter, *known.quote);
    const Cutting quoted = cutWith(text, delimiter, '"');
    const bool isDoubtful =
        quoted.isBroken || quoted.remarks.strayQuotes.count > 0 || quoted.remarks.lineBreaks.count > 0;
    if (!isDoubtful) return quoted;
    const Cutting plain = cutWith(text, delimiter, '\0');
    return plain.score() > quoted.score() ? plain : quoted;
}

/// What stands in the lines of a text, by position: a column begins behind positions that are blank in all of them.
struct Positions {
    std::vector<std::size_t> filled;  ///< lines with a character there
    std::size_t lines = 0;

    std::map<std::size_t, std::size_t> linesByLength;

    void add(std::string_view line) {
        ++lines;
        std::size_t at = 0;
        for (; !line.empty(); ++at) {
            if (at >= filled.size()) filled.resize(at + 1);
            const FirstCharacter first = firstCharacter(line);
            if (line.front() != ' ' && !beginsWithTableLine(line)) ++filled[at];
            line.remove_prefix(first.length);
        }

        ++linesByLength[at];
    }

    /// Columns between blanks. One that is filled in few lines at both of its edges is a word of the one before: true
    /// columns stand to the left or to the right.
    [[nodiscard]] std::vector<std::size_t> starts() const {
        std::vector<std::size_t> starts;
        for (std::size_t at = 0; at < filled.size();) {
            if (isBlank(at)) {
                ++at;
                continue;
            }
            const std::size_t start = at;
            while (at < filled.size() && !isBlank(at)) ++at;
            const std::size_t edge = std::max(filled[start], filled[at - 1]);
            if (starts.empty() || edge * 2 >= lines) starts.push_back(start);
        }
        if (!starts.empty()) starts.front() = 0;
        return starts;
    }

  private:
    /// A heading may reach into the gap between two columns.
    [[nodiscard]] bool isBlank(std::size_t at) const { return filled[at] * 25 < lines; }
};

/// A page's heading stands in a text once for each page, and a line of dashes goes through all columns.
bool isDrawn(std::string_view line) {
    while (!line.empty()) {
        const FirstCharacter first = firstCharacter(line);
        const bool isLine = std::string_view("-=_+|*. \t\f").find(line.front()) != std::string_view::npos;
        if (!isLine && !beginsWithTableLine(line)) return false;
        line.remove_prefix(first.length);
    }
    return true;
}

std::string withoutDigits(std::string_view line) {
    std::string text(line);
    std::ranges::replace_if(
        text, [](char c) { return c >= '0' && c <= '9'; }, '0');
    return text;
}

/// `length`: of records that nothing parts; 0: lines.
Positions positionsOf(std::string_view text, std::size_t length) {
    constexpr std::size_t kLookedLines = 1000;
    constexpr std::size_t kLongestLine = 4096;
    Positions positions;
    std::set<std::string> words;
    while (!text.empty() && positions.lines < kLookedLines) {
        const std::size_t end =
            length > 0 ? firstCharacters(text, length).size() : std::min(text.find_first_of("\r\n"), text.size());
        const std::string_view line = text.substr(0, end).substr(0, kLongestLine);
        text.remove_prefix(std::min(end + (length > 0 ? 0 : 1), text.size()));
        if (isDrawn(line)) continue;
        const bool hasDigits = line.find_first_of("0123456789") != std::string_view::npos;
        const std::string worded = withoutDigits(line);
        if (!words.insert(worded).second && (!hasDigits || worded.starts_with('\f'))) continue;
        positions.add(line);
    }
    return positions;
}

/// Whether lines look like columns at fixed positions, from 0 to 1.
double fixedness(const Positions& positions, std::size_t columns) {
    if (positions.lines < 2 || columns < 2) return 0;
    std::size_t alike = 0;
    for (const auto& [length, count] : positions.linesByLength) alike = std::max(alike, count);
    const double sameLength = static_cast<double>(alike) / static_cast<double>(positions.lines);
    return positions.lines >= 5 ? 0.6 + 0.3 * sameLength : 0.5;
}

/// Of records that no line end parts; 0 where there are lines.
std::uint64_t lengthOf(std::string_view text, bool isWhole, const KnownOfSource& known) {
    constexpr std::size_t kLooked = std::size_t{1} << 18;
    if (known.length) return *known.length;
    if (known.delimiter || (known.kind && *known.kind != SourceKind::Fixed)) return 0;
    const std::string_view beginning = text.substr(0, kLooked);
    const std::string_view records = beginning.substr(0, beginning.find_last_not_of("\r\n\x1A") + 1);
    if (records.find_first_of("\r\n") != std::string_view::npos) return 0;
    return repeatedLength(records, isWhole && beginning.size() == text.size());
}

}  // namespace

void detectLayout(std::string text, bool isWhole, const KnownOfSource& known, Detection& detection) {
    SourceFormat& format = detection.format;
    SourceConfidence& confidence = detection.confidence;
    const std::uint64_t length = lengthOf(text, isWhole, known);
    if (length > 0) {
        const std::vector<std::size_t> starts = positionsOf(text, length).starts();
        format.kind = SourceKind::Fixed;
        format.length = length;
        format.starts = starts.empty() ? std::vector<std::size_t>{0} : starts;
        confidence.kind = known.kind && known.length ? 1 : 0.7;
        return;
    }
    if (text.size() > kSample) text.resize(text.find_last_of("\r\n", kSample) + 1);
    constexpr char kDelimiters[] = {';', '\t', '|', ','};
    Cutting best;
    double second = 0;
    for (const char delimiter : kDelimiters) {
        if (known.delimiter && *known.delimiter != delimiter) continue;
        const Cutting cutting = cutWith(text, delimiter, known);
        const bool better =
            cutting.score() > best.score() || (cutting.score() == best.score() && cutting.columns > best.columns);
        second = std::max(second, better ? best.score() : cutting.score());
        if (better) best = cutting;
    }
    if (known.delimiter && best.delimiter != *known.delimiter) best = cutWith(text, *known.delimiter, known);

    const Positions positions = positionsOf(text, 0);
    const std::vector<std::size_t> starts = positions.starts();
    const double fixed = known.delimiter ? 0 : fixedness(positions, starts.size());
    const bool isFixed = known.kind ? *known.kind == SourceKind::Fixed : fixed > best.score();
    format.kind = isFixed ? SourceKind::Fixed : SourceKind::Delimited;
    confidence.kind = known.kind ? 1 : isFixed ? fixed : std::max(best.score(), 0.2);
    if (isFixed) {
        format.starts = starts.empty() ? std::vector<std::size_t>{0} : starts;
        return;
    }
    format.delimiter = best.delimiter;
    format.quote = best.quote;
    confidence.delimiter = known.delimiter ? 1 : best.score() == 0 ? 0 : best.score() / (best.score() + second * 0.3);
    confidence.quote = known.quote ? 1 : best.remarks.strayQuotes.count > 0 ? 0.7 : 0.95;
}

}  // namespace kolmera
