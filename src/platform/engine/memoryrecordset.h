#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/listposition.h"
#include "platform/engine/recordset.h"
#include "platform/locale.h"

namespace kolmera {

/// Records in memory, for reading only: a snapshot, or a dynaset on a statement whose rows are not rows of one table.
class MemoryRecordset final : public Recordset {
  public:
    using Record = std::vector<Value>;

    MemoryRecordset(std::string_view source, RecordsetType type, std::vector<FieldDef> fields,
                    std::vector<Record> records, const Locale& locale);

    [[nodiscard]] const std::string& name() const override { return name_; }
    [[nodiscard]] RecordsetType type() const override { return type_; }
    [[nodiscard]] const std::vector<FieldDef>& fields() const override { return fields_; }
    [[nodiscard]] int ordinal(std::string_view field) const override;

    [[nodiscard]] bool bof() const override { return position_.bof(); }
    [[nodiscard]] bool eof() const override { return position_.eof(); }
    void moveFirst() override { position_.moveFirst(); }
    void moveLast() override { position_.moveLast(); }
    void moveNext() override { position_.moveNext(); }
    void movePrevious() override { position_.movePrevious(); }
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
    void addNew() override { refuseWriting(); }
    void edit() override { refuseWriting(); }
    void set(int /*ordinal*/, Value /*value*/) override { refuseWriting(); }
    void update() override { refuseWriting(); }
    void cancelUpdate() override {}
    void remove() override { refuseWriting(); }

  private:
    [[noreturn]] static void refuseWriting();

    std::string name_;
    RecordsetType type_;
    std::vector<FieldDef> fields_;
    std::vector<Record> records_;
    Locale locale_;
    ListPosition position_;
    bool noMatch_ = false;
    std::string sort_;
};

}  // namespace kolmera
