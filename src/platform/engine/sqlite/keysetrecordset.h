#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/listposition.h"
#include "platform/engine/recordset.h"
#include "platform/engine/sqlite/filetable.h"
#include "platform/engine/sqlite/tablerow.h"

namespace kolmera {

/// A dynaset on one table: the IDs of its records are in memory, the records themselves are read when they are looked
/// at, as they are then.
class KeysetRecordset final : public Recordset {
  public:
    /// `columns` are ordinals of the table, `ids` the records in their order.
    KeysetRecordset(FileTable& table, std::string_view source, std::vector<int> columns, std::vector<std::int64_t> ids,
                    bool readOnly);

    [[nodiscard]] const std::string& name() const override { return name_; }
    [[nodiscard]] RecordsetType type() const override { return RecordsetType::Dynaset; }
    [[nodiscard]] const std::vector<FieldDef>& fields() const override { return fields_; }
    [[nodiscard]] int ordinal(std::string_view field) const override;

    [[nodiscard]] bool bof() const override { return position_.bof(); }
    [[nodiscard]] bool eof() const override { return position_.eof(); }
    void moveFirst() override;
    void moveLast() override;
    void moveNext() override;
    void movePrevious() override;
    void moveToModified() override;
    [[nodiscard]] std::int32_t recordCount() override { return position_.count(); }

    void setIndex(std::string_view index) override;
    [[nodiscard]] std::string index() const override { return {}; }
    void seek(std::string_view comparison, std::span<const Value> keys) override;
    void findFirst(std::string_view criteria) override;
    [[nodiscard]] bool noMatch() const override { return noMatch_; }
    void setSort(std::string_view columns) override { sort_ = columns; }
    [[nodiscard]] const std::string& sort() const override { return sort_; }

    [[nodiscard]] const Value& value(int ordinal) override;
    void addNew() override { row_.addNew(); }
    void edit() override;
    void set(int ordinal, Value value) override;
    void update() override;
    void cancelUpdate() override { row_.cancel(); }
    void remove() override;

  private:
    void readCurrent();
    [[nodiscard]] int tableOrdinal(int ordinal) const;
    std::vector<std::int64_t> matches(std::string_view criteria);

    FileTable& table_;
    std::string name_;
    std::vector<int> columns_;
    std::vector<FieldDef> fields_;
    std::vector<std::int64_t> ids_;
    ListPosition position_;
    TableRow row_;
    bool noMatch_ = false;
    std::string sort_;
};

}  // namespace kolmera
