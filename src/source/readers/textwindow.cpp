#include "source/readers/textwindow.h"

#include <algorithm>

#include "platform/error.h"

namespace kolmera {
namespace {
constexpr std::size_t kPiece = std::size_t{256} << 10;
constexpr char kEndMark = 0x1A;
}  // namespace

TextWindow::TextWindow(std::unique_ptr<ByteStream> stream, CharacterSet characters, const SourceLimits& limits)
    : stream_(std::move(stream)), decoder_(characters), most_(limits.rowBytes) {}

bool TextWindow::grow(std::uint64_t row) {
    if (ended_) return false;
    if (rest().size() > most_) {
        throw PlatformError(errors::kRowTooLong, "a row is too long").about(std::to_string(row));
    }
    text_.erase(0, begin_);
    begin_ = 0;
    // A row that does not fit is looked at from its beginning again, so the window at least doubles.
    piece_.resize(std::max(kPiece, text_.size()));
    const std::size_t got = readFully(*stream_, piece_.data(), piece_.size());
    ended_ = got < piece_.size();
    decoder_.decode(std::string_view(piece_).substr(0, got), ended_, text_);
    // DOS ends a text with this.
    if (ended_ && text_.ends_with(kEndMark)) text_.pop_back();
    return true;
}

LineEnd lineEnd(TextWindow& window, std::size_t from, std::uint64_t row) {
    for (;;) {
        const std::string_view rest = window.rest();
        const std::size_t end = rest.find_first_of("\r\n", from);
        if (end == std::string_view::npos) {
            from = rest.size();
            if (!window.grow(row)) return {rest.size(), rest.size()};
        } else if (rest[end] == '\n') {
            return {end, end + 1};
        } else if (end + 1 < rest.size()) {
            return {end, end + (rest[end + 1] == '\n' ? 2U : 1U)};
        } else {
            from = end;  // the LF may come with the next piece
            if (!window.grow(row)) return {end, end + 1};
        }
    }
}

}  // namespace kolmera
