#include "definitions/maskfile.h"

#include <algorithm>

#include "definitions/definitionfile.h"
#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

/// PRISMASK.TXT: one mask.
constexpr RecordField kMask[] = {{"Namn", 0, 100},      {"FilTyp", 100, 1},        {"Tecken", 101, 1},
                                 {"SkapaNya", 102, 1},  {"UppdatLev", 103, 1},     {"AntalRader", 104, 4},
                                 {"Postlängd", 108, 4}, {"AntalKolumner", 112, 4}, {"reserved", 116, 496},
                                 {"record end", 612, 2}};
constexpr int kMaskLength = 614;
static_assert(fillsRecord(kMask, kMaskLength));
constexpr RecordLayout kMaskLayout{"PRISMASK.TXT", kMaskLength, kMask, true};

/// PRISMPOS.TXT: one relation of a mask. A mask's relations lie together, in their order.
constexpr RecordField kRelation[] = {
    {"MaskNr", 0, 3},  {"Källa", 3, 3},     {"Mål", 6, 3},        {"FrånPos", 9, 4},   {"Längd", 13, 4},
    {"TypKod", 17, 1}, {"Division", 18, 1}, {"Radstatus", 19, 1}, {"reserved", 20, 9}, {"record end", 29, 2}};
constexpr int kRelationLength = 31;
static_assert(fillsRecord(kRelation, kRelationLength));
constexpr RecordLayout kRelationLayout{"PRISMPOS.TXT", kRelationLength, kRelation, true};

constexpr RecordField kMaskNr = field(kRelation, "MaskNr");

struct MaskText {
    RecordField field;
    std::string Mask::*text;
};

constexpr MaskText kMaskTexts[] = {{field(kMask, "Namn"), &Mask::Namn},
                                   {field(kMask, "AntalRader"), &Mask::AntalRader},
                                   {field(kMask, "Postlängd"), &Mask::Postlängd}};

struct MaskLetter {
    RecordField field;
    char Mask::*letter;
};

constexpr MaskLetter kMaskLetters[] = {{field(kMask, "FilTyp"), &Mask::FilTyp},
                                       {field(kMask, "Tecken"), &Mask::Tecken},
                                       {field(kMask, "SkapaNya"), &Mask::SkapaNya},
                                       {field(kMask, "UppdatLev"), &Mask::UppdatLev}};

constexpr RecordField kColumns = field(kMask, "AntalKolumner");

struct RelationNumber {
    RecordField field;
    int Relation::*number;
};

constexpr RelationNumber kRelationNumbers[] = {{field(kRelation, "Källa"), &Relation::Källa},
                                               {field(kRelation, "Mål"), &Relation::Mål},
                                               {field(kRelation, "FrånPos"), &Relation::FrånPos},
                                               {field(kRelation, "Längd"), &Relation::Längd}};

Mask maskOf(int number, const Record& record) {
    Mask mask;
    mask.number = number;
    for (const MaskText& row : kMaskTexts) mask.*row.text = record.text(row.field);
    for (const MaskLetter& row : kMaskLetters) mask.*row.letter = letter(record, row.field);
    mask.AntalKolumner = record.number(kColumns);
    return mask;
}

void write(const Mask& mask, Record& record) {
    for (const MaskText& row : kMaskTexts) record.setText(row.field, mask.*row.text);
    for (const MaskLetter& row : kMaskLetters) setLetter(record, row.field, mask.*row.letter);
    record.setText(kColumns, std::to_string(fitting(kColumns, mask.AntalKolumner)));
}

Relation relationOf(const Record& record) {
    Relation relation;
    for (const RelationNumber& row : kRelationNumbers) relation.*row.number = record.number(row.field);
    relation.TypKod = letter(record, field(kRelation, "TypKod"));
    relation.Division = letter(record, field(kRelation, "Division"));
    return relation;
}

Record recordOf(int maskNumber, const Relation& relation) {
    Record record(kRelationLayout);
    record.setNumber(kMaskNr, maskNumber);
    for (const RelationNumber& row : kRelationNumbers) {
        record.setNumber(row.field, fitting(row.field, relation.*row.number));
    }
    setLetter(record, field(kRelation, "TypKod"), relation.TypKod);
    setLetter(record, field(kRelation, "Division"), relation.Division);
    record.setText(field(kRelation, "Radstatus"), "1");
    return record;
}

/// Drops the relations of the removed masks and lowers the mask numbers behind them. `removed` in rising order.
/// Records without a readable mask number belong to no mask and stay.
void renumberRelations(Records& file, const std::vector<int>& removed) {
    file.keepOnly([&removed](int, Record& record) {
        const int number = record.number(kMaskNr);
        const auto next = std::lower_bound(removed.begin(), removed.end(), number);
        if (next != removed.end() && *next == number) return false;
        const auto lower = static_cast<int>(next - removed.begin());
        if (lower > 0) record.setNumber(kMaskNr, number - lower);
        return true;
    });
}

std::vector<Mask> masksOf(const Records& file) {
    std::vector<Mask> masks;
    for (int number = 1; number <= file.count(); ++number) masks.push_back(maskOf(number, file.read(number)));
    return masks;
}

std::vector<Relation> relationsOf(const Records& file, int maskNumber) {
    std::vector<Relation> relations;
    for (int place = 1; place <= file.count(); ++place) {
        const Record record = file.read(place);
        if (record.number(kMaskNr) == maskNumber) relations.push_back(relationOf(record));
    }
    return relations;
}

std::optional<WholeMask> wholeMask(const Records& masks, const Records& relations, int number) {
    if (number < 1 || number > masks.count()) return std::nullopt;
    return WholeMask{maskOf(number, masks.read(number)), relationsOf(relations, number)};
}

/// The number of the record written.
int putMask(Records& file, const Mask& mask) {
    const bool exists = mask.number >= 1 && mask.number <= file.count();
    if (!exists && file.count() >= kMostMasks) throw PlatformError(errors::kInternal, "There are 999 masks already.");
    Record record = exists ? file.read(mask.number) : Record(kMaskLayout);
    write(mask, record);
    if (!exists) return file.append(record);
    file.write(mask.number, record);
    return mask.number;
}

/// A new mask, too, must not take over relations that are there under its number.
void putRelations(Records& file, int maskNumber, const Mask& mask, const std::vector<Relation>& relations) {
    file.keepOnly([maskNumber](int, const Record& old) { return old.number(kMaskNr) != maskNumber; });
    int place = 0;
    for (Relation relation : relations) {
        ++place;
        // In the fixed-length layout piece i is cut for relation i, but found by its source number.
        if (mask.FilTyp == 'P') relation.Källa = place;
        file.append(recordOf(maskNumber, relation));
    }
}

int put(Records& masks, Records& positions, const Mask& mask, const std::vector<Relation>& relations) {
    if (relations.size() > static_cast<std::size_t>(kMostRelations)) {
        throw PlatformError(errors::kInternal, "A mask holds at most 100 relations.");
    }
    const int number = putMask(masks, mask);
    putRelations(positions, number, mask, relations);
    return number;
}

void refuseTakenName(const Records& file, const Mask& mask) {
    const std::string name = composed(trimmed(mask.Namn));
    for (const Mask& other : masksOf(file)) {
        if (other.number != mask.number && equalNoCase(other.Namn, name)) {
            throw PlatformError(errors::kDuplicateKey, "there is another mask of that name").about(name);
        }
    }
}

}  // namespace

std::vector<Mask> MaskFile::all() const { return masksOf(readDefinitions(folder_, kMaskLayout)); }

std::optional<WholeMask> MaskFile::read(int number) const {
    const RecordSnapshot files(folder_);
    return wholeMask(files.file(kMaskLayout), files.file(kRelationLayout), number);
}

std::optional<WholeMask> MaskFile::find(std::string_view name) const {
    const RecordSnapshot files(folder_);
    const Records masks = files.file(kMaskLayout);
    const std::vector<Mask> all = masksOf(masks);
    const auto found = std::ranges::find(all, name, &Mask::Namn);
    return found == all.end() ? std::nullopt : wholeMask(masks, files.file(kRelationLayout), found->number);
}

int MaskFile::save(const Mask& mask, const std::vector<Relation>& relations) {
    RecordChange change(folder_);
    const int number = put(change.file(kMaskLayout), change.file(kRelationLayout), mask, relations);
    change.commit();
    return number;
}

int MaskFile::save(const Mask& mask, const std::vector<Relation>& relations, const std::optional<WholeMask>& shown) {
    RecordChange change(folder_);
    Records& masks = change.file(kMaskLayout);
    Records& positions = change.file(kRelationLayout);
    if (shown) expectUnchanged(wholeMask(masks, positions, shown->mask.number), shown, kMaskLayout);
    if (!shown || shown->mask.Namn != mask.Namn) refuseTakenName(masks, mask);
    const int number = put(masks, positions, mask, relations);
    change.commit();
    return number;
}

void putMask(RecordChange& change, const WholeMask& whole, const std::optional<WholeMask>& shown) {
    Records& masks = change.file(kMaskLayout);
    Records& positions = change.file(kRelationLayout);
    const std::vector<Mask> all = masksOf(masks);
    Mask mask = whole.mask;
    const auto same = std::ranges::find(all, mask.Namn, &Mask::Namn);
    mask.number = same == all.end() ? 0 : same->number;
    expectUnchanged(wholeMask(masks, positions, mask.number), shown, kMaskLayout);
    put(masks, positions, mask, whole.relations);
}

void MaskFile::remove(const std::vector<Mask>& shown) {
    RecordChange change(folder_);
    Records& file = change.file(kMaskLayout);
    std::vector<int> removed;
    for (const Mask& mask : shown) {
        expectUnchanged(maskOf(mask.number, file.read(mask.number)), mask, kMaskLayout);
        removed.push_back(mask.number);
    }
    file.keepOnly([&](int number, const Record&) { return !std::ranges::binary_search(removed, number); });
    renumberRelations(change.file(kRelationLayout), removed);
    change.commit();
}

}  // namespace kolmera
