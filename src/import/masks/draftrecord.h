#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/recordset.h"

namespace kolmera {

/// A record that is being edited or added, for steps that come behind its saving: what they edit and update stays in
/// it, and nothing is saved.
class DraftRecord final : public Recordset {
  public:
    explicit DraftRecord(Recordset& record) : record_(record) {}

    void edit() override {}
    void update() override {}

    [[nodiscard]] const std::string& name() const override { return record_.name(); }
    [[nodiscard]] RecordsetType type() const override { return record_.type(); }
    [[nodiscard]] const std::vector<FieldDef>& fields() const override { return record_.fields(); }
    [[nodiscard]] int ordinal(std::string_view field) const override { return record_.ordinal(field); }
    [[nodiscard]] bool bof() const override { return record_.bof(); }
    [[nodiscard]] bool eof() const override { return record_.eof(); }
    void moveFirst() override { record_.moveFirst(); }
    void moveLast() override { record_.moveLast(); }
    void moveNext() override { record_.moveNext(); }
    void movePrevious() override { record_.movePrevious(); }
    void moveToModified() override { record_.moveToModified(); }
    [[nodiscard]] std::int32_t recordCount() override { return record_.recordCount(); }
    void setIndex(std::string_view index) override { record_.setIndex(index); }
    [[nodiscard]] std::string index() const override { return record_.index(); }
    void seek(std::string_view comparison, std::span<const Value> keys) override { record_.seek(comparison, keys); }
    void findFirst(std::string_view criteria) override { record_.findFirst(criteria); }
    [[nodiscard]] bool noMatch() const override { return record_.noMatch(); }
    void setSort(std::string_view columns) override { record_.setSort(columns); }
    [[nodiscard]] const std::string& sort() const override { return record_.sort(); }
    [[nodiscard]] const Value& value(int ordinal) override { return record_.value(ordinal); }
    void addNew() override { record_.addNew(); }
    void set(int ordinal, Value value) override { record_.set(ordinal, std::move(value)); }
    void cancelUpdate() override { record_.cancelUpdate(); }
    void remove() override { record_.remove(); }

  private:
    Recordset& record_;
};

}  // namespace kolmera
