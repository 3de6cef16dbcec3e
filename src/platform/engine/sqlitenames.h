#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// A name as an identifier of a statement: "1Utpris" between double quotes.
inline std::string identifier(std::string_view name) {
    std::string result = "\"";
    for (const char c : name) {
        if (c == '"') result += c;
        result += c;
    }
    return result += '"';
}

/// Tables with this beginning belong to the engine and are not listed.
inline constexpr std::string_view kInternalPrefix = "kolmera_";

/// What a company file says in its header: "KOLM", and the version of the layout.
inline constexpr int kApplicationId = 0x4B4F4C4D;
inline constexpr int kUserVersion = 1;

}  // namespace kolmera
