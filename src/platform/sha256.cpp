#include "platform/sha256.h"

#include <sodium.h>

#include <array>

namespace kolmera {

struct Sha256::State {
    crypto_hash_sha256_state state{};
};

Sha256::Sha256() : state_(std::make_unique<State>()) { crypto_hash_sha256_init(&state_->state); }

Sha256::~Sha256() = default;

void Sha256::add(std::string_view bytes) {
    crypto_hash_sha256_update(&state_->state, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

std::string Sha256::hexadecimal() {
    std::array<unsigned char, crypto_hash_sha256_BYTES> digest{};
    crypto_hash_sha256_final(&state_->state, digest.data());
    std::string text(2 * digest.size() + 1, '\0');
    sodium_bin2hex(text.data(), text.size(), digest.data(), digest.size());
    text.pop_back();
    return text;
}

}  // namespace kolmera
