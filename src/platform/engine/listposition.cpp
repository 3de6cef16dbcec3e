#include "platform/engine/listposition.h"

#include <algorithm>

#include "platform/error.h"

namespace kolmera {

ListPosition::ListPosition(std::size_t size) : size_(size) {
    if (size_ > 0) moveTo(0);
}

void ListPosition::requireRecords() const {
    if (size_ == removed_) throw PlatformError(errors::kNoCurrentRecord, "there is no record");
}

std::size_t ListPosition::current() const {
    if (place_ != Place::Record) throw PlatformError(errors::kNoCurrentRecord, "there is no current record");
    return at_;
}

void ListPosition::moveTo(std::size_t record) {
    at_ = record;
    place_ = Place::Record;
    visited_ = std::max(visited_, record + 1);
}

bool ListPosition::stopForward(std::size_t from) {
    while (from < size_ && isRemoved(from)) ++from;
    if (from >= size_) return false;
    moveTo(from);
    return true;
}

bool ListPosition::stopBackward(std::size_t behind) {
    while (behind > 0 && isRemoved(behind - 1)) --behind;
    if (behind == 0) return false;
    moveTo(behind - 1);
    return true;
}

void ListPosition::moveFirst() {
    requireRecords();
    stopForward(0);
}

void ListPosition::moveLast() {
    requireRecords();
    stopBackward(size_);
}

void ListPosition::moveNext() {
    if (place_ == Place::BeforeFirst) return moveFirst();
    if (place_ == Place::BehindLast) requireRecords();
    if (place_ == Place::BehindLast) throw PlatformError(errors::kNoCurrentRecord, "behind the last record");
    if (!stopForward(at_ + 1)) place_ = Place::BehindLast;
}

void ListPosition::movePrevious() {
    if (place_ == Place::BehindLast) return moveLast();
    if (place_ == Place::BeforeFirst) throw PlatformError(errors::kNoCurrentRecord, "before the first record");
    if (!stopBackward(at_)) place_ = Place::BeforeFirst;
}

void ListPosition::append() {
    ++size_;
    ++visited_;
}

void ListPosition::remove() {
    gone_.resize(size_);
    gone_[current()] = true;
    ++removed_;
    place_ = Place::Removed;
}

}  // namespace kolmera
