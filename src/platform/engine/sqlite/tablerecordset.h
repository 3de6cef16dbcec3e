#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/recordset.h"
#include "platform/engine/sqlite/filetable.h"
#include "platform/engine/sqlite/indexwalk.h"
#include "platform/engine/sqlite/tablerow.h"

namespace kolmera {

/// A table of a file, with seeks and moves by index. Only the current record is in memory.
class TableRecordset final : public Recordset {
  public:
    TableRecordset(FileTable& table, std::string_view source, bool readOnly);

    [[nodiscard]] const std::string& name() const override { return name_; }
    [[nodiscard]] RecordsetType type() const override { return RecordsetType::Table; }
    [[nodiscard]] const std::vector<FieldDef>& fields() const override { return table_.definition().fields; }
    [[nodiscard]] int ordinal(std::string_view field) const override;

    [[nodiscard]] bool bof() const override;
    [[nodiscard]] bool eof() const override;
    void moveFirst() override;
    void moveLast() override;
    void moveNext() override { move(IndexWalk::Direction::Forward); }
    void movePrevious() override { move(IndexWalk::Direction::Backward); }
    void moveToModified() override;
    [[nodiscard]] std::int32_t recordCount() override;

    void setIndex(std::string_view index) override;
    [[nodiscard]] std::string index() const override;
    void seek(std::string_view comparison, std::span<const Value> keys) override;
    void findFirst(std::string_view criteria) override;
    [[nodiscard]] bool noMatch() const override { return noMatch_; }
    void setSort(std::string_view columns) override { sort_ = columns; }
    [[nodiscard]] const std::string& sort() const override { return sort_; }

    [[nodiscard]] const Value& value(int ordinal) override;
    void addNew() override { row_.addNew(); }
    void edit() override;
    void set(int ordinal, Value value) override;
    void update() override { row_.update(); }
    void cancelUpdate() override { row_.cancel(); }
    void remove() override;

  private:
    enum class Place {
        Unread,  ///< at the first record, which nobody has asked for yet
        Record,
        Removed,  ///< where a record was; keys and ID are in `removedKeys_`, `removedId_`
        Nowhere,  ///< a seek found nothing
        Empty,
        BeforeFirst,
        BehindLast,
    };

    void resolve() const;
    void moveToEnd(IndexWalk::Direction direction);
    void move(IndexWalk::Direction direction);
    bool moveFromHere(IndexWalk::Direction direction);
    [[nodiscard]] std::vector<Value> currentKeys();
    std::span<const Value> fittedKeys(std::span<const Value> keys);
    bool search(std::string_view comparison, std::span<const Value> keys);
    bool firstBefore(std::span<const Value> keys, bool orEqual);
    void settleOn(bool found, Place otherwise) const { place_ = found ? Place::Record : otherwise; }

    FileTable& table_;
    std::string name_;
    std::string sort_;
    // Asking for BOF or EOF may read the first record.
    mutable TableRow row_;
    mutable IndexWalk walk_;
    mutable Place place_ = Place::Unread;
    bool noMatch_ = false;
    std::vector<Value> removedKeys_;
    std::int64_t removedId_ = 0;
    std::vector<Value> keys_;  ///< of the last seek, fitted to the columns
};

}  // namespace kolmera
