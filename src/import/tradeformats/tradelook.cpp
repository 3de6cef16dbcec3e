#include "import/tradeformats/tradelook.h"

#include <algorithm>
#include <vector>

#include "import/run/filelook.h"
#include "import/tradeformats/eio.h"
#include "import/tradeformats/finfo.h"
#include "import/tradeformats/rsk.h"
#include "import/tradeformats/rskgroups.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "platform/paths.h"
#include "platform/pricefile.h"

namespace kolmera {
namespace {

constexpr double kHundredths = 100;

bool isArticle(std::string_view line) { return line.starts_with('1'); }
bool isAnyLine(std::string_view line) { return !line.empty(); }

/// EIO and RSK agree on these columns of a price line.
bool isPriceLine(std::string_view line) {
    return line.starts_with('2') && !cut(line, columns(kEioPrice, "leverantörskod")).empty() &&
           !cutDigits(line, columns(kEioPrice, "bruttopris"), kHundredths).unreadable();
}

bool isFinfoLine(std::string_view line) {
    return !cut(line, columns(kFinfo, "leverantörskod")).empty() && !cut(line, columns(kFinfo, "produktnr")).empty() &&
           !cutDigits(line, columns(kFinfo, "inpris"), kHundredths).unreadable();
}

bool anyGroup(std::string_view /*line*/, const Job& /*job*/) { return true; }

bool inFinfoGroups(std::string_view line, const Job& job) {
    const std::string group = upperCase(toUtf8(cut(line, columns(kFinfo, "varugrupp")), CodePage::Oem850));
    return group >= job.fromGroup && group <= job.toGroup;
}

/// What the lines at the beginning of a file show.
struct LinesSeen {
    bool priceLine = false, coupled = false, usable = false;
    bool whole = false;  ///< all lines of the file were seen
    Utf8Count utf8;
    std::vector<std::string> uncoupled;  ///< the first codes

    void addUncoupled(std::string code) {
        constexpr std::size_t kNamed = 5;
        if (uncoupled.size() < kNamed && std::ranges::find(uncoupled, code) == uncoupled.end()) {
            uncoupled.push_back(std::move(code));
        }
    }
    [[nodiscard]] std::string uncoupledCodes() const {
        std::string text;
        for (const std::string& code : uncoupled) text += (text.empty() ? "" : ", ") + code;
        return text;
    }
};

LinesSeen readLines(const std::filesystem::path& path, const TradeLook& format, SupplierLookup& suppliers,
                    const Job& job) {
    LinesSeen seen;
    PriceFile file(path);
    while (!seen.whole && file.position() < kLookedAt) {
        const std::string_view line = file.line();
        if (format.hasTexts(line)) seen.utf8.add(line);
        if (format.hasPrice(line)) {
            seen.priceLine = true;
            const std::string_view code = cut(line, format.supplierCode);
            const bool coupled = suppliers.find(code) != nullptr;
            if (!coupled) seen.addUncoupled(toUtf8(code, format.page));
            seen.coupled = seen.coupled || coupled;
            seen.usable = seen.usable || (coupled && format.inGroups(line, job));
        }
        seen.whole = file.atEnd();
    }
    return seen;
}

void addLineFacts(const LinesSeen& seen, FileFacts& facts) {
    if (!seen.priceLine) {
        facts.push_back({.look = FileLook::NotOfFormat});
    } else if (!seen.whole || seen.usable) {
        return;  // the lines of a coupled supplier may stand further behind
    } else if (seen.coupled) {
        facts.push_back({.look = FileLook::OtherGroups});
    } else {
        facts.push_back({.look = FileLook::Uncoupled, .example = seen.uncoupledCodes()});
    }
}

/// A mark before a line hides its record type; a header that nobody reads may have it.
bool readsFirstBytes(const FileSample& sample, const TradeLook& format) {
    const std::string_view beginning = sample.beginning();
    const bool marked = beginning.starts_with(kUtf8Mark);
    const std::string_view line = marked ? beginning.substr(kUtf8Mark.size()) : beginning;
    return format.readsHeader || line.starts_with('1') || line.starts_with('2');
}

/// Lines of the trades hold no long texts: each is a record.
bool isRecord(std::string_view line) {
    constexpr std::size_t kShortest = 4;
    return line.size() >= kShortest;
}

}  // namespace

const TradeLook kEioLook{
    CodePage::Windows1252, columns(kEioPrice, "leverantörskod"), isArticle, isPriceLine, anyGroup, false};
const TradeLook kRskLook{
    CodePage::Oem850, columns(kRskPrice, "leverantörskod"), isArticle, isPriceLine, anyGroup, true};
const TradeLook kFinfoLook{
    CodePage::Oem850, columns(kFinfo, "leverantörskod"), isAnyLine, isFinfoLine, inFinfoGroups, true};

FileFacts lookAtTradeFile(const std::filesystem::path& file, const TradeLook& format, SupplierLookup& suppliers,
                          const Job& job) {
    const FileSample sample(file);
    if (!sample.plainFile()) return {};
    if (auto fact = factOfBeginning(sample, format.page)) return {std::move(*fact)};
    FileFacts facts;
    addLineEndFacts(sample, isRecord, facts);
    if (has(facts, FileLook::LineFeeds)) {
        addUtf8Facts(sample, allLetters(sample), readsFirstBytes(sample, format), format.page, facts);
        return facts;
    }
    const LinesSeen seen = readLines(file, format, suppliers, job);
    addUtf8Facts(sample, seen.utf8, readsFirstBytes(sample, format), format.page, facts);
    addLineFacts(seen, facts);
    return facts;
}

FileFacts lookAtGroups(const std::filesystem::path& priceFile) {
    const std::filesystem::path groups = findWithoutCase(priceFile.parent_path(), "RKOD.DAT");
    FileFacts facts;
    PassedOverSilently passedOver;
    attempt(passedOver, "RKOD.DAT", [&] {
        const FileSample sample(groups);
        if (!sample.plainFile() || sample.empty()) return;
        if (auto fact = factOfBeginning(sample, CodePage::Oem850)) return facts.push_back(std::move(*fact));
        addLineEndFacts(sample, isRecord, facts);
        addUtf8Facts(sample, allLetters(sample), true, CodePage::Oem850, facts);
    });
    for (FileFact& fact : facts) fact.file = groups.filename().string();
    return facts;
}

}  // namespace kolmera
