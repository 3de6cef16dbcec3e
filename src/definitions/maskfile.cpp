#include "definitions/maskfile.h"

#include <algorithm>

#include "definitions/definitionfile.h"
#include "platform/error.h"

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
void renumberRelations(const std::filesystem::path& file, const std::vector<int>& removed) {
    rewriteRecords(file, kRelationLayout, [&removed](int, Record& record) {
        const int number = record.number(kMaskNr);
        const auto next = std::lower_bound(removed.begin(), removed.end(), number);
        if (next != removed.end() && *next == number) return false;
        const auto lower = static_cast<int>(next - removed.begin());
        if (lower > 0) record.setNumber(kMaskNr, number - lower);
        return true;
    });
}

}  // namespace

std::vector<Mask> MaskFile::all() const {
    const RecordFile file(definitionFile(folder_, kMaskLayout), kMaskLayout, RecordFile::Mode::Read);
    std::vector<Mask> masks;
    for (int number = 1; number <= file.count(); ++number) masks.push_back(maskOf(number, file.read(number)));
    return masks;
}

std::optional<Mask> MaskFile::read(int number) const {
    const RecordFile file(definitionFile(folder_, kMaskLayout), kMaskLayout, RecordFile::Mode::Read);
    if (number < 1 || number > file.count()) return std::nullopt;
    return maskOf(number, file.read(number));
}

std::optional<Mask> MaskFile::find(std::string_view name) const {
    for (Mask& mask : all()) {
        if (mask.Namn == name) return std::move(mask);
    }
    return std::nullopt;
}

std::vector<Relation> MaskFile::relations(int number) const {
    const RecordFile file(definitionFile(folder_, kRelationLayout), kRelationLayout, RecordFile::Mode::Read);
    std::vector<Relation> relations;
    for (int place = 1; place <= file.count(); ++place) {
        const Record record = file.read(place);
        if (record.number(kMaskNr) == number) relations.push_back(relationOf(record));
    }
    return relations;
}

int MaskFile::save(const Mask& mask, const std::vector<Relation>& relations) {
    if (relations.size() > static_cast<std::size_t>(kMostRelations)) {
        throw PlatformError(errors::kInternal, "A mask holds at most 100 relations.");
    }
    RecordFile masks(definitionFile(folder_, kMaskLayout), kMaskLayout);
    const bool exists = mask.number >= 1 && mask.number <= masks.count();
    if (!exists && masks.count() >= kMostMasks) throw PlatformError(errors::kInternal, "There are 999 masks already.");
    Record record = exists ? masks.read(mask.number) : Record(kMaskLayout);
    write(mask, record);
    const int number = exists ? mask.number : masks.append(record);
    if (exists) masks.write(number, record);

    // A new mask, too, must not take over what an interrupted deletion left under its number.
    const std::filesystem::path file = definitionFile(folder_, kRelationLayout);
    rewriteRecords(file, kRelationLayout, [number](int, Record& old) { return old.number(kMaskNr) != number; });
    RecordFile positions(file, kRelationLayout);
    int place = 0;
    for (Relation relation : relations) {
        ++place;
        // In the fixed-length layout piece i is cut for relation i, but found by its source number.
        if (mask.FilTyp == 'P') relation.Källa = place;
        positions.append(recordOf(number, relation));
    }
    return number;
}

int MaskFile::remove(std::string_view name) {
    std::vector<int> removed;
    rewriteRecords(definitionFile(folder_, kMaskLayout), kMaskLayout, [&](int number, Record& record) {
        const bool keep = record.text(field(kMask, "Namn")) != name;
        if (!keep) removed.push_back(number);
        return keep;
    });
    if (!removed.empty()) renumberRelations(definitionFile(folder_, kRelationLayout), removed);
    return static_cast<int>(removed.size());
}

}  // namespace kolmera
