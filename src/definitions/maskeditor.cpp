#include "definitions/maskeditor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>

#include "definitions/savemessages.h"
#include "definitions/targetcodes.h"
#include "lang/errortext.h"
#include "lang/keys/definitions.h"
#include "lang/keys/mask.h"
#include "lang/keys/prismtyp.h"
#include "platform/attempt.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr const char* kOfferedLength = "100";

bool within(int row, std::size_t count) { return row >= 0 && static_cast<std::size_t>(row) < count; }

/// The letter of the entry at that place. A letter that the target's list does not offer has no place.
char letterAt(const RuleEntries& entries, int place) {
    return within(place, entries.size()) ? entries[static_cast<std::size_t>(place)].letter : 'I';
}

std::string ruleText(const RuleEntries& entries, char letter) {
    const int place = placeOf(entries, letter);
    return place < 0 ? std::string(1, letter) : entries[static_cast<std::size_t>(place)].text;
}

}  // namespace

std::int64_t EditedRelation::identity() const {
    constexpr std::int64_t kThreeDigits = 1000;
    return ((kThreeDigits + slot) * kThreeDigits + relation.Källa) * kThreeDigits + relation.Mål;
}

MaskEditor::MaskEditor(LanguageTexts& texts, MessageBoxes& boxes, std::filesystem::path dataFolder,
                       std::filesystem::path sample, SampleLook look)
    : texts_(texts),
      boxes_(boxes),
      dataFolder_(std::move(dataFolder)),
      sample_(std::move(sample)),
      look_(std::move(look)) {}

bool MaskEditor::open(SqlLayer& sql, int maskNumber) {
    try {
        targets_ = readTargets(sql, texts_);
        load(maskNumber);
    } catch (const PlatformError& error) {
        boxes_.MeddelandeVarning(errorText(texts_, error));
        return false;
    }
    readSources();
    begun_ = edited();
    if (relationsLeftOut_) boxes_.MeddelandeInfo(texts_.ModulTextMed(text::mask::kRelationsLeftOut, mask_.Namn));
    if (targets_.headingsLeftOut) boxes_.MeddelandeInfo(texts_.ModulText(text::mask::kHeadingsLeftOut));
    return true;
}

void MaskEditor::load(int maskNumber) {
    shown_ = MaskFile(dataFolder_).read(maskNumber);
    if (shown_) {
        mask_ = shown_->mask;
        for (const Relation& relation : shown_->relations) {
            relationsLeftOut_ = relations_.size() == std::size_t{kMostRelations};
            if (relationsLeftOut_) break;
            relations_.push_back({static_cast<int>(relations_.size()) + 1, relation});
        }
    } else {
        if (!convertedFrom_.empty()) mask_.FilTyp = 'T';
        mask_.AntalRader = "10";
        mask_.Postlängd = kOfferedLength;
    }
    if (mask_.FilTyp != 'F' && mask_.FilTyp != 'T') mask_.FilTyp = 'P';
    // What is neither yes nor no is shown as no, and saved as it is shown.
    for (char* answer : {&mask_.Tecken, &mask_.SkapaNya, &mask_.UppdatLev}) {
        if (*answer != 'J') *answer = 'N';
    }
}

/// A run drops one character behind each record: what parts records that are lines, the last one of others.
std::optional<int> MaskEditor::suggestedLength() const {
    if (mask_.number != 0 || mask_.FilTyp != 'P' || mask_.Postlängd != kOfferedLength || sample_.empty()) return {};
    std::size_t repeated = 0;
    PassedOverSilently passedOver;
    attempt(passedOver, "sample", [&] { repeated = repeatedLengthOf(sample_, codePageOf(mask_)); });
    if (repeated < 2) return {};
    return static_cast<int>(repeated) - 1;
}

std::string MaskEditor::caption() const {
    if (mask_.number != 0) return {};
    return texts_.FormulärSträngMed1(text::prismtyp::kNewMaskCaption,
                                     convertedFrom_.empty() ? sample_.filename().string() : convertedFrom_);
}

void MaskEditor::asOneStep(const std::function<void()>& changes, Kind kind) {
    if (withinStep_) return changes();
    struct Within {
        bool& within;
        ~Within() { within = false; }
    };
    State before = state();
    {
        const Within step{withinStep_};
        withinStep_ = true;
        changes();
    }
    if (before.mask == mask_ && before.relations == relations_) return;
    history_.changed(std::move(before), static_cast<int>(kind));
}

void MaskEditor::undo() {
    if (std::optional<State> before = history_.undo(state())) restore(std::move(*before));
}

void MaskEditor::redo() {
    if (std::optional<State> after = history_.redo(state())) restore(std::move(*after));
}

void MaskEditor::restore(State state) {
    const int number = mask_.number;  // given by saving, which is not taken back
    mask_ = std::move(state.mask);
    mask_.number = number;
    relations_ = std::move(state.relations);
    FrånPos_.clear();
    Längd_.clear();
    readSources();
    chooseRelation(state.chosenRelation);
}

void MaskEditor::setNamn(std::string name) {
    asOneStep([&] { mask_.Namn = std::move(name); }, Kind::Namn);
}

void MaskEditor::setSkapaNya(char rule) {
    asOneStep([&] { mask_.SkapaNya = rule; });
}

void MaskEditor::setUppdatLev(bool on) {
    asOneStep([&] { mask_.UppdatLev = on ? 'J' : 'N'; });
}

void MaskEditor::setFilTyp(char structure) {
    asOneStep([&] {
        mask_.FilTyp = structure;
        FrånPos_.clear();
        Längd_.clear();
        readSources();
    });
}

void MaskEditor::setTecken(char characterSet) {
    asOneStep([&] {
        mask_.Tecken = characterSet;
        readSources();
    });
}

void MaskEditor::setAntalRader(std::string typed) {
    asOneStep(
        [&] {
            mask_.AntalRader = std::move(typed);
            if (mask_.FilTyp == 'F') readSources();
        },
        Kind::AntalRader);
}

void MaskEditor::setPostlängd(std::string typed) {
    asOneStep(
        [&] {
            mask_.Postlängd = std::move(typed);
            if (mask_.FilTyp == 'P') readSources();
        },
        Kind::Postlängd);
}

std::vector<Piece> MaskEditor::pieces() const {
    std::vector<const EditedRelation*> bySlot;
    bySlot.reserve(relations_.size());
    for (const EditedRelation& edited : relations_) bySlot.push_back(&edited);
    std::ranges::sort(bySlot, {}, &EditedRelation::slot);
    std::vector<Piece> pieces;
    pieces.reserve(bySlot.size());
    for (const EditedRelation* edited : bySlot) pieces.push_back({edited->relation.FrånPos, edited->relation.Längd});
    return pieces;
}

// A run cuts piece i for relation i, so a relation's source is its own piece: after a removal the later ones move up.
void MaskEditor::numberPieces() {
    if (mask_.FilTyp != 'P') return;
    for (EditedRelation& edited : relations_) {
        edited.relation.Källa = 1 + static_cast<int>(std::ranges::count_if(
                                        relations_, [&](const auto& other) { return other.slot < edited.slot; }));
    }
}

SourceFields MaskEditor::cutSample() {
    const CodePage page = codePageOf(mask_);
    switch (mask_.FilTyp) {
        case 'F':
            return linesOf(sample_, typedNumber(mask_.AntalRader), page);
        case 'T': {
            SourceColumns columns = columnsOf(sample_, page);
            mask_.AntalKolumner = columns.count;
            return std::move(columns.fields);
        }
        default:
            return piecesOf(sample_, typedNumber(mask_.Postlängd), pieces(), page);
    }
}

void MaskEditor::readSources() {
    sources_.clear();
    chosen_.source = -1;
    if (sample_.empty()) return;
    PassedOverSilently passedOver;
    attempt(passedOver, "sample", [this] { sources_ = cutSample(); });
    if (mask_.FilTyp == 'P') chooseSource(static_cast<int>(sources_.size()) - 1);
}

void MaskEditor::showPositions(Piece piece) {
    FrånPos_ = std::to_string(piece.FrånPos);
    Längd_ = std::to_string(piece.Längd);
}

void MaskEditor::chooseSource(int row) {
    chosen_.source = within(row, sources_.size()) ? row : -1;
    if (chosen_.source >= 0 && showsPositions()) showPositions(sources_[static_cast<std::size_t>(row)].piece);
}

void MaskEditor::offerRules(const Target& target) {
    updateRules_ = kolmera::updateRules(target, texts_);
    divisions_ = kolmera::divisions(target, texts_);
}

void MaskEditor::chooseTarget(int row) {
    chosen_.target = within(row, targets().size()) ? row : -1;
    updateRules_.clear();
    divisions_.clear();
    chosen_.updateRule = chosen_.division = -1;
    if (chosen_.target < 0) return;
    const Target& target = targets()[static_cast<std::size_t>(row)];
    offerRules(target);
    chosen_.updateRule = 0;
    chosen_.division = target.keyCapable() && hasSearchKey() ? 1 : 0;
}

void MaskEditor::chooseRelation(int row) {
    chosen_.relation = within(row, relations_.size()) ? row : -1;
    if (chosen_.relation < 0) return;
    const Relation& relation = relations_[static_cast<std::size_t>(row)].relation;
    chooseSource(relation.Källa - 1);
    chooseTarget(targets_.row(relation.Mål));
    chosen_.updateRule = placeOf(updateRules_, relation.TypKod);
    chosen_.division = placeOf(divisions_, relation.Division);
}

std::string MaskEditor::sourceText(const Relation& relation) const {
    return within(relation.Källa - 1, sources_.size()) ? sources_[static_cast<std::size_t>(relation.Källa - 1)].text
                                                       : fmt::format("{:2}.\t", relation.Källa);
}

Target MaskEditor::targetOf(const Relation& relation) const {
    const int row = targets_.row(relation.Mål);
    return row < 0 ? Target{.code = relation.Mål, .text = std::to_string(relation.Mål) + ".\t"}
                   : targets()[static_cast<std::size_t>(row)];
}

std::string MaskEditor::relationText(const EditedRelation& edited) const {
    constexpr std::size_t kSourceLetters = 12;
    const Relation& relation = edited.relation;
    const Target target = targetOf(relation);
    return fmt::format("{}..\t-->  {}\t{}\t{}", firstCharacters(sourceText(relation), kSourceLetters), target.text,
                       ruleText(kolmera::updateRules(target, texts_), relation.TypKod),
                       ruleText(kolmera::divisions(target, texts_), relation.Division));
}

bool MaskEditor::hasTarget(int code) const {
    return std::ranges::any_of(relations_, [code](const auto& edited) { return edited.relation.Mål == code; });
}

bool MaskEditor::hasSearchKey() const {
    return std::ranges::any_of(relations_, [](const auto& edited) { return edited.relation.Division == 'S'; });
}

int MaskEditor::freeSlot() const {
    int slot = 1;
    while (std::ranges::find(relations_, slot, &EditedRelation::slot) != relations_.end()) ++slot;
    return slot;
}

void MaskEditor::dropRelation(int row) {
    relations_.erase(relations_.begin() + row);
    chosen_.relation = -1;
}

Relation MaskEditor::newRelation() const {
    return {.Källa = chosen_.source + 1,
            .Mål = targets()[static_cast<std::size_t>(chosen_.target)].code,
            .FrånPos = typedNumber(FrånPos_),
            .Längd = typedNumber(Längd_),
            .TypKod = letterAt(updateRules_, chosen_.updateRule),
            .Division = letterAt(divisions_, chosen_.division)};
}

void MaskEditor::createRelation() {
    if (chosen_.source < 0 || chosen_.target < 0) return;
    const Relation relation = newRelation();
    if (relation.Mål > 0 && hasTarget(relation.Mål)) {
        if (chosen_.relation < 0 || !agreesToReplace(relation.Mål)) return;
        asOneStep([&] {
            dropRelation(chosen_.relation);
            join(relation);
        });
        return;
    }
    join(relation);
}

bool MaskEditor::join(const Relation& relation) {
    if (relations_.size() >= std::size_t{kMostRelations}) {
        boxes_.MeddelandeInfo(texts_.FormulärSträng(text::prismtyp::kTooManyRelations));
        return false;
    }
    asOneStep([&] {
        relations_.push_back({freeSlot(), relation});
        numberPieces();
        if (showsPositions()) readSources();
    });
    return true;
}

Relation MaskEditor::ordinaryRelation(int targetRow, int source, Piece piece) {
    chooseTarget(targetRow);
    Relation relation = newRelation();
    relation.Källa = source;
    relation.FrånPos = piece.FrånPos;
    relation.Längd = piece.Längd;
    return relation;
}

void MaskEditor::movePiece(int relationRow, Piece piece) {
    asOneStep([&] {
        Relation& relation = relations_.at(static_cast<std::size_t>(relationRow)).relation;
        relation.FrånPos = piece.FrånPos;
        relation.Längd = piece.Längd;
        readSources();
    });
}

void MaskEditor::changeRelation(int row, const Relation& relation) {
    asOneStep([&] {
        relations_.at(static_cast<std::size_t>(row)).relation = relation;
        if (showsPositions()) readSources();
    });
    chooseRelation(row);
}

void MaskEditor::removeRelation() {
    if (chosen_.relation >= 0) removeRelations({chosen_.relation});
}

void MaskEditor::removeRelations(const std::vector<int>& rows) {
    std::vector<int> fromBehind = rows;
    std::ranges::sort(fromBehind, std::ranges::greater());
    fromBehind.erase(std::unique(fromBehind.begin(), fromBehind.end()), fromBehind.end());
    asOneStep([&] {
        for (const int row : fromBehind) {
            if (within(row, relations_.size())) dropRelation(row);
        }
        FrånPos_.clear();
        Längd_.clear();
        numberPieces();
        if (showsPositions()) readSources();
    });
}

/// The selected relation goes: the user may well mean the one that has the target.
bool MaskEditor::agreesToReplace(int target) {
    if (relations_[static_cast<std::size_t>(chosen_.relation)].relation.Mål == target) return true;
    const int row = targets_.row(target);
    const std::string text = row < 0 ? std::to_string(target) : targets()[static_cast<std::size_t>(row)].text;
    const std::string name(trimmed(text.substr(text.find('\t') + 1)));
    return boxes_.MeddelandeJaNejNej(texts_.ModulTextMed(text::definitions::kAskToReplaceRelation, name)) ==
           Answer::Yes;
}

WholeMask MaskEditor::edited() const {
    WholeMask edited{.mask = mask_, .relations = {}};
    for (const EditedRelation& relation : relations_) edited.relations.push_back(relation.relation);
    return edited;
}

/// What is wrong with the name; empty when nothing is.
std::string MaskEditor::wrongName() const {
    if (mask_.Namn.empty()) return texts_.FormulärSträng(text::prismtyp::kNameMissing);
    return whyNotStored(mask_.Namn, kMaskNameLength, texts_);
}

void MaskEditor::tell(const PlatformError& error) {
    const bool taken = error.number() == errors::kDuplicateKey;
    tellNotSaved(error,
                 {.changedElsewhere = text::definitions::kMaskChangedNothingSaved,
                  .nameTaken = text::definitions::kMaskNameTaken,
                  .name = taken ? mask_.Namn : begun_.mask.Namn},
                 texts_, boxes_);
}

MaskEditor::Saved MaskEditor::save() {
    mask_.Namn = trimmed(composed(mask_.Namn));
    if (const std::string wrong = wrongName(); !wrong.empty()) {
        boxes_.MeddelandeInfo(wrong);
        return Saved::WrongName;
    }
    try {
        MaskFile masks(dataFolder_);
        if (mask_.number == 0 && masks.all().size() >= std::size_t{kMostMasks}) {
            boxes_.MeddelandeVarning(texts_.ModulText(text::mask::kTooManyMasks));
            return Saved::Failed;
        }
        mask_.number = masks.save(mask_, edited().relations, shown_);
        shown_ = masks.read(mask_.number);
    } catch (const PlatformError& error) {
        tell(error);
        return error.number() == errors::kDuplicateKey ? Saved::WrongName : Saved::Failed;
    }
    tellWhatRunsWillDo(edited().relations);
    return Saved::Yes;
}

/// Products are found by the supplier's article number among the supplier's own; those that the mask makes are
/// nobody's.
bool MaskEditor::doublesProducts() const {
    const auto has = [this](auto&& test) {
        return std::ranges::any_of(relations_, [&](const auto& edited) { return test(edited.relation); });
    };
    return mask_.SkapaNya == 'J' &&
           has([](const Relation& each) { return each.Division == 'S' && each.Mål == target("Levartikelnr"); }) &&
           !has([](const Relation& each) { return each.Mål == target("Leverantör") && each.TypKod != 'I'; });
}

void MaskEditor::tellWhatRunsWillDo(const std::vector<Relation>& relations) {
    std::vector<std::string> remarks;
    if (doublesProducts()) remarks.push_back(texts_.ModulText(text::mask::kDoublesProducts));
    if (look_ && !sample_.empty()) std::ranges::move(look_(mask_, relations, sample_), std::back_inserter(remarks));
    if (!remarks.empty()) boxes_.MeddelandeInfo(fmt::format("{}", fmt::join(remarks, "\r\n\r\n")));
}

}  // namespace kolmera
