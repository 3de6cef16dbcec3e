#include "platform/filesample.h"

#include <fcntl.h>

#include <algorithm>
#include <array>

#include "platform/descriptor.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kPiece = 1'048'576;
constexpr std::size_t kPieces = 3;
constexpr std::string_view kLineEnds = "\r\n";
constexpr char kEndMark = 0x1A;

std::string readPiece(const Descriptor& file, std::size_t offset, std::size_t size) {
    std::string bytes(size, '\0');
    bytes.resize(file.readAt(offset, bytes.data(), size));
    return bytes;
}

/// Without the line that began before the piece. A piece without line ends stays.
void dropFirstLine(std::string& piece) {
    std::size_t end = piece.find_first_of(kLineEnds);
    if (end == std::string::npos) return;
    if (piece[end] == '\r' && end + 1 < piece.size() && piece[end + 1] == '\n') ++end;
    piece.erase(0, end + 1);
}

/// Without the line that goes on behind the piece.
void dropLastLine(std::string& piece) {
    const std::size_t end = piece.find_last_of(kLineEnds);
    if (end != std::string::npos) piece.resize(end + 1);
}

struct Beginning {
    std::string_view bytes;
    Signature signature;
};
constexpr std::array kBeginnings = {
    Beginning{"PK\3\4"sv, Signature::Zip},
    Beginning{"PK\5\6"sv, Signature::Zip},
    Beginning{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, Signature::Compound},
    Beginning{"%PDF-"sv, Signature::Pdf},
    Beginning{"\x1F\x8B\x08"sv, Signature::Packed},
    Beginning{"7z\xBC\xAF\x27\x1C"sv, Signature::Packed},
    Beginning{"Rar!\x1A\x07"sv, Signature::Packed},
    Beginning{"\xFF\xFE"sv, Signature::Utf16},
    Beginning{"\xFE\xFF"sv, Signature::Utf16},
};

bool isWebPage(std::string_view beginning) {
    constexpr std::size_t kLongest = 200;  // blanks and line ends may stand before
    const std::size_t first = std::min(beginning.find_first_not_of(" \t\r\n"), kLongest);
    if (first >= beginning.size()) return false;
    const std::string text = upperCase(beginning.substr(first, "<!DOCTYPE HTML"sv.size()));
    return text == "<!DOCTYPE HTML" || text.starts_with("<HTML");
}

/// Records that are padded with NUL have it at even and odd places alike.
bool hasZeroInEveryOtherByte(std::string_view beginning) {
    constexpr std::size_t kLooked = 4096;
    const std::string_view bytes = beginning.substr(0, kLooked);
    std::array<std::size_t, 2> zeros{};
    for (std::size_t at = 0; at < bytes.size(); ++at) zeros[at % 2] += bytes[at] == '\0' ? 1 : 0;
    const auto [few, many] = std::minmax(zeros[0], zeros[1]);
    return bytes.size() >= 8 && many * 4 >= bytes.size() && few * 50 <= many;
}

bool isWestern(char32_t character) {
    const auto within = [character](char32_t first, char32_t last) { return character >= first && character <= last; };
    return within(0xA0, 0xFF) || within(0x2010, 0x203A) || character == U'€' || character == U'™' ||
           within(0x2264, 0x2265);
}

}  // namespace

FileSample::FileSample(const std::filesystem::path& file) {
    std::error_code unreadable;
    plainFile_ = std::filesystem::is_regular_file(file, unreadable);
    if (!plainFile_) return;
    const Descriptor descriptor(file, O_RDONLY);
    const std::size_t size = descriptor.size();
    if (size <= kPieces * kPiece) {
        pieces_.push_back(readPiece(descriptor, 0, size));
    } else {
        for (const std::size_t offset : {std::size_t{0}, (size - kPiece) / 2, size - kPiece}) {
            std::string& piece = pieces_.emplace_back(readPiece(descriptor, offset, kPiece));
            if (offset > 0) dropFirstLine(piece);
            if (offset < size - kPiece) dropLastLine(piece);
        }
    }
    if (!pieces_.back().empty() && pieces_.back().back() == kEndMark) pieces_.back().pop_back();
}

std::string_view FileSample::beginning() const { return pieces_.empty() ? std::string_view() : pieces_.front(); }

Signature signatureOf(std::string_view beginning) {
    for (const Beginning& known : kBeginnings) {
        if (beginning.starts_with(known.bytes)) return known.signature;
    }
    if (isWebPage(beginning)) return Signature::WebPage;
    return hasZeroInEveryOtherByte(beginning) ? Signature::Utf16 : Signature::None;
}

void Utf8Count::add(std::string_view bytes) {
    const auto beyondAscii = [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; };
    for (;;) {
        bytes.remove_prefix(static_cast<std::size_t>(std::ranges::find_if(bytes, beyondAscii) - bytes.begin()));
        if (bytes.empty()) return;
        const FirstCharacter first = firstCharacter(bytes);
        ++(!first.character ? invalid : isWestern(*first.character) ? letters : other);
        bytes.remove_prefix(first.length);
    }
}

void LineEnds::add(std::string_view bytes, const std::function<bool(std::string_view)>& isRecord) {
    bool behindRecord = false;  // the text before was a record and ended in LF
    while (!bytes.empty()) {
        const std::size_t length = std::min(bytes.find_first_of(kLineEnds), bytes.size());
        const bool record = isRecord(bytes.substr(0, length));
        if (behindRecord && record) ++lineFeeds;
        bytes.remove_prefix(length);
        openEnd = bytes.empty();
        if (openEnd) return;
        const bool carriageReturn = bytes.front() == '\r';
        if (carriageReturn) ++carriageReturns;
        behindRecord = !carriageReturn && record;
        bytes.remove_prefix(carriageReturn && bytes.starts_with(kLineEnds) ? 2 : 1);
    }
    if (behindRecord) ++lineFeeds;
}

}  // namespace kolmera
