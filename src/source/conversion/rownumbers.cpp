#include "source/conversion/rownumbers.h"

#include <cstring>

namespace kolmera {
namespace {

constexpr std::size_t kNumber = sizeof(std::uint64_t);
constexpr std::size_t kBlock = 8192 * kNumber;

}  // namespace

void RowNumbers::add(std::uint64_t row) {
    char bytes[kNumber];
    std::memcpy(bytes, &row, kNumber);
    block_.append(bytes, kNumber);
    if (block_.size() >= kBlock) finish();
}

void RowNumbers::finish() {
    file_.write(block_);
    block_.clear();
}

std::uint64_t RowNumbers::of(std::uint64_t record) {
    const std::uint64_t held = block_.size() / kNumber;
    if (record < first_ || record >= first_ + held) {
        block_.resize(kBlock);
        block_.resize(file_.readAt((record - 1) * kNumber, block_.data(), kBlock));
        first_ = record;
        if (block_.size() < kNumber) return 0;
    }
    std::uint64_t row = 0;
    std::memcpy(&row, block_.data() + (record - first_) * kNumber, kNumber);
    return row;
}

}  // namespace kolmera
