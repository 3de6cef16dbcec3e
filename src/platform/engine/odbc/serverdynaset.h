#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/listposition.h"
#include "platform/engine/odbc/serverrow.h"
#include "platform/engine/odbc/servertable.h"
#include "platform/engine/recordset.h"

namespace kolmera {

/// A dynaset on one table of a server. Nothing is asked of the server before something is asked of the dynaset; then
/// the first few rows are read, and the list of all IDs only when the dynaset is walked beyond them. `findFirst` reads
/// the row that it finds and leaves open where it stands.
class ServerDynaset final : public Recordset {
  public:
    /// The columns of a dynaset, which many may share.
    struct Columns {
        Columns(const ServerTable& table, std::vector<int> itsOrdinals);

        std::vector<int> ordinals;  ///< of the table
        std::vector<FieldDef> fields;
    };

    /// `rest` is the condition and the order, which tells equal rows apart.
    ServerDynaset(ServerTable& table, std::string_view source, std::shared_ptr<const Columns> columns,
                  ServerSelectRest rest, bool readOnly);

    [[nodiscard]] const std::string& name() const override { return name_; }
    [[nodiscard]] RecordsetType type() const override { return RecordsetType::Dynaset; }
    [[nodiscard]] const std::vector<FieldDef>& fields() const override { return columns_->fields; }
    [[nodiscard]] int ordinal(std::string_view field) const override;

    [[nodiscard]] bool bof() const override;
    [[nodiscard]] bool eof() const override;
    void moveFirst() override;
    void moveLast() override;
    void moveNext() override;
    void movePrevious() override;
    void moveToModified() override;
    [[nodiscard]] std::int32_t recordCount() override;

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
    void start() const;
    void loadAll() const;
    void putAddedLast() const;
    void place();
    void goTo(std::int64_t id);
    void readCurrent();
    [[nodiscard]] bool takeFromBlock(std::int64_t id);
    void readBlock(std::size_t first);
    template <typename Write>
    void writeCurrent(Write&& write);
    [[nodiscard]] std::int64_t currentId() const;
    [[nodiscard]] int tableOrdinal(int ordinal) const;
    [[nodiscard]] ServerStatement condition(std::string_view criteria) const;

    ServerTable& table_;
    std::string name_;
    std::shared_ptr<const Columns> columns_;
    ServerSelectRest rest_;
    ServerRow row_;
    std::string sort_;
    bool noMatch_ = false;

    // Asking for BOF or EOF may read the first rows.
    mutable bool started_ = false;
    mutable bool complete_ = false;  ///< `ids_` holds all records, not only the first
    mutable std::vector<std::int64_t> ids_;
    mutable std::vector<std::int64_t> added_;  ///< by this recordset; they come last
    mutable ListPosition position_{0};
    mutable ServerTable::Rows block_;    ///< rows read ahead
    std::optional<std::int64_t> found_;  ///< the current record, whose place in the list is not known
    std::size_t lastRead_ = 0;
};

}  // namespace kolmera
