#include "definitions/ruler.h"

#include <algorithm>
#include <iterator>

namespace kolmera {

void Ruler::set(int boundary) {
    if (holds(boundary)) boundaries_.insert(boundary);
}

void Ruler::setAround(Piece piece) {
    set(piece.FrånPos);
    set(piece.FrånPos + piece.Längd);
}

std::vector<Piece> Ruler::pieces() const {
    std::vector<Piece> pieces;
    if (length_ < 1) return pieces;
    int first = 1;
    for (const int boundary : boundaries_) {
        pieces.push_back({first, boundary - first});
        first = boundary;
    }
    pieces.push_back({first, length_ - first + 1});
    return pieces;
}

Piece Ruler::pieceAt(int byte) const {
    const auto behind = boundaries_.upper_bound(byte);
    const int last = behind == boundaries_.end() ? length_ : *behind - 1;
    const int first = behind == boundaries_.begin() ? 1 : *std::prev(behind);
    return {first, last - first + 1};
}

std::vector<int> boundariesBehindBlanks(const std::vector<std::string>& records, int length) {
    std::vector<bool> written(static_cast<std::size_t>(std::max(length, 0)));
    for (const std::string& record : records) {
        for (std::size_t byte = 0; byte < std::min(record.size(), written.size()); ++byte) {
            if (static_cast<unsigned char>(record[byte]) > ' ') written[byte] = true;
        }
    }
    std::vector<int> boundaries;
    bool textBefore = false;
    for (std::size_t byte = 0; byte < written.size(); ++byte) {
        if (written[byte] && textBefore && !written[byte - 1]) boundaries.push_back(static_cast<int>(byte) + 1);
        textBefore = textBefore || written[byte];
    }
    return boundaries;
}

}  // namespace kolmera
