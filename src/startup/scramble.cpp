#include "startup/scramble.h"

namespace kolmera {

namespace {

constexpr int kStep = 3;
constexpr int kRun = 7;

std::string shifted(std::string_view field, int direction) {
    std::string result(field);
    int position = 0;
    for (char& byte : result) {
        const int shift = kStep * (position++ % kRun + 1);
        byte = static_cast<char>(static_cast<unsigned char>(byte) + direction * shift);
    }
    return result;
}

}  // namespace

std::string scramble(std::string_view field) { return shifted(field, -1); }

std::string unscramble(std::string_view field) { return shifted(field, 1); }

}  // namespace kolmera
