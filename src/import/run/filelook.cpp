#include "import/run/filelook.h"

#include <algorithm>

namespace kolmera {
namespace {

constexpr std::int64_t kSeveral = 2;

FileLook lookOf(Signature signature) {
    switch (signature) {
        case Signature::Compound:
            return FileLook::Compound;
        case Signature::Pdf:
            return FileLook::Pdf;
        case Signature::Packed:
            return FileLook::Packed;
        case Signature::WebPage:
            return FileLook::WebPage;
        case Signature::Utf16:
            return FileLook::Utf16;
        default:
            return FileLook::Zip;
    }
}

}  // namespace

std::optional<FileFact> factOfBeginning(const FileSample& sample, CodePage page) {
    if (!sample.plainFile()) return std::nullopt;
    if (sample.empty()) return FileFact{.look = FileLook::Empty};
    const Signature signature = signatureOf(sample.beginning());
    if (signature == Signature::None) return std::nullopt;
    return FileFact{.look = lookOf(signature), .garbage = true, .codePage = page};
}

Utf8Count allLetters(const FileSample& sample) {
    Utf8Count count;
    for (const std::string& piece : sample.pieces()) count.add(piece);
    return count;
}

void addUtf8Facts(const FileSample& sample, const Utf8Count& read, bool readsFirstBytes, CodePage page,
                  FileFacts& facts) {
    const bool marked = sample.beginning().starts_with(kUtf8Mark);
    if (marked && readsFirstBytes) facts.push_back({.look = FileLook::Utf8Mark, .garbage = true, .codePage = page});
    if (allLetters(sample).invalid > 0 || !read.atLeast(1)) return;
    const bool several = marked || read.atLeast(kSeveral);
    facts.push_back({.look = FileLook::Utf8, .garbage = several, .codePage = page});
}

void addLineEndFacts(const FileSample& sample, const std::function<bool(std::string_view)>& isRecord,
                     FileFacts& facts) {
    LineEnds ends;
    for (const std::string& piece : sample.pieces()) ends.add(piece, isRecord);
    if (ends.lineFeeds == 0) return;
    const bool most = ends.lineFeeds >= ends.carriageReturns;
    facts.push_back({.look = most ? FileLook::LineFeeds : FileLook::SomeLineFeeds, .garbage = most});
}

bool has(const FileFacts& facts, FileLook look) {
    return std::ranges::find(facts, look, &FileFact::look) != facts.end();
}

Locale otherLocale(const Locale& locale) {
    return Locale(locale.kind() == Locale::Kind::Swedish ? Locale::Kind::English : Locale::Kind::Swedish);
}

std::string numberForm(const Locale& locale) { return locale.formatFixed(12.5, 2); }

}  // namespace kolmera
