#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/sourcelist.h"

namespace kolmera {

/// The boundaries that cut a record of fixed length into pieces. A boundary stands before a byte, 2 to the record's
/// length; together the pieces make the whole record.
class Ruler {
  public:
    explicit Ruler(int length) : length_(length) {}

    [[nodiscard]] int length() const { return length_; }
    [[nodiscard]] const std::set<int>& boundaries() const { return boundaries_; }
    [[nodiscard]] bool holds(int boundary) const { return boundary >= 2 && boundary <= length_; }
    void set(int boundary);
    void remove(int boundary) { boundaries_.erase(boundary); }
    /// The boundaries of a piece, as far as they lie within the record.
    void setAround(Piece piece);
    [[nodiscard]] std::vector<Piece> pieces() const;
    /// The piece in which a byte stands.
    [[nodiscard]] Piece pieceAt(int byte) const;

  private:
    int length_;
    std::set<int> boundaries_;
};

/// The boundaries behind columns that are blank in all records: where the next text begins. Records that are all blank,
/// and those that end before, say nothing.
std::vector<int> boundariesBehindBlanks(const std::vector<std::string>& records, int length);

}  // namespace kolmera
