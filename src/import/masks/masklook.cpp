#include "import/masks/masklook.h"

#include <algorithm>

#include "import/masks/recordreader.h"
#include "import/rows/fieldconversion.h"
#include "import/run/filedoubt.h"
#include "platform/attempt.h"

namespace kolmera {
namespace {

using Layout = LoadedMask::Layout;

/// How the texts of number columns can be read.
struct NumberForms {
    std::int64_t count = 0, thisOnly = 0, otherOnly = 0, neither = 0;
    std::string firstOther, firstOfNeither;

    void add(std::string_view text, const Locale& locale) {
        if (text.empty()) return;
        ++count;
        const bool here = readNumber(text, 'I', locale).has_value();
        const bool there = readNumber(text, 'I', otherLocale(locale)).has_value();
        if (here && !there) ++thisOnly;
        if (there && !here && ++otherOnly == 1) firstOther = text;
        if (!there && !here && ++neither == 1) firstOfNeither = text;
    }
    /// Single slips are counted by the run.
    [[nodiscard]] bool other() const { return otherOnly > 0 && thisOnly == 0; }
    [[nodiscard]] bool mostly() const { return otherOnly * 20 >= count; }
    /// A file of another layout, or one that writes a currency behind each price.
    [[nodiscard]] bool noNumbers() const {
        constexpr std::int64_t kEnough = 10;
        return count >= kEnough && neither * 2 > count;
    }
};

/// What the records at the beginning of a file show.
struct RecordsSeen {
    std::int64_t records = 0, withoutKey = 0;
    Utf8Count utf8;
    NumberForms numbers;
};

class MaskLook {
  public:
    MaskLook(const FileSample& sample, const LoadedMask& mask) : sample_(sample), mask_(mask) {}

    [[nodiscard]] FileFacts facts(const std::filesystem::path& file, const std::vector<Source>& numbers,
                                  const Locale& locale) {
        addLineFacts();
        if (has(facts_, FileLook::LineFeeds)) {
            addUtf8Facts(sample_, allLetters(sample_), readsFirstBytes(), mask_.codePage, facts_);
            return std::move(facts_);
        }
        const RecordsSeen seen = readRecords(file, numbers, locale);
        addUtf8Facts(sample_, seen.utf8, readsFirstBytes(), mask_.codePage, facts_);
        if (mask_.layout == Layout::Tabs) addTabFact();
        if (mask_.layout == Layout::Fixed) addDriftFact();
        if (!has(facts_, FileLook::NoTabs) && !has(facts_, FileLook::Drifting)) addRecordFacts(seen);
        return std::move(facts_);
    }

  private:
    void addLineFacts() {
        if (mask_.layout == Layout::Fixed) return;
        if (mask_.layout == Layout::Lines) return addOneLineFact();
        // A line feed within a text does not stand between two lines that have all columns.
        const auto tabs = static_cast<std::ptrdiff_t>(std::max(mask_.entries - 1, 0));
        addLineEndFacts(
            sample_, [tabs](auto line) { return !line.empty() && std::ranges::count(line, '\t') >= tabs; }, facts_);
        if (facts_.empty() && isOneLineOfEqualParts()) {
            facts_.push_back({.look = FileLook::LineFeeds, .garbage = true});
        }
    }

    /// A mask that was made against such a file takes all of it for one line with as many columns.
    [[nodiscard]] bool isOneLineOfEqualParts() const {
        constexpr int kMany = 3;
        std::string_view rest = sample_.beginning();
        if (rest.find('\r') < rest.size() - 2) return false;
        const auto tabs = std::ranges::count(rest.substr(0, rest.find('\n')), '\t');
        int parts = 0;
        for (; rest.find('\n') != std::string_view::npos; rest.remove_prefix(rest.find('\n') + 1), ++parts) {
            if (std::ranges::count(rest.substr(0, rest.find('\n')), '\t') != tabs) return false;
        }
        return tabs > 0 && parts >= kMany;
    }

    /// Where a line is a field, one with line feeds is a long text; a file of one line is not.
    void addOneLineFact() {
        LineEnds ends;
        for (const std::string& piece : sample_.pieces()) ends.add(piece, [](auto line) { return !line.empty(); });
        if (ends.lineFeeds == 0 || ends.carriageReturns + (ends.openEnd ? 1 : 0) > 1) return;
        facts_.push_back({.look = FileLook::LineFeeds, .garbage = true});
    }

    [[nodiscard]] bool readsEntry(const std::function<bool(int)>& which) const {
        return std::ranges::any_of(mask_.relations, [&](const Relation& each) { return which(each.Källa); });
    }

    /// Three bytes more before a fixed record move every piece of the file.
    [[nodiscard]] bool readsFirstBytes() const {
        return mask_.layout == Layout::Fixed || readsEntry([](int entry) { return entry == 1; });
    }

    [[nodiscard]] RecordsSeen readRecords(const std::filesystem::path& path, const std::vector<Source>& numbers,
                                          const Locale& locale) const {
        RecordsSeen seen;
        PriceFile file(path);
        MaskRecordReader reader(file, mask_);
        while (file.position() < kLookedAt && reader.next()) {
            const EntryList& entries = reader.entries();
            if (entries.text(mask_.key).empty()) ++seen.withoutKey;
            for (const Relation& each : mask_.relations) addLetters(entries.text(each.Källa), seen.utf8);
            for (const Source& number : numbers) seen.numbers.add(entries.text(number), locale);
        }
        seen.records = reader.count();
        return seen;
    }

    void addLetters(std::string_view text, Utf8Count& count) const {
        const auto beyondAscii = [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; };
        if (std::ranges::any_of(text, beyondAscii)) count.add(fromUtf8(text, mask_.codePage));
    }

    void addTabFact() {
        const int last = mask_.entries;
        if (!readsEntry([last](int entry) { return entry < last; })) return;
        for (const std::string& piece : sample_.pieces()) {
            if (piece.find('\t') != std::string::npos) return;
        }
        facts_.push_back({.look = FileLook::NoTabs, .garbage = true, .example = likelySeparator()});
    }

    /// What stands between the columns in place of tabs; empty when nothing does.
    [[nodiscard]] std::string likelySeparator() const {
        const std::string_view beginning = sample_.beginning();
        const std::string_view line = beginning.substr(0, beginning.find('\r'));
        char likely = ';';
        for (const char other : {',', '|'}) {
            if (std::ranges::count(line, other) > std::ranges::count(line, likely)) likely = other;
        }
        return std::ranges::count(line, likely) == 0 ? std::string() : std::string(1, likely);
    }

    /// The character that is dropped behind each record is to be the end of a line where the file has lines.
    void addDriftFact() {
        const std::string_view bytes = sample_.beginning();
        if (bytes.find_first_of("\r\n") == std::string_view::npos) return;
        const auto length = static_cast<std::size_t>(mask_.Postlängd);
        std::int64_t ends = 0, others = 0;
        bool allTheSame = true;
        for (std::size_t at = length; at < bytes.size(); at += length + 1) {
            ++(endsLine(bytes, at) ? ends : others);
            allTheSame = allTheSame && bytes[at] == bytes[length];
        }
        const bool ownSeparator = allTheSame && others > 1 && bytes[length] > ' ';
        if (others == 0 || others < ends || ownSeparator) return;
        facts_.push_back({.look = FileLook::Drifting, .garbage = true, .example = std::to_string(length)});
    }

    [[nodiscard]] static bool endsLine(std::string_view bytes, std::size_t at) {
        if (bytes[at] == '\n') return true;
        return bytes[at] == '\r' && bytes.substr(at, 2) != "\r\n";
    }

    void addRecordFacts(const RecordsSeen& seen) {
        if (seen.records > 0 && seen.withoutKey == seen.records) facts_.push_back({.look = FileLook::NoKeys});
        if (seen.numbers.noNumbers()) {
            facts_.push_back({.look = FileLook::NotNumbers, .garbage = true, .example = seen.numbers.firstOfNeither});
        }
        if (!seen.numbers.other()) return;
        facts_.push_back(
            {.look = FileLook::OtherNumbers, .garbage = seen.numbers.mostly(), .example = seen.numbers.firstOther});
    }

    const FileSample& sample_;
    const LoadedMask& mask_;
    FileFacts facts_;
};

}  // namespace

std::vector<Source> numberSources(const LoadedMask& mask, const std::vector<FieldDef>& columns) {
    std::vector<Source> sources;
    for (const Relation& relation : mask.relations) {
        const auto ordinal = static_cast<std::size_t>(columnOf(relation.Mål));
        if (ordinal == 0 || ordinal >= columns.size() || relation.Division == 'S') continue;
        if (relation.TypKod == 'I' && !mask.UppdatLev) continue;
        const FieldType type = columns[ordinal].type;
        if (type != FieldType::Single && type != FieldType::Double) continue;
        sources.push_back({relation.Källa, relation.Division, relation.TypKod});
    }
    return sources;
}

FileFacts lookThroughMask(const std::filesystem::path& file, const LoadedMask& mask, const std::vector<Source>& numbers,
                          const Locale& locale) {
    const FileSample sample(file);
    if (!sample.plainFile()) return {};
    if (auto fact = factOfBeginning(sample, mask.codePage)) return {std::move(*fact)};
    return MaskLook(sample, mask).facts(file, numbers, locale);
}

std::vector<std::string> misreadSample(LanguageTexts& texts, const Mask& mask, const std::vector<Relation>& relations,
                                       const std::filesystem::path& sample) {
    const LoadedMask loaded(mask, relations);
    std::vector<std::string> remarks;
    if (relations.empty() || loaded.emptyRecords()) return remarks;
    const Locale locale;
    PassedOverSilently passedOver;
    attempt(passedOver, "sample", [&] {
        for (const FileFact& fact : lookThroughMask(sample, loaded, {}, locale)) {
            if (fact.garbage) remarks.push_back(factText(texts, fact, locale));
        }
    });
    return remarks;
}

}  // namespace kolmera
