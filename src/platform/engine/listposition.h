#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kolmera {

/// The current record in a list of records that is in memory, and which records have been visited and removed.
class ListPosition {
  public:
    explicit ListPosition(std::size_t size);

    [[nodiscard]] bool bof() const { return place_ == Place::BeforeFirst || empty(); }
    [[nodiscard]] bool eof() const { return place_ == Place::BehindLast || empty(); }
    /// The records visited so far.
    [[nodiscard]] std::int32_t count() const { return static_cast<std::int32_t>(visited_ - removed_); }

    // Moving throws kNoCurrentRecord in an empty list and beyond its ends.
    void moveFirst();
    void moveLast();
    void moveNext();
    void movePrevious();
    void moveTo(std::size_t record);

    [[nodiscard]] bool onRecord() const { return place_ == Place::Record; }
    /// Place of the current record; throws kNoCurrentRecord when there is none.
    [[nodiscard]] std::size_t current() const;
    [[nodiscard]] bool isRemoved(std::size_t record) const { return record < gone_.size() && gone_[record]; }

    /// A record has been added at the end; the current one stays.
    void append();
    /// So many more records are known behind the last; they have not been visited.
    void grow(std::size_t records) { size_ += records; }
    /// The current record is gone; its place stays current.
    void remove();

  private:
    enum class Place { Record, Removed, BeforeFirst, BehindLast };

    [[nodiscard]] bool empty() const { return size_ == removed_ && place_ != Place::Removed; }
    void requireRecords() const;
    bool stopForward(std::size_t from);
    bool stopBackward(std::size_t behind);

    std::size_t size_;
    std::size_t at_ = 0;
    std::size_t visited_ = 0;
    std::size_t removed_ = 0;
    Place place_ = Place::BehindLast;
    std::vector<bool> gone_;  ///< only as long as needed
};

}  // namespace kolmera
