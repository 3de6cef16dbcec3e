#include "platform/engine/odbc/rowstext.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <utility>

#include "platform/error.h"

namespace kolmera {

namespace {

constexpr auto kMostDigits = 32;

template <typename Number>
void addDigits(std::string& text, Number number) {
    std::array<char, kMostDigits> digits{};
    text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

void addQuoted(std::string& text, std::string_view value) {
    text += '"';
    for (const char c : value) {
        if (c == '"' || c == '\\') text += '\\';
        text += c;
    }
    text += '"';
}

/// JSON allows no control character in a text.
void addJsonText(std::string& text, std::string_view value) {
    constexpr unsigned char kFirstPrintable = 0x20;
    text += '"';
    for (const char c : value) {
        if (static_cast<unsigned char>(c) < kFirstPrintable) {
            fmt::format_to(std::back_inserter(text), "\\u{:04x}", static_cast<unsigned>(c));
            continue;
        }
        if (c == '"' || c == '\\') text += '\\';
        text += c;
    }
    text += '"';
}

/// A value without its quotes where it needs none; `false` for a text.
bool addPlain(std::string& text, const Value& value, std::string_view null) {
    if (isNull(value)) {
        text += null;
    } else if (const auto* yes = std::get_if<bool>(&value)) {
        text += *yes ? '1' : '0';
    } else if (const auto* whole = std::get_if<std::int64_t>(&value)) {
        addDigits(text, *whole);
    } else if (const auto* number = std::get_if<double>(&value)) {
        addDigits(text, *number);
    } else if (const auto* date = std::get_if<Date>(&value)) {
        text += '"';
        text += date->iso();
        text += '"';
    } else {
        return false;
    }
    return true;
}

Value arrayOf(std::span<const std::vector<Value>> rows, std::size_t column) {
    std::string text = "{";
    for (const std::vector<Value>& row : rows) {
        if (text.size() > 1) text += ',';
        if (!addPlain(text, row[column], "NULL")) addQuoted(text, textOf(row[column]));
    }
    text += '}';
    return text;
}

Value jsonOf(std::span<const std::vector<Value>> rows) {
    std::string text = "[";
    for (const std::vector<Value>& row : rows) {
        char separator = text.size() > 1 ? ',' : ' ';
        text += separator;
        separator = '[';
        for (const Value& value : row) {
            text += std::exchange(separator, ',');
            if (!addPlain(text, value, "null")) addJsonText(text, textOf(value));
        }
        text += ']';
    }
    text += ']';
    return text;
}

}  // namespace

std::string rowsTable(const Dialect& dialect, std::span<const std::string> types) {
    const bool arrays = dialect.rowsAs == Dialect::RowsAs::Arrays;
    std::string columns;
    std::string names;
    for (std::size_t i = 0; i < types.size(); ++i) {
        if (arrays) {
            fmt::format_to(std::back_inserter(columns), "{}CAST(? AS {}[])", i > 0 ? ", " : "", types[i]);
            fmt::format_to(std::back_inserter(names), "r{}, ", i + 1);
        } else {
            fmt::format_to(std::back_inserter(columns), ", r{} {} PATH '$[{}]' ERROR ON ERROR", i + 1, types[i], i);
        }
    }
    if (arrays) return fmt::format("unnest({}) WITH ORDINALITY AS r({}rord)", columns, names);
    return fmt::format("JSON_TABLE(?, '$[*]' COLUMNS (rord FOR ORDINALITY{})) AS r", columns);
}

std::vector<Value> rowsParameters(const Dialect& dialect, std::span<const std::vector<Value>> rows) {
    if (dialect.rowsAs == Dialect::RowsAs::Json) return {jsonOf(rows)};
    std::vector<Value> arrays;
    for (std::size_t column = 0; column < rows.front().size(); ++column) arrays.push_back(arrayOf(rows, column));
    return arrays;
}

std::string keyType(const Dialect& dialect, FieldType type) {
    const bool text = type == FieldType::Text || type == FieldType::Memo;
    if (dialect.rowsAs == Dialect::RowsAs::Json) return text ? "VARCHAR(255)" : "BIGINT";  // a longer one is refused
    return text ? "text" : "bigint";
}

std::string writtenType(const Dialect& dialect, FieldType type, const ServerColumnType& stored) {
    if (dialect.rowsAs == Dialect::RowsAs::Arrays) return stored.type;
    switch (type) {
        case FieldType::Boolean:
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            return "BIGINT";
        case FieldType::Currency:
        case FieldType::Single:
        case FieldType::Double:
            return "DOUBLE";
        case FieldType::Date:
        case FieldType::Text:
        case FieldType::Memo:
            break;
    }
    return "LONGTEXT";
}

std::string keyedSelectText(const Dialect& dialect, const KeyedSelect& select) {
    std::string keys;
    std::string collated;
    std::string condition;
    for (std::size_t i = 0; i < select.columns.size(); ++i) {
        const std::string name = fmt::format("r{}", i + 1);
        const std::string& collation = select.collations[i];
        fmt::format_to(std::back_inserter(keys), "{}{}", i > 0 ? ", " : "", name);
        collated +=
            collation.empty() ? fmt::format(", {}", name) : fmt::format(", {0} COLLATE {1} AS {0}", name, collation);
        fmt::format_to(std::back_inserter(condition), "{}t.{} = k.{}", i > 0 ? " AND " : "", select.columns[i], name);
    }
    std::string wanted;
    for (const std::string& column : select.wanted) fmt::format_to(std::back_inserter(wanted), ", t.{}", column);
    return fmt::format(
        "SELECT k.rord, k.rsame{} FROM (SELECT rord, {}, min(rord) OVER (PARTITION BY {}) AS rsame FROM "
        "(SELECT rord{} FROM {}) AS c) AS k LEFT JOIN {} AS t ON {} ORDER BY k.rord, {} LIMIT {}",
        wanted, keys, keys, collated, rowsTable(dialect, select.types), select.table, condition, select.order,
        select.limit);
}

std::string insertArraysText(const Dialect& dialect, std::string_view table, std::span<const std::string> columns,
                             std::span<const std::string> types, std::string_view id) {
    std::string names;
    std::string values;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        fmt::format_to(std::back_inserter(names), "{}{}", i > 0 ? ", " : "", columns[i]);
        fmt::format_to(std::back_inserter(values), "{}r{}", i > 0 ? ", " : "", i + 1);
    }
    return fmt::format("INSERT INTO {} ({}) SELECT {} FROM {} ORDER BY rord RETURNING {}", table, names, values,
                       rowsTable(dialect, types), id);
}

std::string updateRowsText(const Dialect& dialect, std::string_view table, std::string_view id,
                           std::span<const WrittenColumn> columns, bool marked) {
    const bool arrays = dialect.rowsAs == Dialect::RowsAs::Arrays;
    std::vector<std::string> types(marked ? 2 : 1, keyType(dialect, FieldType::Long));
    std::string assignments;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const WrittenColumn& column = columns[i];
        types.push_back(column.type);
        std::string value = fmt::format("r.r{}", types.size());
        if (marked) {
            // What the two have in common must lose nothing of the value that stays.
            if (!arrays && column.decimal) value = fmt::format("CAST({} AS DECIMAL(19,4))", value);
            if (!arrays && !column.collation.empty()) value += fmt::format(" COLLATE {}", column.collation);
            value = fmt::format("CASE WHEN r.r2 & {} <> 0 THEN {} ELSE t.{} END", std::uint64_t{1} << i, value,
                                column.name);
        }
        fmt::format_to(std::back_inserter(assignments), "{}{}{} = {}", i > 0 ? ", " : "", arrays ? "" : "t.",
                       column.name, value);
    }
    const std::string rows = rowsTable(dialect, types);
    if (arrays) return fmt::format("UPDATE {} AS t SET {} FROM {} WHERE t.{} = r.r1", table, assignments, rows, id);
    return fmt::format("UPDATE {} AS t JOIN {} ON t.{} = r.r1 SET {}", table, rows, id, assignments);
}

}  // namespace kolmera
