#pragma once

#include <string_view>

namespace kolmera {

/// Character codes of typed keys that the key rules know by name.
namespace keys {
inline constexpr int kRejected = 0;
inline constexpr int kBackspace = 8;
inline constexpr int kTab = 9;
inline constexpr int kEnter = 13;
inline constexpr int kEscape = 27;
}  // namespace keys

/// What may be typed into a number field: digits, one decimal sign and one minus where they are allowed, Backspace, Tab
/// and Enter. Everything else becomes 0. `field` is the text that the key is added to, without what it replaces.
int NumeriskTangent(std::string_view field, int key, char Decimaltecken, bool allowDecimal, bool allowMinus);

}  // namespace kolmera
