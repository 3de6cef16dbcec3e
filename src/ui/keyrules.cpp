#include "ui/keyrules.h"

namespace kolmera {

int NumeriskTangent(std::string_view field, int key, char Decimaltecken, bool allowDecimal, bool allowMinus) {
    const auto once = [&](char sign, bool allowed) {
        return allowed && field.find(sign) == std::string_view::npos ? key : keys::kRejected;
    };
    if (key >= '0' && key <= '9') return key;
    if (key == Decimaltecken) return once(Decimaltecken, allowDecimal);
    if (key == '-') return once('-', allowMinus);
    return key == keys::kBackspace || key == keys::kTab || key == keys::kEnter ? key : keys::kRejected;
}

}  // namespace kolmera
