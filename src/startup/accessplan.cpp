#include "startup/accessplan.h"

#include <fmt/format.h>

#include <algorithm>

#include "db/companyschema.h"
#include "platform/engine/sqlitenames.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

using Kind = AccessRemark::Kind;

constexpr int kLongestText = 255;
constexpr int kGuidSize = 38;
constexpr std::size_t kMostColumns = 255;

/// The field that keeps what a column of the file has. Binary columns have none.
FieldDef fieldOf(const jet::Column& column) {
    FieldDef field{.name = column.name};
    switch (column.type) {
        case jet::ColumnType::Guid:
            field.size = kGuidSize;
            break;
        case jet::ColumnType::Decimal:
            field.size = kLongestText;
            break;
        case jet::ColumnType::Text:
            field.size = column.size == 0 ? kLongestText : std::min(static_cast<int>(column.size), kLongestText);
            break;
        default:
            field.type = static_cast<FieldType>(column.type);  // the numbers are the same
    }
    field.counter = column.counter && column.type == jet::ColumnType::Long;
    field.defaultNull = field.type != FieldType::Text && column.standard.empty() && field.type != FieldType::Boolean;
    return field;
}

bool isBinary(jet::ColumnType type) {
    return type == jet::ColumnType::Binary || type == jet::ColumnType::Ole || type == jet::ColumnType::Other;
}

/// Whether new rows get by themselves what the file says.
bool isKeptStandard(std::string_view standard, const FieldDef& field) {
    constexpr std::string_view kZero[] = {"0", "=0", "No", "=No", "False", "=False"};
    constexpr std::string_view kEmpty[] = {"", "\"\"", "=\"\"", "Null"};
    if (std::ranges::find(kZero, standard) != std::end(kZero)) return !field.defaultNull;
    return std::ranges::find(kEmpty, standard) != std::end(kEmpty);
}

std::string withText(const std::string& name, std::string_view text) { return fmt::format("{} ({})", name, text); }

bool isUsableName(std::string_view table) {
    return !table.starts_with(kInternalPrefix) && !lowerCase(table).starts_with("sqlite_");
}

}  // namespace

AccessPlan::AccessPlan() {
    for (TableDef& table : companySchema()) known_.push_back({std::move(table)});
}

void AccessPlan::add(const jet::Table& table) {
    const auto known = std::ranges::find_if(
        known_, [&](const Known& candidate) { return equalNoCase(candidate.definition.name, table.name); });
    const bool twice = std::ranges::any_of(
        tables_, [&](const AccessTable& other) { return equalNoCase(other.made.name, table.name); });
    if (twice || !isUsableName(table.name) || table.columns.empty()) {
        remarks.push_back({Kind::TableLeftOut, table.name, table.rows});
        tables_.push_back({.made = {}, .columns = {}, .rows = table.rows, .leftOut = true});
    } else if (known == known_.end()) {
        tables_.push_back(planned(table, TableDef{.name = table.name, .fields = {}, .indexes = {}}, false));
    } else {
        known->found = true;
        tables_.push_back(planned(table, known->definition, true));
    }
}

AccessTable AccessPlan::planned(const jet::Table& table, TableDef made, bool known) {
    AccessTable result{.made = std::move(made), .columns = {}, .rows = table.rows, .leftOut = false};
    const std::size_t knownColumns = result.made.fields.size();
    for (const jet::Column& column : table.columns) {
        const int ordinal = place(column, result.made, knownColumns, table.name + "." + column.name);
        const bool taken = ordinal >= 0 && std::ranges::find(result.columns, ordinal) != result.columns.end();
        if (taken) remarks.push_back({Kind::ColumnLeftOut, table.name + "." + column.name});
        result.columns.push_back(taken ? -1 : ordinal);
        const int kept = result.columns.back();
        remarkLost(column, kept < 0 ? FieldDef() : result.made.fields[static_cast<std::size_t>(kept)],
                   table.name + "." + column.name);
    }
    if (!table.rule.empty()) remarks.push_back({Kind::RuleLeftOut, withText(table.name, table.rule)});
    if (!table.properties.empty()) remarks.push_back({Kind::PropertiesLeftOut, withText(table.name, table.properties)});
    for (std::size_t i = 0; known && i < knownColumns; ++i) {
        if (std::ranges::find(result.columns, static_cast<int>(i)) != result.columns.end()) continue;
        remarks.push_back({Kind::ColumnMissing, table.name + "." + result.made.fields[i].name});
    }
    // A table of pictures alone has nothing to be made of.
    result.leftOut = result.made.fields.empty();
    if (result.leftOut) remarks.push_back({Kind::TableLeftOut, table.name, table.rows});
    addIndexes(table, result);
    return result;
}

/// The ordinal that a column of the file gets.
int AccessPlan::place(const jet::Column& column, TableDef& made, std::size_t knownColumns, const std::string& name) {
    const int same = made.ordinal(column.name);
    const bool known = same >= 0 && static_cast<std::size_t>(same) < knownColumns;
    if (isBinary(column.type)) return -1;
    const FieldDef field = fieldOf(column);
    const bool asText = column.type == jet::ColumnType::Guid || column.type == jet::ColumnType::Decimal;
    if (asText) remarks.push_back({Kind::AsText, name});
    if (known) {
        FieldDef& kept = made.fields[static_cast<std::size_t>(same)];
        if (kept.type != field.type) {
            if (!asText) remarks.push_back({Kind::OtherType, name});
        } else if (kept.type == FieldType::Text) {
            kept.size = field.size;
        }
        return same;
    }
    if (same >= 0) return same;
    if (made.fields.size() >= kMostColumns) {
        remarks.push_back({Kind::ColumnLeftOut, name});
        return -1;
    }
    made.fields.push_back(field);
    // One key a table: a second column that counts keeps its numbers only.
    FieldDef& added = made.fields.back();
    if (std::ranges::count(made.fields, true, &FieldDef::counter) > 1) added.counter = false;
    return static_cast<int>(made.fields.size()) - 1;
}

/// Tells what a column of the file had and the field that keeps its values has not.
void AccessPlan::remarkLost(const jet::Column& column, const FieldDef& kept, const std::string& name) {
    if (!isKeptStandard(column.standard, kept)) {
        remarks.push_back({Kind::StandardLeftOut, withText(name, column.standard)});
    }
    if (!column.rule.empty()) remarks.push_back({Kind::RuleLeftOut, withText(name, column.rule)});
    if (column.counter && !kept.counter) remarks.push_back({Kind::CounterLeftOut, name});
    if (column.required && !kept.counter) remarks.push_back({Kind::RequiredLeftOut, name});
    if (!column.properties.empty()) remarks.push_back({Kind::PropertiesLeftOut, withText(name, column.properties)});
}

void AccessPlan::addIndexes(const jet::Table& table, AccessTable& planned) {
    for (const jet::Index& index : table.indexes) {
        IndexDef made{.name = index.name, .fields = {}, .unique = index.unique};
        bool usable = !index.columns.empty();
        for (const auto& [column, descending] : index.columns) {
            const int ordinal = planned.columns[column];
            usable = usable && ordinal >= 0;
            if (!usable) break;
            const std::string& name = planned.made.fields[static_cast<std::size_t>(ordinal)].name;
            usable = name.find(';') == std::string::npos;
            if (!made.fields.empty()) made.fields += ';';
            made.fields += descending ? '-' : '+';
            made.fields += name;
        }
        if (!usable) {
            remarks.push_back({Kind::IndexLeftOut, table.name + "." + index.name});
            continue;
        }
        const IndexDef* same = planned.made.index(index.name);
        if (same == nullptr) {
            planned.made.indexes.push_back(made);
        } else if (same->fields == made.fields) {
            // Rows that the file takes are taken.
            planned.made.indexes[static_cast<std::size_t>(same - planned.made.indexes.data())].unique = made.unique;
        } else {
            remarks.push_back({Kind::IndexLeftOut, table.name + "." + index.name});
        }
    }
}

void AccessPlan::complete() {
    for (const Known& table : known_) {
        if (!table.found) remarks.push_back({Kind::TableMissing, table.definition.name});
    }
}

std::vector<TableDef> AccessPlan::definitions() const {
    std::vector<TableDef> result;
    for (const Known& known : known_) {
        const auto fromFile = std::ranges::find_if(
            tables_, [&](const AccessTable& table) { return equalNoCase(table.made.name, known.definition.name); });
        result.push_back(fromFile == tables_.end() ? known.definition : fromFile->made);
    }
    for (const AccessTable& table : tables_) {
        const bool known = std::ranges::any_of(
            result, [&](const TableDef& other) { return equalNoCase(other.name, table.made.name); });
        if (!known && !table.leftOut) result.push_back(table.made);
    }
    return result;
}

bool AccessPlan::isMissing(std::string_view table) const {
    return std::ranges::any_of(
        known_, [&](const Known& known) { return !known.found && equalNoCase(known.definition.name, table); });
}

}  // namespace kolmera
