#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/bytestream.h"
#include "source/characters.h"
#include "source/rowreader.h"

namespace kolmera {

/// The part of a text that is looked at, in UTF-8: it grows at its end until a row is whole, and loses it at its front.
class TextWindow {
  public:
    TextWindow(std::unique_ptr<ByteStream> stream, CharacterSet characters, const SourceLimits& limits);

    /// What is not dropped yet. `grow` and `drop` move it.
    [[nodiscard]] std::string_view rest() const { return std::string_view(text_).substr(begin_); }
    /// The same, for taking the doubling out of quotes.
    [[nodiscard]] char* restData() { return text_.data() + begin_; }
    /// Reads on; false when the text has ended. Throws kRowTooLong when the rest is longer than a row may be.
    bool grow(std::uint64_t row);
    void drop(std::size_t count) { begin_ += count; }
    [[nodiscard]] bool ended() const { return ended_; }

    [[nodiscard]] double progress() const { return stream_->progress(); }
    [[nodiscard]] std::uint64_t malformed() const { return decoder_.malformed(); }

  private:
    std::unique_ptr<ByteStream> stream_;
    Decoder decoder_;
    std::size_t most_;
    std::string piece_;
    std::string text_;
    std::size_t begin_ = 0;
    bool ended_ = false;
};

/// Where the next line ends, and where the one behind it begins. Lines end at CR LF, LF or CR.
struct LineEnd {
    std::size_t end, next;
};
/// Throws what `TextWindow::grow` does; `from` is where to begin searching.
LineEnd lineEnd(TextWindow& window, std::size_t from, std::uint64_t row);

/// U+FFFD, which stands for what is no character.
inline constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

}  // namespace kolmera
