#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "source/sourceformat.h"

namespace kolmera {

/// Turns the bytes of a text into UTF-8, piece by piece; a character may lie in two pieces. The mark at the beginning
/// of a UTF-8 or UTF-16 text is left out, and what is no character becomes U+FFFD.
class Decoder {
  public:
    explicit Decoder(CharacterSet characters) : characters_(characters) {}

    /// Adds the characters of a piece to `out`; `last` tells that no piece follows.
    void decode(std::string_view piece, bool last, std::string& out);
    /// How many U+FFFD stand for something that is no character.
    [[nodiscard]] std::uint64_t malformed() const { return malformed_; }

  private:
    void decodeUtf8(std::string_view bytes, bool last, std::string& out);
    void decodeUtf16(std::string_view bytes, bool last, std::string& out);
    void addMalformed(std::string& out);

    CharacterSet characters_;
    bool begun_ = false;
    std::string held_;  ///< the beginning of a character whose rest comes with the next piece
    std::string page_;
    std::uint64_t malformed_ = 0;
};

/// Lines and corners that DOS programs drew tables with, U+2500 to U+257F.
inline constexpr std::size_t kTableLineBytes = 3;
inline bool beginsWithTableLine(std::string_view text) {
    return text.starts_with("\xE2\x94") || text.starts_with("\xE2\x95");
}

}  // namespace kolmera
