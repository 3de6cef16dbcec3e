#include "jet/jetpassword.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string_view>
#include <utility>

namespace kolmera::jet {

namespace {

// Where things stand on the first page.
constexpr std::size_t kFormat = 0x14, kScrambled = 0x18, kPassword = 0x42, kMade = 0x72;
constexpr std::size_t kScrambledJet3 = 126, kScrambledJet4 = 128, kPasswordJet3 = 20, kPasswordJet4 = 40;

/// The first page is scrambled by RC4 with the same key in all files.
void unscramble(std::string& page, std::size_t length) {
    constexpr std::array<std::uint8_t, 4> kKey = {0xC7, 0xDA, 0x39, 0x6B};
    std::array<std::uint8_t, 256> state{};
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    for (std::size_t i = 0, j = 0; i < state.size(); ++i) {
        j = (j + state[i] + kKey[i % kKey.size()]) % state.size();
        std::swap(state[i], state[j]);
    }
    for (std::size_t at = 0, i = 0, j = 0; at < length; ++at) {
        i = (i + 1) % state.size();
        j = (j + state[i]) % state.size();
        std::swap(state[i], state[j]);
        const auto stream = state[static_cast<std::uint8_t>(state[i] + state[j])];
        page[kScrambled + at] = static_cast<char>(static_cast<std::uint8_t>(page[kScrambled + at]) ^ stream);
    }
}

}  // namespace

bool hasPassword(std::string page) {
    if (page.size() < kScrambled + kScrambledJet4) return false;
    const bool jet3 = page[kFormat] == 0;
    unscramble(page, jet3 ? kScrambledJet3 : kScrambledJet4);
    // Jet 4 masks it with the day on which the file was made.
    std::array<char, sizeof(std::int32_t)> mask{};
    double made = 0;
    std::memcpy(&made, page.data() + kMade, sizeof made);
    if (!jet3 && std::abs(made) < 1e9) mask = std::bit_cast<decltype(mask)>(static_cast<std::int32_t>(made));
    const std::string_view password = std::string_view(page).substr(kPassword, jet3 ? kPasswordJet3 : kPasswordJet4);
    for (std::size_t i = 0; i < password.size(); ++i) {
        if (password[i] != mask[i % mask.size()]) return true;
    }
    return false;
}

}  // namespace kolmera::jet
