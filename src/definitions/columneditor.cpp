#include "definitions/columneditor.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "definitions/signnames.h"
#include "lang/keys/source.h"
#include "lang/keys/sourcecolumns.h"
#include "platform/encodings.h"
#include "source/conversion/rowconversion.h"
#include "source/readers/opensource.h"

namespace kolmera {
namespace {

using Meaning = ValueRule::Meaning;
using Zeros = ValueRule::Zeros;

constexpr Meaning kMeanings[] = {Meaning::Automatic, Meaning::Text, Meaning::Number, Meaning::Date};
constexpr Zeros kZeros[] = {Zeros::Kept, Zeros::Dropped, Zeros::Filled};

/// The place behind "as in the file", which is 0.
template <typename Range, typename Value>
int placeBehindFirst(const Range& range, const std::optional<Value>& value) {
    if (!value) return 0;
    const auto found = std::ranges::find(range, *value);
    return found == std::ranges::end(range) ? 0 : static_cast<int>(found - std::ranges::begin(range)) + 1;
}

template <typename Range, typename Value>
void takeBehindFirst(const Range& range, int choice, std::optional<Value>& value) {
    value.reset();
    const auto place = static_cast<std::size_t>(choice - 1);
    if (choice > 0 && place < std::size(range)) value = std::data(range)[place];
}

template <typename Value, std::size_t Count>
int placeIn(const Value (&values)[Count], Value value) {
    return static_cast<int>(std::ranges::find(values, value) - values);
}

template <typename Value, std::size_t Count>
Value at(const Value (&values)[Count], int place) {
    return values[static_cast<std::size_t>(std::clamp(place, 0, static_cast<int>(Count) - 1))];
}

struct TypedText {
    ColumnProperty name;
    ModuleKey caption;
    std::string ValueRule::*text;
};
constexpr TypedText kDropped[] = {
    {ColumnProperty::DropPrefix, text::sourcecolumns::kDropPrefix, &ValueRule::dropPrefix},
    {ColumnProperty::DropSuffix, text::sourcecolumns::kDropSuffix, &ValueRule::dropSuffix}};
constexpr TypedText kAdded[] = {{ColumnProperty::AddPrefix, text::sourcecolumns::kAddPrefix, &ValueRule::addPrefix},
                                {ColumnProperty::AddSuffix, text::sourcecolumns::kAddSuffix, &ValueRule::addSuffix}};

std::string ValueRule::*typedText(ColumnProperty name) {
    for (const auto& [each, caption, text] : kDropped) {
        if (each == name) return text;
    }
    for (const auto& [each, caption, text] : kAdded) {
        if (each == name) return text;
    }
    return name == ColumnProperty::JoinedBy ? &ValueRule::joinedBy : nullptr;
}

}  // namespace

ColumnEditor::ColumnEditor(LanguageTexts& texts, const std::filesystem::path& file, SourceSettings settings,
                           TargetLayout target)
    : texts_(texts), settings_(std::move(settings)), target_(std::move(target)) {
    hasColumns_ = target_.records == TargetLayout::Records::Tabs;
    readRows(file);
    for (std::size_t place = target_.columns.size(); place-- > 0;) {
        const auto named = std::ranges::find(settings_.columns, static_cast<int>(place) + 1, &SourceColumn::column);
        // A heading that is gone is what the window was opened for.
        if (named != settings_.columns.end() && !named->from.none() && placeOf(named->from) == 0)
            chosen_ = static_cast<int>(place);
    }
    refresh();
}

void ColumnEditor::readRows(const std::filesystem::path& file) {
    SourceTable table(openRows(file, settings_.format), settings_.format);
    settings_.headings = table.headings();
    columnsOfFile_ = settings_.headings.size();
    const SourceSettings onlyRows{.format = settings_.format, .leaveOut = settings_.leaveOut};
    const RowConversion conversion(onlyRows, {}, settings_.headings);
    std::vector<SourceValue> values;
    for (Row row; rows_.size() < kShownRows && table.next(row);) {
        const bool blank = std::ranges::all_of(row.cells, [](const Cell& cell) { return cell.text.empty(); });
        if (blank || conversion.read(row, values) != RowConversion::Use::Record) continue;
        KeptRow kept{.number = row.number, .cells = {}};
        for (const Cell& cell : row.cells) kept.cells.emplace_back(cell.text, cell.kind);
        rows_.push_back(std::move(kept));
        columnsOfFile_ = std::max(columnsOfFile_, row.cells.size());
    }
}

std::vector<std::string> ColumnEditor::columns() const {
    std::vector<std::string> columns;
    for (std::size_t place = 0; place < target_.columns.size(); ++place) {
        const int number = static_cast<int>(place) + 1;
        const auto named = std::ranges::find(settings_.columns, number, &SourceColumn::column);
        const bool isNamed = named != settings_.columns.end();
        const ColumnName from = isNamed ? named->from : ColumnName{.heading = {}, .number = number};
        std::string text = fmt::format("{}  {}", number, nameOf(from));
        if (isNamed && named->rule != ValueRule{})
            text.append(" ").append(texts_.ModulText(text::sourcecolumns::kChanged));
        columns.push_back(std::move(text));
    }
    return columns;
}

void ColumnEditor::chooseColumn(int place) {
    if (place < 0 || place >= static_cast<int>(target_.columns.size())) return;
    chosen_ = place;
    refresh();
}

void ColumnEditor::addColumn() {
    if (!canAddColumn()) return;
    target_.columns.push_back({.use = ColumnUse::Text});
    settings_.columns.push_back({.column = static_cast<int>(target_.columns.size())});
    chooseColumn(static_cast<int>(target_.columns.size()) - 1);
}

const SourceColumn* ColumnEditor::stored() const {
    const auto found = std::ranges::find(settings_.columns, chosen_ + 1, &SourceColumn::column);
    return found == settings_.columns.end() ? nullptr : &*found;
}

/// One that nobody has named comes from the same number, and by its heading where there is one: so it is kept.
SourceColumn ColumnEditor::column() const {
    if (const SourceColumn* column = stored()) return *column;
    SourceColumn column{.column = chosen_ + 1, .from = {.heading = {}, .number = chosen_ + 1}, .rule = {}};
    if (isUnique(static_cast<std::size_t>(chosen_)))
        column.from.heading = settings_.headings[static_cast<std::size_t>(chosen_)];
    return column;
}

SourceColumn& ColumnEditor::kept() {
    if (const SourceColumn* column = stored())
        return settings_.columns[static_cast<std::size_t>(column - settings_.columns.data())];
    return settings_.columns.emplace_back(column());
}

bool ColumnEditor::isUnique(std::size_t place) const {
    if (place >= settings_.headings.size() || trimmedBlanks(settings_.headings[place]).empty()) return false;
    ColumnFinder finder(settings_.headings);
    finder.find({.heading = settings_.headings[place], .number = 0});
    return !finder.fault().any();
}

int ColumnEditor::placeOf(const ColumnName& name) const {
    ColumnFinder finder(settings_.headings);
    const auto place = finder.find(name);
    return place ? static_cast<int>(*place) + 1 : 0;
}

std::string ColumnEditor::nameOf(const ColumnName& name) const {
    if (name.none()) return texts_.ModulText(text::sourcecolumns::kNoColumn);
    const int place = placeOf(name);
    if (place == 0) return texts_.ModulTextMed(text::sourcecolumns::kMissing, name.heading);
    const auto at = static_cast<std::size_t>(place) - 1;
    return at < settings_.headings.size() ? std::string(trimmedBlanks(settings_.headings[at])) : std::string();
}

void ColumnEditor::setPlace(ColumnName& name, int choice, bool byHeading) {
    if (choice < 0 || choice > static_cast<int>(columnsOfFile_)) return;  // the heading that is gone
    name = {.heading = {}, .number = choice};
    if (choice > 0 && byHeading && isUnique(static_cast<std::size_t>(choice) - 1))
        name.heading = settings_.headings[static_cast<std::size_t>(choice) - 1];
}

void ColumnEditor::choose(Name name, int choice) {
    if (target_.columns.empty()) return;
    SourceColumn& column = kept();
    ValueRule& rule = column.rule;
    switch (name) {
        case Name::From:
            setPlace(column.from, choice, true);
            break;
        case Name::FoundBy:
            setPlace(column.from, placeOf(column.from), choice == 0);
            break;
        case Name::Meaning:
            rule.meaning = at(kMeanings, choice);
            break;
        case Name::DecimalSign:
            takeBehindFirst(kDecimalSigns, choice, rule.decimalSign);
            break;
        case Name::ThousandsSign:
            takeBehindFirst(kThousandsSigns, choice, rule.thousandsSign);
            break;
        case Name::DateOrder:
            takeBehindFirst(kKnownDateOrders, choice, rule.dateOrder);
            break;
        case Name::Blanks:
            rule.trim = choice == 0;
            break;
        case Name::Zeros:
            rule.zeros = at(kZeros, choice);
            break;
        case Name::Join:
            setPlace(rule.join, choice, true);
            break;
        default:
            break;
    }
    refresh();
}

void ColumnEditor::type(Name name, const std::string& text) {
    if (target_.columns.empty()) return;
    constexpr int kWidest = 999;
    ValueRule& rule = kept().rule;
    if (name == Name::Fixed) {
        rule.fixed.reset();
        if (!text.empty()) rule.fixed = text;
    } else if (name == Name::Width) {
        int width = 0;
        std::from_chars(text.data(), text.data() + text.size(), width);
        rule.width = std::clamp(width, 0, kWidest);
    } else if (std::string ValueRule::*typed = typedText(name)) {
        rule.*typed = text;
    }
    refresh();
}

void ColumnEditor::replace(Replacements replacements) {
    if (target_.columns.empty()) return;
    std::erase_if(replacements, [](const auto& each) { return each.first.empty() && each.second.empty(); });
    if (replacements == rule().replace) return;
    kept().rule.replace = std::move(replacements);
    refresh();
}

void ColumnEditor::refresh() {
    convert();
    buildProperties();
}

void ColumnEditor::convert() {
    shown_.clear();
    unfit_ = lacking_ = 0;
    if (target_.columns.empty()) return;
    SourceSettings settings = settings_;
    settings.leaveOut.clear();
    settings.columns = {column()};
    TargetLayout target = target_;
    RowConversion conversion(settings, target, settings_.headings);
    std::vector<SourceValue> values;
    for (const KeptRow& kept : rows_) {
        Row row{.number = kept.number, .cells = {}};
        for (const auto& [text, kind] : kept.cells) row.cells.push_back({text, kind});
        if (conversion.read(row, values) != RowConversion::Use::Record || conversion.asItIs()) continue;
        const SourceValue& value = values[static_cast<std::size_t>(chosen_)];
        const std::string after = composed(value.text);
        const bool lacks = !lackingCharacters(after, target_.page).empty();
        unfit_ += value.fits ? 0 : 1;
        lacking_ += lacks ? 1 : 0;
        shown_.push_back({.row = kept.number,
                          .before = value.before,
                          .after = lacks ? toUtf8(fromUtf8(after, target_.page), target_.page) : after,
                          .fits = value.fits && !lacks});
    }
}

std::string ColumnEditor::remarks() const {
    const auto counted = [&](ModuleKey text, std::size_t count) {
        return texts_.ModulTextMed(text, fmt::format("{}", count));
    };
    if (target_.columns.empty()) return texts_.ModulText(text::sourcecolumns::kNoColumns);
    std::string text;
    if (unfit_ > 0) text = counted(text::sourcecolumns::kUnfit, unfit_);
    if (lacking_ > 0) text.append(text.empty() ? "" : " ").append(counted(text::sourcecolumns::kLacking, lacking_));
    if (!text.empty()) return text;
    // Nothing is read as a number then.
    return texts_.ModulText(target_.key == 0 ? text::sourcecolumns::kNoMask : text::sourcecolumns::kAllFit);
}

void ColumnEditor::add(Name name, ModuleKey caption, std::vector<std::string> choices, int chosen, bool enabled) {
    properties_.push_back({.name = name,
                           .caption = texts_.ModulText(caption),
                           .choices = std::move(choices),
                           .chosen = chosen,
                           .text = {},
                           .sure = true,
                           .enabled = enabled});
}

void ColumnEditor::addTyped(Name name, ModuleKey caption, std::string text, bool enabled) {
    properties_.push_back({.name = name,
                           .caption = texts_.ModulText(caption),
                           .choices = {},
                           .chosen = -1,
                           .text = std::move(text),
                           .sure = true,
                           .enabled = enabled});
}

/// No column, those of the file, and the present one where the file has it no more.
std::vector<std::string> ColumnEditor::sources(const ColumnName& present) const {
    std::vector<std::string> names = {texts_.ModulText(text::sourcecolumns::kNoColumn)};
    for (std::size_t place = 0; place < columnsOfFile_; ++place) {
        const std::string heading = place < settings_.headings.size() ? settings_.headings[place] : std::string();
        names.push_back(fmt::format("{}  {}", place + 1, trimmedBlanks(heading)));
    }
    if (!present.none() && placeOf(present) == 0) names.push_back(nameOf(present));
    return names;
}

std::vector<std::string> ColumnEditor::signs(const std::vector<std::string>& signs) const {
    std::vector<std::string> names = {texts_.ModulText(text::sourcecolumns::kAsInFile)};
    for (const std::string& sign : signs) names.push_back(signName(texts_, sign));
    return names;
}

void ColumnEditor::buildProperties() {
    properties_.clear();
    if (target_.columns.empty()) return;
    const auto text = [this](ModuleKey key) { return texts_.ModulText(key); };
    const SourceColumn column = this->column();
    const ValueRule& rule = column.rule;
    const auto placeAmong = [&](const ColumnName& name, const std::vector<std::string>& names) {
        return name.none() || placeOf(name) > 0 ? placeOf(name) : static_cast<int>(names.size()) - 1;
    };
    std::vector<std::string> names = sources(column.from);
    const int from = placeAmong(column.from, names);
    add(Name::From, text::sourcecolumns::kFrom, std::move(names), from);
    const int place = placeOf(column.from);
    add(Name::FoundBy, text::sourcecolumns::kFoundBy,
        {text(text::sourcecolumns::kByHeading), text(text::sourcecolumns::kByNumber)},
        column.from.heading.empty() ? 1 : 0, place > 0 && isUnique(static_cast<std::size_t>(place) - 1));
    add(Name::Meaning, text::sourcecolumns::kMeaning,
        {text(text::sourcecolumns::kAsMaskReads), text(text::sourcecolumns::kText), text(text::sourcecolumns::kNumber),
         text(text::sourcecolumns::kDate)},
        placeIn(kMeanings, rule.meaning));
    const bool number = rule.meaning == Meaning::Number || rule.meaning == Meaning::Automatic;
    const bool date = rule.meaning == Meaning::Date || rule.meaning == Meaning::Automatic;
    add(Name::DecimalSign, text::sourcecolumns::kDecimalSign, signs({",", "."}),
        placeBehindFirst(kDecimalSigns, rule.decimalSign), number);
    add(Name::ThousandsSign, text::sourcecolumns::kThousandsSign, signs(kThousandsSigns),
        placeBehindFirst(kThousandsSigns, rule.thousandsSign), number);
    add(Name::DateOrder, text::sourcecolumns::kDateOrder,
        {text(text::sourcecolumns::kAsInFile), text(text::source::kYearFirst), text(text::source::kDayFirst),
         text(text::source::kMonthFirst)},
        placeBehindFirst(kKnownDateOrders, rule.dateOrder), date);
    add(Name::Blanks, text::sourcecolumns::kBlanks,
        {text(text::sourcecolumns::kTakenAway), text(text::sourcecolumns::kKept)}, rule.trim ? 0 : 1);
    for (const TypedText& each : kDropped) addTyped(each.name, each.caption, rule.*each.text);
    add(Name::Zeros, text::sourcecolumns::kZeros,
        {text(text::sourcecolumns::kKept), text(text::sourcecolumns::kTakenAway), text(text::sourcecolumns::kFilled)},
        placeIn(kZeros, rule.zeros));
    addTyped(Name::Width, text::sourcecolumns::kWidth, rule.width == 0 ? std::string() : fmt::format("{}", rule.width),
             rule.zeros == Zeros::Filled);
    for (const TypedText& each : kAdded) addTyped(each.name, each.caption, rule.*each.text);
    addTyped(Name::Fixed, text::sourcecolumns::kFixed, rule.fixed.value_or(std::string()));
    names = sources(rule.join);
    const int joined = placeAmong(rule.join, names);
    add(Name::Join, text::sourcecolumns::kJoin, std::move(names), joined);
    addTyped(Name::JoinedBy, text::sourcecolumns::kJoinedBy, rule.joinedBy, !rule.join.none());
}

}  // namespace kolmera
