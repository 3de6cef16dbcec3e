#include "suite/folderpart.h"

namespace kolmera {

std::string Mappdel(std::string_view path) {
    // The paths of this system have "/" only, those of the suite never as their first character.
    const std::string_view separators = path.starts_with('/') ? "/" : "\\:";
    for (const char separator : separators) {
        const std::size_t last = path.rfind(separator);
        if (last == 0) return std::string(path);
        if (last != std::string_view::npos) return std::string(path.substr(0, last + 1));
    }
    return std::string(path);
}

}  // namespace kolmera
