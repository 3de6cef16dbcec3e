#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace kolmera {

/// A set of columns of one table, by ordinal.
class ColumnSet {
  public:
    static constexpr int kCapacity = 256;  ///< columns that a table may have

    void add(int column) { word(column) |= bit(column); }
    void remove(int column) { word(column) &= ~bit(column); }
    void clear() { words_ = {}; }
    [[nodiscard]] bool has(int column) const {
        return (words_[static_cast<std::size_t>(column) / 64] & bit(column)) != 0;
    }
    [[nodiscard]] bool empty() const { return (words_[0] | words_[1] | words_[2] | words_[3]) == 0; }
    [[nodiscard]] bool intersects(const ColumnSet& other) const {
        std::uint64_t common = 0;
        for (std::size_t i = 0; i < words_.size(); ++i) common |= words_[i] & other.words_[i];
        return common != 0;
    }
    /// How many columns of the set stand before this one.
    [[nodiscard]] std::size_t rank(int column) const {
        const auto place = static_cast<std::size_t>(column) / 64;
        int before = std::popcount(words_[place] & (bit(column) - 1));
        for (std::size_t i = 0; i < place; ++i) before += std::popcount(words_[i]);
        return static_cast<std::size_t>(before);
    }
    ColumnSet& operator|=(const ColumnSet& other) {
        for (std::size_t i = 0; i < words_.size(); ++i) words_[i] |= other.words_[i];
        return *this;
    }
    bool operator==(const ColumnSet&) const = default;

    /// Calls `visit` with every column of the set, in ascending order.
    template <typename Visit>
    void forEach(Visit&& visit) const {
        for (std::size_t i = 0; i < words_.size(); ++i) {
            for (std::uint64_t rest = words_[i]; rest != 0; rest &= rest - 1) {
                visit(static_cast<int>(i) * 64 + std::countr_zero(rest));
            }
        }
    }

  private:
    static std::uint64_t bit(int column) { return std::uint64_t{1} << (static_cast<unsigned>(column) % 64); }
    std::uint64_t& word(int column) { return words_[static_cast<std::size_t>(column) / 64]; }

    std::array<std::uint64_t, kCapacity / 64> words_{};
};

}  // namespace kolmera
