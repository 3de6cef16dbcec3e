#include "import/run/runsummary.h"

#include <utility>

namespace kolmera {
namespace {

constexpr std::size_t kFirstSlots = 1024;

/// FNV-1a with a last mixing. Among a million numbers two of one hash are a chance of one to thirty million.
std::uint64_t hashOf(std::string_view number) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char character : number) {
        const bool small = character >= 'a' && character <= 'z';
        const auto byte = static_cast<unsigned char>(small ? character - 'a' + 'A' : character);
        hash = (hash ^ byte) * 0x100000001B3;
    }
    hash ^= hash >> 32;
    hash *= 0xD6E8FEB86659FD93;
    hash ^= hash >> 32;
    return hash == 0 ? 1 : hash;
}

}  // namespace

bool SavedProducts::add(std::string_view number) {
    const std::uint64_t hash = hashOf(number);
    if (holding_) return !holds(hash) && held_.insert(hash).second;
    if (used_ * 2 >= slots_.size()) grow();
    const bool added = place(hash);
    if (added) ++used_;
    return added;
}

bool SavedProducts::holds(std::uint64_t hash) const {
    if (slots_.empty()) return false;
    const std::size_t last = slots_.size() - 1;
    std::size_t slot = hash & last;
    while (slots_[slot] != 0 && slots_[slot] != hash) slot = (slot + 1) & last;
    return slots_[slot] == hash;
}

void SavedProducts::keepHeld() {
    for (const std::uint64_t hash : std::exchange(held_, {})) {
        if (used_ * 2 >= slots_.size()) grow();
        if (place(hash)) ++used_;
    }
    holding_ = false;
}

void SavedProducts::dropHeld() {
    held_.clear();
    holding_ = false;
}

bool SavedProducts::place(std::uint64_t hash) {
    const std::size_t last = slots_.size() - 1;
    std::size_t slot = hash & last;
    for (; slots_[slot] != 0; slot = (slot + 1) & last) {
        if (slots_[slot] == hash) return false;
    }
    slots_[slot] = hash;
    return true;
}

void SavedProducts::grow() {
    const std::size_t size = slots_.empty() ? kFirstSlots : slots_.size() * 2;
    for (const std::uint64_t hash : std::exchange(slots_, std::vector<std::uint64_t>(size))) {
        if (hash != 0) place(hash);
    }
}

void RunSummary::productSaved(std::string_view number, bool isNew) {
    ++saved;
    const bool first = products.add(number);
    if (isNew) {
        ++newProducts;
    } else if (first) {
        ++changed;
    }
}

}  // namespace kolmera
