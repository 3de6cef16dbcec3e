#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "db/companyschema.h"
#include "platform/engine/database.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

/// What a fake server was asked for, one line each: "open SOURCE type options", "execute TEXT options [parameters]",
/// "find CRITERIA", "last", "first".
using Asked = std::vector<std::string>;

/// A recordset of a fake server: it has a name, a sort and a number of records, and remembers what it was asked.
class FakeRecordset final : public Recordset {
  public:
    FakeRecordset(std::string source, std::int32_t count, Asked& asked)
        : name_(std::move(source)), count_(count), asked_(asked) {}

    const std::string& name() const override { return name_; }
    RecordsetType type() const override { return RecordsetType::Dynaset; }
    const std::vector<FieldDef>& fields() const override { return fields_; }
    int ordinal(std::string_view) const override { throw PlatformError(errors::kUnknownField, "no fields"); }
    bool bof() const override { return count_ == 0; }
    bool eof() const override { return count_ == 0; }
    void moveFirst() override { asked_.emplace_back("first"); }
    void moveLast() override { asked_.emplace_back("last"); }
    void moveNext() override { throw PlatformError(errors::kNoCurrentRecord, "moveNext"); }
    void movePrevious() override { throw PlatformError(errors::kNoCurrentRecord, "movePrevious"); }
    void moveToModified() override { throw PlatformError(errors::kNoCurrentRecord, "moveToModified"); }
    std::int32_t recordCount() override { return count_; }
    void setIndex(std::string_view) override { throw PlatformError(errors::kUnknownField, "a server has no index"); }
    std::string index() const override { return {}; }
    void seek(std::string_view, std::span<const Value>) override {
        throw PlatformError(errors::kInternal, "a server cannot seek");
    }
    void findFirst(std::string_view criteria) override { asked_.push_back("find " + std::string(criteria)); }
    bool noMatch() const override { return count_ == 0; }
    void setSort(std::string_view columns) override { sort_ = columns; }
    const std::string& sort() const override { return sort_; }
    const Value& value(int) override { throw PlatformError(errors::kNoCurrentRecord, "value"); }
    void addNew() override { throw PlatformError(errors::kInternal, "addNew"); }
    void edit() override { throw PlatformError(errors::kInternal, "edit"); }
    void set(int, Value) override { throw PlatformError(errors::kInternal, "set"); }
    void update() override { throw PlatformError(errors::kInternal, "update"); }
    void cancelUpdate() override {}
    void remove() override { throw PlatformError(errors::kInternal, "remove"); }

  private:
    std::string name_;
    std::int32_t count_;
    Asked& asked_;
    std::string sort_;
    std::vector<FieldDef> fields_;
};

/// A server that has the company tables and answers every SELECT with `records` records.
class FakeDatabase final : public Database {
  public:
    explicit FakeDatabase(Asked& asked) : asked_(asked) {}

    std::int32_t records = 1;
    std::vector<int> tableErrors;  ///< error numbers of the next look-ups of a table, 0 for none
    int executeError = 0;
    std::vector<Value> parameters;  ///< of the last statement

    const TableDef& table(std::string_view name) override {
        asked_.push_back("table " + std::string(name));
        if (!tableErrors.empty()) {
            const int error = tableErrors.front();
            tableErrors.erase(tableErrors.begin());
            if (error != 0) throw PlatformError(error, "table");
        }
        for (const TableDef& known : schema_) {
            if (equalNoCase(known.name, name)) return known;
        }
        throw PlatformError(errors::kUnknownTable, std::string(name));
    }
    std::vector<std::string> tableNames() override { return {}; }
    std::unique_ptr<Recordset> open(std::string_view source, RecordsetType type, std::int32_t options) override {
        asked_.push_back("open " + std::string(source) + " " + std::to_string(static_cast<int>(type)) + " " +
                         std::to_string(options));
        return std::make_unique<FakeRecordset>(std::string(source), records, asked_);
    }
    std::int64_t execute(std::string_view statement, std::span<const Value> values, std::int32_t options) override {
        asked_.push_back("execute " + std::string(statement) + " " + std::to_string(options));
        parameters.assign(values.begin(), values.end());
        if (executeError != 0) throw PlatformError(executeError, "execute");
        return 0;
    }
    void insertRows(std::string_view table, std::span<const int>, std::span<const std::vector<Value>> rows) override {
        asked_.push_back("insert " + std::to_string(rows.size()) + " into " + std::string(table));
    }
    void listen(ChangeListener*) override {}
    void begin() override {}
    void commit() override {}
    void commitJoined() override {}
    void rollback() override {}
    bool inTransaction() const override { return false; }
    void settle() override {}
    std::uint64_t stamp(std::string_view) override { return 0; }
    std::vector<TableDef>& schema() { return schema_; }

  private:
    Asked& asked_;
    std::vector<TableDef> schema_ = companySchema();
};

}  // namespace kolmera
