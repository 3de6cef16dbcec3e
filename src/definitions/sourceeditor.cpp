#include "definitions/sourceeditor.h"

#include <algorithm>
#include <charconv>

#include "definitions/signnames.h"
#include "lang/errortext.h"
#include "lang/keys/source.h"
#include "lang/keys/sourceeditor.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "source/conversion/headings.h"

namespace kolmera {
namespace {

constexpr SourceKind kKinds[] = {SourceKind::Delimited, SourceKind::Fixed, SourceKind::Xlsx,
                                 SourceKind::Xls,       SourceKind::Ods,   SourceKind::Xml};
constexpr ModuleKey kKindNames[] = {text::source::kDelimited, text::source::kFixed, text::source::kXlsx,
                                    text::source::kXls,       text::source::kOds,   text::source::kXml};
constexpr CharacterSet kCharacterSets[] = {CharacterSet::Utf8,        CharacterSet::Utf16Le, CharacterSet::Utf16Be,
                                           CharacterSet::Windows1252, CharacterSet::Latin1,  CharacterSet::Latin9,
                                           CharacterSet::Oem850};
constexpr char kDelimiters[] = {';', ',', '\t', '|'};
constexpr char kQuotes[] = {'"', '\'', '\0'};
constexpr DateOrder kDateOrders[] = {DateOrder::Unknown, DateOrder::YearMonthDay, DateOrder::DayMonthYear,
                                     DateOrder::MonthDayYear};

template <typename Range, typename Value>
int placeIn(const Range& range, const Value& value) {
    const auto found = std::ranges::find(range, value);
    return found == std::ranges::end(range) ? -1 : static_cast<int>(found - std::ranges::begin(range));
}

template <typename Value, std::size_t Count>
std::optional<Value> at(const Value (&values)[Count], int place) {
    if (place < 0 || static_cast<std::size_t>(place) >= Count) return std::nullopt;
    return values[place];
}

std::optional<std::uint64_t> numberOf(std::string_view text) {
    text = trimmed(text);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// "1, 16, 46", counted from 1.
std::optional<std::vector<std::size_t>> startsOf(const std::string& text) {
    std::vector<std::size_t> starts;
    for (const std::string& each : split(text, ",")) {
        const auto number = numberOf(each);
        if (!number || *number == 0 || (!starts.empty() && *number - 1 <= starts.back())) return std::nullopt;
        starts.push_back(static_cast<std::size_t>(*number) - 1);
    }
    return starts;
}

std::string joined(const std::vector<std::string>& texts, std::string_view between) {
    std::string all;
    for (const std::string& text : texts) all.append(all.empty() ? "" : between).append(text);
    return all;
}

std::string startsText(const std::vector<std::size_t>& starts) {
    std::string text;
    for (const std::size_t start : starts) text.append(text.empty() ? "" : ", ").append(std::to_string(start + 1));
    return text;
}

}  // namespace

SourceEditor::SourceEditor(LanguageTexts& texts, std::filesystem::path file,
                           const std::optional<SourceSettings>& stored)
    : texts_(texts), file_(std::move(file)) {
    if (!stored) return;
    keep(stored->format);
    columns_ = stored->columns;
    leaveOut_ = stored->leaveOut;
}

/// Without headings, nothing is found by one.
SourceSettings SourceEditor::settings() const {
    SourceSettings settings{.format = format(), .headings = headings(), .columns = columns_, .leaveOut = leaveOut_};
    if (!settings.headings.empty()) return settings;
    const auto byNumber = [](ColumnName& name) {
        if (name.number != 0) name.heading.clear();
    };
    for (SourceColumn& column : settings.columns) {
        byNumber(column.from);
        byNumber(column.rule.join);
    }
    for (LeftOutRows& rows : settings.leaveOut) byNumber(rows.column);
    return settings;
}

void SourceEditor::keep(const SourceFormat& format) {
    known_ = {.kind = format.kind,
              .member = format.member,
              .characters = format.characters,
              .delimiter = format.delimiter,
              .quote = format.quote,
              .sheet = format.sheet,
              .record = format.record,
              .length = format.length};
    if (format.member.empty()) known_.member.reset();
    if (format.sheet.empty()) known_.sheet.reset();
    if (format.record.empty()) known_.record.reset();
    said_ = {.starts = format.starts,
             .skip = format.skip,
             .headings = format.headings,
             .decimalSign = format.decimalSign,
             .thousandsSign = format.thousandsSign,
             .dateOrder = format.dateOrder};
}

bool SourceEditor::detect() {
    error_.clear();
    rows_.clear();
    decodings_.clear();
    try {
        found_ = detectSource(file_, known_);
        apply();
        readRows();
        readDecodings();
    } catch (const PlatformError& error) {
        error_ = errorText(texts_, error);
    }
    buildProperties();
    return error_.empty();
}

void SourceEditor::apply() {
    SourceFormat& format = found_.format;
    const auto take = [](auto& value, const auto& said, double& confidence) {
        if (!said) return;
        value = *said;
        confidence = 1;
    };
    double& headings = found_.confidence.headings;
    if (format.kind == SourceKind::Fixed) take(format.starts, said_.starts, found_.confidence.kind);
    take(format.skip, said_.skip, headings);
    take(format.headings, said_.headings, headings);
    take(format.decimalSign, said_.decimalSign, found_.confidence.decimalSign);
    take(format.thousandsSign, said_.thousandsSign, found_.confidence.thousandsSign);
    take(format.dateOrder, said_.dateOrder, found_.confidence.dateOrder);
}

void SourceEditor::readRows() { rows_ = sampleRows(file_, found_.format, kShownRows); }

/// Lines that read the same in all of them say nothing.
void SourceEditor::readDecodings() {
    constexpr std::size_t kMost = 3, kLines = 4;
    const SourceKind kind = found_.format.kind;
    const bool isText = kind == SourceKind::Delimited || kind == SourceKind::Fixed;
    if (!isText || found_.confidence.characters >= kSureEnough || found_.characterSets.size() < 2) return;
    std::vector<std::vector<SampleRow>> all;
    for (const CharacterSet set : found_.characterSets) {
        if (all.size() == kMost) break;
        SourceFormat format = found_.format;
        format.characters = set;
        all.push_back(sampleRows(file_, format, kShownRows));
        decodings_.push_back({set, std::string(nameOf(set)), {}});
    }
    for (std::size_t row = 0; row < all.front().size() && decodings_.front().lines.size() < kLines; ++row) {
        const bool differs = std::ranges::any_of(
            all, [&](const auto& rows) { return row < rows.size() && rows[row].cells != all.front()[row].cells; });
        for (std::size_t i = 0; differs && i < all.size(); ++i) {
            const auto& cells = row < all[i].size() ? all[i][row].cells : std::vector<std::string>();
            decodings_[i].lines.push_back(joined(cells, "  "));
        }
    }
}

bool SourceEditor::isAscii() const {
    return std::ranges::all_of(rows_, [](const SampleRow& row) {
        return std::ranges::all_of(row.cells, [](const std::string& cell) { return asciiRun(cell) == cell.size(); });
    });
}

bool SourceEditor::maskMayReadIt() const {
    const SourceFormat& format = found_.format;
    const bool oneByte = format.characters == CharacterSet::Windows1252 || format.characters == CharacterSet::Latin1 ||
                         format.characters == CharacterSet::Oem850;
    const bool guess = found_.confidence.kind < kSureEnough || found_.confidence.delimiter < kSureEnough;
    if (!found_.members.empty()) return false;
    // A letter of two bytes moves what stands behind it.
    if (format.kind == SourceKind::Fixed) return oneByte || (format.characters == CharacterSet::Utf8 && isAscii());
    if (format.kind != SourceKind::Delimited) return false;
    return guess || (format.delimiter == '\t' && oneByte);
}

std::vector<std::string> SourceEditor::names(const std::vector<std::string>& signs) const {
    std::vector<std::string> names;
    names.reserve(signs.size());
    for (const std::string& sign : signs) names.push_back(signName(texts_, sign));
    return names;
}

void SourceEditor::add(Name name, ModuleKey caption, double confidence, std::vector<std::string> choices, int chosen) {
    properties_.push_back({.name = name,
                           .caption = texts_.ModulText(caption),
                           .choices = std::move(choices),
                           .chosen = chosen,
                           .text = {},
                           .sure = confidence >= kSureEnough});
}

void SourceEditor::addTyped(Name name, ModuleKey caption, double confidence, std::string text) {
    properties_.push_back({.name = name,
                           .caption = texts_.ModulText(caption),
                           .choices = {},
                           .chosen = -1,
                           .text = std::move(text),
                           .sure = confidence >= kSureEnough});
}

/// The names, and patterns that only one of them matches: next month's file has another name. What the job has is one
/// of them.
std::vector<std::string> SourceEditor::memberChoices() const {
    std::vector<std::string> choices = found_.members;
    const auto endingOf = [](const std::string& name) { return name.substr(std::min(name.rfind('.'), name.size())); };
    for (const std::string& name : found_.members) {
        const std::string ending = endingOf(name);
        if (ending.empty() || std::ranges::count(found_.members, ending, endingOf) != 1) continue;
        std::string pattern = "*";
        choices.push_back(pattern.append(ending));
    }
    const std::string& stored = found_.format.member;
    if (!stored.empty() && std::ranges::find(choices, stored) == choices.end()) choices.push_back(stored);
    return choices;
}

void SourceEditor::buildProperties() {
    properties_.clear();
    const SourceFormat& format = found_.format;
    const SourceConfidence& confidence = found_.confidence;
    std::vector<std::string> kinds;
    for (const ModuleKey& name : kKindNames) kinds.push_back(texts_.ModulText(name));
    add(Name::Kind, text::source::kKind, confidence.kind, std::move(kinds), placeIn(kKinds, format.kind));
    if (!found_.members.empty()) {
        const std::vector<std::string> members = memberChoices();
        const int member = format.member.empty() ? 0 : placeIn(members, format.member);
        add(Name::Member, text::source::kMember, confidence.member, members, member);
    }
    if (!found_.sheets.empty()) {
        const int sheet = format.sheet.empty() ? 0 : placeIn(found_.sheets, format.sheet);
        add(Name::Sheet, text::source::kSheet, confidence.sheet, found_.sheets, sheet);
    }
    addTextProperties();
    if (format.kind == SourceKind::Xml) addTyped(Name::Record, text::source::kRecord, 1, format.record);
    addTyped(Name::Skip, text::source::kSkip, confidence.headings, std::to_string(format.skip));
    if (format.kind != SourceKind::Xml) {
        add(Name::Headings, text::source::kHeadings, confidence.headings,
            {texts_.ModulText(text::source::kNoHeadings), texts_.ModulText(text::sourceeditor::kFirstRow)},
            format.headings ? 1 : 0);
    }
    add(Name::DecimalSign, text::source::kDecimalSign, confidence.decimalSign, {",", "."},
        placeIn(kDecimalSigns, format.decimalSign));
    add(Name::ThousandsSign, text::source::kThousandsSign, confidence.thousandsSign, names(kThousandsSigns),
        placeIn(kThousandsSigns, format.thousandsSign));
    add(Name::DateOrder, text::source::kDateOrder, format.dateOrder == DateOrder::Unknown ? 1 : confidence.dateOrder,
        {texts_.ModulText(text::sourceeditor::kNoDates), texts_.ModulText(text::source::kYearFirst),
         texts_.ModulText(text::source::kDayFirst), texts_.ModulText(text::source::kMonthFirst)},
        placeIn(kDateOrders, format.dateOrder));
}

void SourceEditor::addTextProperties() {
    const SourceFormat& format = found_.format;
    const SourceConfidence& confidence = found_.confidence;
    if (format.kind != SourceKind::Delimited && format.kind != SourceKind::Fixed) return;
    std::vector<std::string> sets;
    for (const CharacterSet set : kCharacterSets) sets.emplace_back(nameOf(set));
    add(Name::Characters, text::source::kCharacters, confidence.characters, std::move(sets),
        placeIn(kCharacterSets, format.characters));
    if (format.kind == SourceKind::Fixed) {
        addTyped(Name::Length, text::source::kLength, confidence.kind, std::to_string(format.length));
        addTyped(Name::Starts, text::source::kStarts, confidence.kind, startsText(format.starts));
        return;
    }
    add(Name::Delimiter, text::source::kDelimiter, confidence.delimiter, names({";", ",", "\t", "|"}),
        placeIn(kDelimiters, format.delimiter));
    add(Name::Quote, text::source::kQuote, confidence.quote, names({"\"", "'", ""}), placeIn(kQuotes, format.quote));
}

/// What was said of a file of another kind, but where it lies.
void SourceEditor::forget() {
    std::optional<std::string> member = std::move(known_.member);
    known_ = {};
    known_.member = std::move(member);
    said_ = {};
}

void SourceEditor::choose(Name name, int choice) {
    const auto place = static_cast<std::size_t>(std::max(choice, 0));
    switch (name) {
        case Name::Kind:
            forget();
            known_.kind = at(kKinds, choice);
            break;
        case Name::Member: {
            known_.member.reset();
            forget();
            const std::vector<std::string> members = memberChoices();
            if (place < members.size()) known_.member = members[place];
            break;
        }
        case Name::Sheet:
            if (place < found_.sheets.size()) known_.sheet = found_.sheets[place];
            said_ = {};
            break;
        case Name::Characters:
            known_.characters = at(kCharacterSets, choice);
            break;
        case Name::Delimiter:
            known_.delimiter = at(kDelimiters, choice);
            break;
        case Name::Quote:
            known_.quote = at(kQuotes, choice);
            break;
        case Name::Headings:
            said_.headings = choice == 1;
            break;
        case Name::DecimalSign:
            said_.decimalSign = at(kDecimalSigns, choice);
            break;
        case Name::ThousandsSign:
            if (place < kThousandsSigns.size()) said_.thousandsSign = kThousandsSigns[place];
            break;
        case Name::DateOrder:
            said_.dateOrder = at(kDateOrders, choice);
            break;
        default:
            return;
    }
    detect();
}

void SourceEditor::chooseCharacters(CharacterSet characters) {
    choose(Name::Characters, placeIn(kCharacterSets, characters));
}

void SourceEditor::type(Name name, const std::string& text) {
    if (name == Name::Skip) {
        if (const auto number = numberOf(text)) said_.skip = number;
    } else if (name == Name::Starts) {
        if (auto starts = startsOf(text)) said_.starts = std::move(starts);
    } else if (name == Name::Length) {
        if (const auto number = numberOf(text)) known_.length = number;
        known_.kind = SourceKind::Fixed;
        said_.starts.reset();
    } else if (name == Name::Record && !trimmed(text).empty()) {
        known_.record = std::string(trimmed(text));
    } else {
        return;
    }
    detect();
}

std::size_t SourceEditor::columns() const {
    std::size_t columns = 0;
    for (const SampleRow& row : rows_) columns = std::max(columns, row.cells.size());
    return columns;
}

std::vector<std::string> SourceEditor::headings() const {
    const bool named = found_.format.headings || found_.format.kind == SourceKind::Xml;
    return named && !rows_.empty() ? rows_.front().cells : std::vector<std::string>();
}

/// Those that the job names, and which the file has no more.
std::string SourceEditor::aboutHeadings() const {
    const SourceSettings shown = settings();
    ColumnFinder finder(shown.headings);
    for (const SourceColumn& column : shown.columns) {
        finder.find(column.from);
        finder.find(column.rule.join);
    }
    for (const LeftOutRows& rows : shown.leaveOut) finder.find(rows.column);
    std::string text;
    const auto add = [&](ModuleKey what, const std::vector<std::string>& headings) {
        if (!headings.empty()) text.append("\n").append(texts_.ModulTextMed(what, joined(headings, ", ")));
    };
    add(text::source::kHeadingsMissing, finder.fault().missing);
    add(text::source::kHeadingsDoubled, finder.fault().doubled);
    return text;
}

std::string SourceEditor::words() const {
    if (!error_.empty()) return error_;
    std::vector<std::string> words;
    for (const Property& property : properties_) {
        const bool lines = property.name == Name::Length && format().length == 0;
        const bool shown = (property.name <= Name::Record && !lines) || property.name == Name::Headings;
        if (!shown || (property.chosen < 0 && property.text.empty())) continue;
        std::string value =
            property.choices.empty() ? property.text : property.choices[static_cast<std::size_t>(property.chosen)];
        if (!property.sure) value.append(" ").append(texts_.ModulText(text::source::kNotSure));
        words.push_back(property.name == Name::Kind ? value : property.caption + ": " + value);
    }
    return texts_.ModulTextMed(text::sourceeditor::kTheFileIs, joined(words, " – ")) + aboutHeadings();
}

}  // namespace kolmera
