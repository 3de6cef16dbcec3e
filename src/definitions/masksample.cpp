#include "definitions/masksample.h"

#include <fmt/format.h>

#include <algorithm>

#include "definitions/targetcodes.h"
#include "lang/errortext.h"
#include "lang/keys/masksample.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

using Reason = TargetSuggestion::Reason;

std::size_t place(int number) { return static_cast<std::size_t>(number); }

bool same(Piece a, Piece b) { return a.FrånPos == b.FrånPos && a.Längd == b.Längd; }
Piece pieceOf(const Relation& relation) { return {relation.FrånPos, relation.Längd}; }

std::string nameOf(const Target& target) {
    return std::string(trimmed(target.text.substr(target.text.find('\t') + 1)));
}

std::string ruleText(const RuleEntries& entries, char letter) {
    const int found = placeOf(entries, letter);
    return found < 0 ? std::string(1, letter) : entries[place(found)].text;
}

ModuleKey whyText(Reason reason) {
    switch (reason) {
        case Reason::CheckDigits:
            return text::masksample::kByCheckDigits;
        case Reason::Suppliers:
            return text::masksample::kBySuppliers;
        case Reason::Dates:
            return text::masksample::kByDates;
        case Reason::Prices:
            return text::masksample::kByPrices;
        default:
            return text::masksample::kByHeading;
    }
}

/// A character a byte; what is not to be seen is a dot.
std::string lineOf(std::string_view bytes, CodePage page) {
    std::string line;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        const bool control = code < 0x20 || code == 0x7F;
        line += control ? std::string("·") : toUtf8(std::string_view(&byte, 1), page);
    }
    return line;
}

}  // namespace

MaskSample::MaskSample(LanguageTexts& texts, MaskEditor& editor, HeadingWords words, std::vector<SupplierRow> suppliers,
                       SampleRun run, std::vector<std::string> headings)
    : texts_(texts),
      editor_(editor),
      words_(std::move(words)),
      suppliers_(std::move(suppliers)),
      run_(std::move(run)),
      headings_(std::move(headings)),
      ruler_(typedNumber(editor.mask().Postlängd)) {
    readRecords();
    if (hasRuler()) {
        for (const EditedRelation& edited : editor_.relations()) ruler_.setAround(pieceOf(edited.relation));
    }
    findHeadings();
    if (headingsInFile_ && records() > 1) record_ = 1;
    present();
    choose(rows_.empty() ? -1 : 0);
}

void MaskSample::readRecords() {
    PassedOverSilently passedOver;
    attempt(passedOver, "sample", [this] { records_ = recordsOf(editor_.sample(), editor_.mask(), kReadRecords); });
    const std::size_t shown = std::min(kShownRecords, records_.bytes.size());
    for (std::size_t record = 0; record < shown; ++record) {
        lines_.push_back(lineOf(records_.bytes[record], codePageOf(editor_.mask())));
    }
    for (const auto& record : records_.fields) fieldCount_ = std::max(fieldCount_, static_cast<int>(record.size()));
    fieldCount_ = std::min(fieldCount_, kMostSources);
}

std::vector<std::string> MaskSample::fieldsOf(std::size_t record) const {
    if (!hasRuler()) return records_.fields[record];
    std::vector<std::string> fields;
    for (const Piece& piece : ruler_.pieces()) {
        fields.push_back(printable(toUtf8(cut(records_.bytes[record], piece), codePageOf(editor_.mask()))));
    }
    return fields;
}

/// The first record of a file whose source has none may be its headings.
void MaskSample::findHeadings() {
    if (records() == 0 || (!headings_.empty() && !headingsInFile_)) return;
    std::vector<std::string> first = fieldsOf(0);
    headingsInFile_ = areHeadings(first, words_);
    headings_ = headingsInFile_ ? std::move(first) : std::vector<std::string>();
}

std::string MaskSample::headingOfField(int source) const {
    return place(source) <= headings_.size() ? std::string(trimmed(headings_[place(source - 1)])) : std::string();
}

std::vector<FieldSample> MaskSample::samples() const {
    constexpr std::size_t kLookedAt = 200;
    const std::size_t count = hasRuler() ? ruler_.pieces().size() : place(fieldCount_);
    std::vector<FieldSample> samples(count);
    for (std::size_t field = 0; field < count; ++field)
        samples[field].heading = headingOfField(static_cast<int>(field) + 1);
    for (std::size_t record = headingsInFile_ ? 1 : 0; record < std::min(records(), kLookedAt); ++record) {
        std::vector<std::string> fields = fieldsOf(record);
        fields.resize(count);
        for (std::size_t field = 0; field < count; ++field) samples[field].values.push_back(std::move(fields[field]));
    }
    return samples;
}

void MaskSample::suggest() {
    SuggestionSurroundings around{.targets = editor_.targetList(),
                                  .words = words_,
                                  .suppliers = suppliers_,
                                  .taken = {},
                                  .joined = {},
                                  .hasKey = editor_.hasSearchKey(),
                                  .makesProducts = editor_.mask().SkapaNya == 'J'};
    const std::vector<Piece> pieces = hasRuler() ? ruler_.pieces() : std::vector<Piece>();
    for (const EditedRelation& edited : editor_.relations()) {
        around.taken.push_back(edited.relation.Mål);
        if (!hasRuler()) around.joined.push_back(edited.relation.Källa);
        for (std::size_t piece = 0; piece < pieces.size(); ++piece) {
            if (same(pieces[piece], pieceOf(edited.relation))) around.joined.push_back(static_cast<int>(piece) + 1);
        }
    }
    suggestions_ = suggestTargets(samples(), around);
}

Relation MaskSample::relationOf(const TargetSuggestion& suggestion) const {
    const Piece piece = hasRuler() ? ruler_.pieces()[place(suggestion.source - 1)] : Piece{};
    return {.Källa = suggestion.source,
            .Mål = suggestion.target,
            .FrånPos = piece.FrånPos,
            .Längd = piece.Längd,
            .TypKod = suggestion.TypKod,
            .Division = suggestion.Division};
}

std::string MaskSample::rawOf(int source, Piece piece) const {
    if (!hasRecord(record_)) return {};
    if (hasRuler()) {
        return printable(toUtf8(cut(records_.bytes[place(record_)], piece), codePageOf(editor_.mask())));
    }
    const auto& fields = records_.fields[place(record_)];
    return place(source) <= fields.size() ? fields[place(source - 1)] : std::string();
}

void MaskSample::present() {
    suggest();
    buildRows();
    fillValues();
    chosen_ = std::min(chosen_, static_cast<int>(rows_.size()) - 1);
}

void MaskSample::buildRows() {
    rows_.clear();
    if (!hasRuler()) {
        int count = fieldCount_;
        for (const EditedRelation& edited : editor_.relations()) count = std::max(count, edited.relation.Källa);
        for (int source = 1; source <= count; ++source) {
            addRows(source, {}, fmt::format("{} {}", source, headingOfField(source)));
        }
        return;
    }
    int source = 0;
    for (const Piece& piece : ruler_.pieces()) {
        ++source;
        addRows(source, piece,
                fmt::format("{}-{} {}", piece.FrånPos, piece.FrånPos + piece.Längd - 1, headingOfField(source)));
    }
    addRelationsBeside();
}

void MaskSample::addRows(int source, Piece piece, const std::string& field) {
    const Row empty{.source = source,
                    .piece = piece,
                    .field = std::string(trimmed(field)),
                    .raw = rawOf(source, piece),
                    .target = {},
                    .rule = {},
                    .read = {},
                    .present = {},
                    .after = {}};
    const std::size_t before = rows_.size();
    for (std::size_t i = 0; i < editor_.relations().size(); ++i) {
        const Relation& relation = editor_.relations()[i].relation;
        if (hasRuler() ? !same(pieceOf(relation), piece) : relation.Källa != source) continue;
        rows_.push_back(empty);
        rows_.back().relation = static_cast<int>(i);
        fillRow(rows_.back(), relation);
    }
    for (std::size_t i = 0; i < suggestions_.size(); ++i) {
        if (suggestions_[i].source != source) continue;
        rows_.push_back(empty);
        rows_.back().suggestion = static_cast<int>(i);
        fillRow(rows_.back(), relationOf(suggestions_[i]));
    }
    if (rows_.size() == before) rows_.push_back(empty);
}

/// Relations whose pieces overlap others, or reach behind the record.
void MaskSample::addRelationsBeside() {
    const std::vector<Piece> pieces = ruler_.pieces();
    for (std::size_t i = 0; i < editor_.relations().size(); ++i) {
        const Relation& relation = editor_.relations()[i].relation;
        const Piece piece = pieceOf(relation);
        if (std::ranges::any_of(pieces, [piece](Piece each) { return same(each, piece); })) continue;
        Row row;
        row.piece = piece;
        row.relation = static_cast<int>(i);
        row.field = fmt::format("{}-{}", piece.FrånPos, piece.FrånPos + piece.Längd - 1);
        row.raw = rawOf(0, piece);
        fillRow(row, relation);
        rows_.push_back(std::move(row));
    }
}

void MaskSample::fillRow(Row& row, const Relation& relation) {
    const int found = editor_.targetList().row(relation.Mål);
    const Target target = found < 0 ? Target{.code = relation.Mål, .text = std::to_string(relation.Mål)}
                                    : editor_.targets()[place(found)];
    row.target = nameOf(target);
    row.rule = ruleText(updateRules(target, texts_), relation.TypKod);
    if (relation.Division != 'I') row.rule += ", " + ruleText(divisions(target, texts_), relation.Division);
}

/// What a run would make of the record, with the suggestions as if they were accepted.
void MaskSample::fillValues() {
    values_ = {};
    if (!run_ || !hasRecord(record_)) return;
    std::vector<Relation> relations;
    for (const EditedRelation& edited : editor_.relations()) relations.push_back(edited.relation);
    for (const TargetSuggestion& suggestion : suggestions_) relations.push_back(relationOf(suggestion));
    // As they are stored: a piece is the source of its own relation.
    for (std::size_t i = 0; hasRuler() && i < relations.size(); ++i) relations[i].Källa = static_cast<int>(i) + 1;
    try {
        values_ = run_(editor_.mask(), relations, editor_.sample(), record_);
    } catch (const PlatformError& error) {
        values_.product = SampleValues::Product::Unknown;
        values_.whyUnknown = errorText(texts_, error);
    }
    const auto own = static_cast<int>(editor_.relations().size());
    for (Row& row : rows_) {
        const int relation = row.relation >= 0 ? row.relation : row.suggestion >= 0 ? own + row.suggestion : -1;
        if (relation < 0 || place(relation) >= values_.values.size()) continue;
        const SampleValues::Value& value = values_.values[place(relation)];
        row.read = value.unread ? texts_.ModulText(text::masksample::kNotReadable) : value.read;
        row.present = value.present;
        row.after = value.after;
    }
}

std::string MaskSample::columnCaption(int column) const {
    std::string caption = fmt::format("{} {}", column + 1, headingOfField(column + 1));
    std::string joined;
    for (const Row& row : rows_) {
        if (row.source != column + 1 || row.target.empty()) continue;
        joined += joined.empty() ? "" : ", ";
        joined += row.target;
        if (row.suggestion >= 0) joined += '?';
    }
    return caption + "\n" + (joined.empty() ? "–" : joined);
}

void MaskSample::chooseRecord(int record) {
    if (!hasRecord(record) || record == record_) return;
    record_ = record;
    present();
}

std::string MaskSample::recordText() const {
    if (records() == 0) return texts_.ModulText(text::masksample::kNoRecords);
    const bool more = records() == kReadRecords;
    return texts_.ModulTextMed(more ? text::masksample::kRecordOfFirst : text::masksample::kRecordOf,
                               fmt::format("{}", record_ + 1)) +
           fmt::format(" {}", records());
}

std::string MaskSample::productText() const {
    const std::string product = values_.name.empty() ? values_.number : values_.number + " " + values_.name;
    if (!run_ || !hasRecord(record_)) return {};
    switch (values_.product) {
        case SampleValues::Product::Existing:
            return texts_.ModulTextMed(text::masksample::kChangesProduct, product);
        case SampleValues::Product::New:
            return texts_.ModulTextMed(text::masksample::kMakesProduct, product);
        case SampleValues::Product::PriceListOnly:
            return texts_.ModulTextMed(text::masksample::kChangesPriceList, product);
        case SampleValues::Product::NotRead:
            return texts_.ModulText(text::masksample::kNoProduct);
        case SampleValues::Product::Unknown:
            return texts_.ModulTextMed(text::masksample::kUnknown, values_.whyUnknown);
        default:
            return texts_.ModulText(text::masksample::kNoKey);
    }
}

void MaskSample::choose(int row) {
    refusal_.clear();
    chosen_ = row >= 0 && row < static_cast<int>(rows_.size()) ? row : -1;
}

void MaskSample::chooseField(int column) {
    const auto found = std::ranges::find(rows_, column + 1, &Row::source);
    if (found != rows_.end()) choose(static_cast<int>(found - rows_.begin()));
}

int MaskSample::chosenTarget() const {
    if (chosen_ < 0) return 0;
    const Row& row = rows_[place(chosen_)];
    if (row.relation < 0) return 0;
    return std::max(0, editor_.targetList().row(editor_.relations()[place(row.relation)].relation.Mål));
}

void MaskSample::setTarget(int targetRow) {
    refusal_.clear();
    if (chosen_ < 0 || targetRow < 0 || targetRow == chosenTarget()) return;
    const Row row = rows_[place(chosen_)];
    const Target& target = editor_.targets().at(place(targetRow));
    if (target.code > 0 && editor_.hasTarget(target.code)) {
        refusal_ = texts_.ModulTextMed(text::masksample::kTargetTaken, nameOf(target));
        return;
    }
    editor_.asOneStep([&] {
        if (row.relation >= 0) {
            editor_.chooseRelation(row.relation);
            editor_.removeRelation();
        }
        if (target.code > 0) editor_.join(editor_.ordinaryRelation(targetRow, row.source, row.piece));
    });
    present();
}

bool MaskSample::canAccept() const { return chosen_ >= 0 && rows_[place(chosen_)].suggestion >= 0; }

void MaskSample::accept() {
    if (!canAccept()) return;
    const int row = chosen_;
    if (!editor_.join(relationOf(suggestions_[place(rows_[place(row)].suggestion)]))) return;
    present();
    const auto next =
        std::ranges::find_if(rows_.begin() + row, rows_.end(), [](const Row& each) { return each.suggestion >= 0; });
    choose(next == rows_.end() ? row : static_cast<int>(next - rows_.begin()));
}

void MaskSample::acceptAll() {
    editor_.asOneStep([&] {
        for (const TargetSuggestion& suggestion : suggestions_) {
            if (!editor_.join(relationOf(suggestion))) break;
        }
    });
    present();
}

bool MaskSample::isRead(Piece piece) const {
    return std::ranges::any_of(editor_.relations(),
                               [piece](const auto& edited) { return same(pieceOf(edited.relation), piece); });
}

void MaskSample::changePiece(Piece from, Piece to) {
    for (std::size_t i = 0; i < editor_.relations().size(); ++i) {
        if (same(pieceOf(editor_.relations()[i].relation), from)) editor_.movePiece(static_cast<int>(i), to);
    }
}

void MaskSample::choosePieceAt(int byte) {
    const Piece piece = ruler_.pieceAt(byte);
    const auto found = std::ranges::find_if(rows_, [piece](const Row& row) { return same(row.piece, piece); });
    if (found != rows_.end()) choose(static_cast<int>(found - rows_.begin()));
}

void MaskSample::toggleBoundary(int byte) {
    refusal_.clear();
    if (!ruler_.holds(byte)) return;
    if (!ruler_.boundaries().contains(byte)) {
        const Piece whole = ruler_.pieceAt(byte);
        ruler_.set(byte);
        changePiece(whole, ruler_.pieceAt(byte - 1));
    } else {
        const Piece left = ruler_.pieceAt(byte - 1), right = ruler_.pieceAt(byte);
        if (isRead(left) && isRead(right)) {
            refusal_ = texts_.ModulText(text::masksample::kBothRead);
            return;
        }
        ruler_.remove(byte);
        editor_.asOneStep([&] {
            changePiece(left, ruler_.pieceAt(byte));
            changePiece(right, ruler_.pieceAt(byte));
        });
    }
    findHeadings();
    present();
}

void MaskSample::moveBoundary(int from, int to) {
    refusal_.clear();
    if (!ruler_.boundaries().contains(from) || from == to) return;
    const Piece left = ruler_.pieceAt(from - 1), right = ruler_.pieceAt(from);
    if (to <= left.FrånPos || to > right.FrånPos + right.Längd - 1) return;
    ruler_.remove(from);
    ruler_.set(to);
    // The piece that grows is changed first: the other's new place may be its old one.
    editor_.asOneStep(
        [&] {
            changePiece(left, ruler_.pieceAt(to - 1));
            changePiece(right, ruler_.pieceAt(to));
        },
        MaskEditor::Kind::Boundary);
    findHeadings();
    present();
}

void MaskSample::takeSuggestedLength() {
    const std::optional<int> length = editor_.suggestedLength();
    if (!length) return;
    editor_.setPostlängd(std::to_string(*length));
    ruler_ = Ruler(*length);
    for (const EditedRelation& edited : editor_.relations()) ruler_.setAround(pieceOf(edited.relation));
    lines_.clear();
    records_ = {};
    record_ = 0;
    readRecords();
}

void MaskSample::suggestBoundaries() {
    refusal_.clear();
    if (hasRuler()) takeSuggestedLength();
    for (const int boundary : boundariesBehindBlanks(records_.bytes, ruler_.length())) {
        if (!isRead(ruler_.pieceAt(boundary))) ruler_.set(boundary);
    }
    findHeadings();
    present();
}

std::string MaskSample::remark() const {
    if (!refusal_.empty()) return refusal_;
    if (!canAccept()) return {};
    const Row& row = rows_[place(chosen_)];
    return texts_.ModulTextMed(whyText(suggestions_[place(row.suggestion)].reason), row.target);
}

MaskSample openMaskSample(SqlLayer& sql, LanguageTexts& texts, MessageBoxes& boxes,
                          const std::filesystem::path& dataFolder, MaskEditor& editor, SampleRun run,
                          std::vector<std::string> headings) {
    HeadingWords words;
    std::vector<SupplierRow> suppliers;
    try {
        words = HeadingWords::read(dataFolder);
        suppliers = readSuppliers(sql);
    } catch (const PlatformError& error) {
        boxes.MeddelandeVarning(errorText(texts, error));
    }
    return MaskSample(texts, editor, std::move(words), std::move(suppliers), std::move(run), std::move(headings));
}

}  // namespace kolmera
