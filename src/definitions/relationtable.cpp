#include "definitions/relationtable.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "lang/keys/masksample.h"
#include "lang/keys/prismtyp.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

using Column = RelationTable::Column;

const std::vector<Column> kOfFields{Column::Källa, Column::Mål, Column::TypKod, Column::Division, Column::Exempel};
const std::vector<Column> kOfPieces{Column::Källa,  Column::FrånPos,  Column::Längd,  Column::Mål,
                                    Column::TypKod, Column::Division, Column::Exempel};

constexpr int kMostBytes = 9999;  ///< four digits in PRISMPOS.TXT
constexpr char kSearchKey = 'S', kNone = 'I';

/// Lists show a number, a tab and a text; a cell has no tab stops.
std::string inACell(std::string text) {
    std::ranges::replace(text, '\t', ' ');
    return text;
}

std::string behindTheTab(const std::string& text) { return text.substr(text.find('\t') + 1); }

template <typename Entries, typename Text>
std::vector<std::string> cells(const Entries& entries, const Text& text) {
    std::vector<std::string> made;
    made.reserve(entries.size());
    for (const auto& entry : entries) made.push_back(inACell(text(entry)));
    return made;
}

std::string textOf(const RuleEntries& entries, char letter) {
    const int place = placeOf(entries, letter);
    return place < 0 ? std::string(1, letter) : entries[static_cast<std::size_t>(place)].text;
}

}  // namespace

const std::vector<Column>& RelationTable::columns() const { return editor_.showsPositions() ? kOfPieces : kOfFields; }

std::string RelationTable::caption(Column column) const {
    switch (column) {
        case Column::Källa:
            return texts_.FormulärSträng(text::prismtyp::kSourceHeading);
        case Column::FrånPos:
            return texts_.FormulärSträng(text::prismtyp::kFromHeading);
        case Column::Längd:
            return texts_.FormulärSträng(text::prismtyp::kLengthHeading);
        case Column::Mål:
            return texts_.FormulärSträng(text::prismtyp::kTargetHeading);
        case Column::TypKod:
            return texts_.FormulärSträng(text::prismtyp::kRuleHeading);
        case Column::Division:
            return texts_.FormulärSträng(text::prismtyp::kDivisionHeading);
        case Column::Exempel:
            return texts_.FormulärSträng(text::prismtyp::kSampleHeading);
    }
    return {};
}

const Relation& RelationTable::relation(int row) const {
    return editor_.relations().at(static_cast<std::size_t>(row)).relation;
}

std::string RelationTable::text(int row, Column column) const {
    constexpr std::size_t kSourceLetters = 12;
    const Relation& shown = relation(row);
    const Target target = editor_.targetOf(shown);
    switch (column) {
        case Column::Källa:
            return inACell(fmt::format("{}..", firstCharacters(editor_.sourceText(shown), kSourceLetters)));
        case Column::FrånPos:
            return std::to_string(shown.FrånPos);
        case Column::Längd:
            return std::to_string(shown.Längd);
        case Column::Mål:
            return inACell(fmt::format("-->  {}", target.text));
        case Column::TypKod:
            return textOf(updateRules(target, texts_), shown.TypKod);
        case Column::Division:
            return textOf(divisions(target, texts_), shown.Division);
        case Column::Exempel:
            return behindTheTab(editor_.sourceText(shown));
    }
    return {};
}

// A piece is what its position says; its number is its place among the others.
bool RelationTable::canChange(Column column) const {
    return column != Column::Exempel && (column != Column::Källa || !editor_.showsPositions());
}

std::vector<std::string> RelationTable::choices(int row, Column column) const {
    const auto text = [](const auto& entry) { return entry.text; };
    switch (column) {
        case Column::Källa:
            return cells(editor_.sources(), text);
        case Column::Mål:
            return cells(editor_.targets(), text);
        case Column::TypKod:
            return cells(updateRules(editor_.targetOf(relation(row)), texts_), text);
        case Column::Division:
            return cells(divisions(editor_.targetOf(relation(row)), texts_), text);
        default:
            return {};
    }
}

int RelationTable::chosen(int row, Column column) const {
    const Relation& shown = relation(row);
    switch (column) {
        case Column::Källa:
            return shown.Källa <= static_cast<int>(editor_.sources().size()) ? shown.Källa - 1 : -1;
        case Column::Mål:
            return editor_.targetList().row(shown.Mål);
        case Column::TypKod:
            return placeOf(updateRules(editor_.targetOf(shown), texts_), shown.TypKod);
        case Column::Division:
            return placeOf(divisions(editor_.targetOf(shown), texts_), shown.Division);
        default:
            return -1;
    }
}

int RelationTable::greatest(Column column) { return column == Column::Källa ? kMostSources : kMostBytes; }

bool RelationTable::choose(int row, Column column, int place) {
    remark_.clear();
    if (place < 0 || place == chosen(row, column)) return true;
    const auto at = static_cast<std::size_t>(place);
    Relation changed = relation(row);
    switch (column) {
        case Column::Källa:
            changed.Källa = place + 1;
            break;
        case Column::Mål:
            return join(row, editor_.targets().at(at));
        case Column::TypKod:
            changed.TypKod = updateRules(editor_.targetOf(changed), texts_).at(at).letter;
            break;
        case Column::Division:
            setDivision(row, divisions(editor_.targetOf(changed), texts_).at(at).letter);
            return true;
        default:
            return false;
    }
    editor_.changeRelation(row, changed);
    return true;
}

bool RelationTable::type(int row, Column column, const std::string& typed) {
    remark_.clear();
    const std::string digits(trimmed(typed));
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    if (!whole || number < 1 || number > greatest(column)) {
        remark_ = texts_.FormulärSträngMed1(text::prismtyp::kWrongNumber, std::to_string(greatest(column)));
        return false;
    }
    Relation changed = relation(row);
    (column == Column::Källa ? changed.Källa : column == Column::FrånPos ? changed.FrånPos : changed.Längd) = number;
    if (changed != relation(row)) editor_.changeRelation(row, changed);
    return true;
}

int RelationTable::rowOfSearchKey() const {
    for (int row = 0; row < rows(); ++row) {
        if (relation(row).Division == kSearchKey) return row;
    }
    return -1;
}

/// Rules that the target does not have, or that were those of no target, become the ones that a new relation gets.
bool RelationTable::join(int row, const Target& target) {
    if (target.code > 0 && editor_.hasTarget(target.code)) {
        remark_ = texts_.ModulTextMed(text::masksample::kTargetTaken, behindTheTab(target.text));
        return false;
    }
    Relation changed = relation(row);
    const bool wasNone = changed.Mål == 0, wasKey = changed.Division == kSearchKey;
    changed.Mål = target.code;
    const RuleEntries rules = updateRules(target, texts_), seconds = divisions(target, texts_);
    if (wasNone || placeOf(rules, changed.TypKod) < 0) changed.TypKod = rules.front().letter;
    if (wasNone || placeOf(seconds, changed.Division) < 0)
        changed.Division = target.keyCapable() && editor_.hasSearchKey() ? kNone : seconds.front().letter;
    editor_.changeRelation(row, changed);
    if (wasKey && rowOfSearchKey() < 0) remark_ = texts_.FormulärSträng(text::prismtyp::kNoKeyLeft);
    return true;
}

/// A mask has one search key: it moves.
void RelationTable::setDivision(int row, char letter) {
    const int key = rowOfSearchKey();
    editor_.asOneStep([&] {
        if (letter == kSearchKey && key >= 0 && key != row) {
            Relation other = relation(key);
            other.Division = kNone;
            editor_.changeRelation(key, other);
            remark_ = texts_.FormulärSträngMed1(text::prismtyp::kKeyMoved, behindTheTab(editor_.targetOf(other).text));
        }
        Relation changed = relation(row);
        changed.Division = letter;
        editor_.changeRelation(row, changed);
    });
    if (key >= 0 && rowOfSearchKey() < 0) remark_ = texts_.FormulärSträng(text::prismtyp::kNoKeyLeft);
}

}  // namespace kolmera
