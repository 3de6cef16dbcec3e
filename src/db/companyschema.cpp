#include "db/companyschema.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <variant>

#include "db/companyschema_text.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/tsv.h"

namespace kolmera {

namespace {

struct TypeName {
    std::string_view name;
    FieldType type;
};

constexpr std::array kTypes = std::to_array<TypeName>({
    {"COUNTER", FieldType::Long},
    {"BOOLEAN", FieldType::Boolean},
    {"BYTE", FieldType::Byte},
    {"INTEGER", FieldType::Integer},
    {"LONG", FieldType::Long},
    {"CURRENCY", FieldType::Currency},
    {"SINGLE", FieldType::Single},
    {"DOUBLE", FieldType::Double},
    {"DATETIME", FieldType::Date},
    {"TEXT", FieldType::Text},
    {"MEMO", FieldType::Memo},
});

[[noreturn]] void malformed(const std::string& what) {
    throw PlatformError(errors::kInternal, "Description of the tables: " + what);
}

int wholeNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) malformed("\"" + std::string(text) + "\" no number");
    return number;
}

std::vector<std::vector<std::string>> rowsOf(std::string_view text) {
    constexpr std::size_t kColumns = 4;
    Tsv table = Tsv::parse(text);
    if (table.columns.size() != kColumns) malformed("not four columns");
    return std::move(table.rows);
}

/// "TEXT(20)", "DOUBLE NULL" ...
FieldDef parseField(const std::string& name, std::string_view type) {
    FieldDef fieldDef{.name = name};
    constexpr std::string_view kNull = " NULL";
    if (type.ends_with(kNull)) {
        fieldDef.defaultNull = true;
        type.remove_suffix(kNull.size());
    }
    if (const std::size_t bracket = type.find('('); bracket != std::string_view::npos && type.ends_with(')')) {
        fieldDef.size = wholeNumber(type.substr(bracket + 1, type.size() - bracket - 2));
        type = type.substr(0, bracket);
    }
    for (const TypeName& known : kTypes) {
        if (known.name != type) continue;
        fieldDef.type = known.type;
        fieldDef.counter = type == "COUNTER";
        return fieldDef;
    }
    malformed("unknown type of " + name);
}

void checkIndex(const TableDef& table, const IndexDef& index) {
    for (const std::string& column : index.columns()) {
        if (table.ordinal(column) < 0) malformed("index " + index.name + " of " + table.name + " lacks " + column);
    }
}

}  // namespace

std::vector<TableDef> parseSchema(std::string_view tables, std::string_view indexes) {
    std::vector<TableDef> schema;
    for (const auto& row : rowsOf(tables)) {
        if (schema.empty() || schema.back().name != row[0]) schema.push_back({row[0], {}, {}});
        std::vector<FieldDef>& fields = schema.back().fields;
        if (wholeNumber(row[1]) != static_cast<int>(fields.size())) malformed("place of " + row[0] + "." + row[2]);
        fields.push_back(parseField(row[2], row[3]));
    }
    for (const auto& row : rowsOf(indexes)) {
        const auto table = std::ranges::find(schema, row[0], &TableDef::name);
        if (table == schema.end()) malformed("index of the unknown table " + row[0]);
        table->indexes.push_back({.name = row[1], .fields = row[2], .unique = row[3] == "1"});
        checkIndex(*table, table->indexes.back());
    }
    return schema;
}

std::vector<NewCompanyRow> newCompanyRows(std::string_view companyName) {
    constexpr std::int64_t kPriceDecimals = 2;
    return {{"Syinställningar", {{"Företagsnamn", std::string(companyName)}}},
            {"Syinställningar2", {{"PDecInpris", kPriceDecimals}, {"PDecUtpris", kPriceDecimals}}}};
}

namespace {

struct FirstValue {
    std::string_view table, column;
    std::variant<bool, std::int64_t, double, std::string_view> value;
};

/// Prices are rounded to tenths, halves, units, tens and hundreds; those below 10 keep their decimals. Where ranges
/// meet, the first one counts.
constexpr FirstValue kFilled[] = {
    {"Syinställningar", "1OMomsproc", 25.0},
    {"Syinställningar", "2OMomsproc", 12.0},
    {"Syinställningar", "3OMomsproc", 6.0},
    {"Syinställningar", "PInköpsfaktor", 1.0},
    {"Syinställningar", "PFörsäljfaktor", 1.0},
    {"Syinställningar", "PStatistikfaktor", 1.0},
    {"Syinställningar", "PInköpsenhet", "st"},
    {"Syinställningar", "PFörsäljenhet", "st"},
    {"Syinställningar", "PStatistikenhet", "st"},
    {"Syinställningar", "PMomsKod", "1"},
    {"Syinställningar", "PValutakod", "SEK"},
    {"Syinställningar2", "PPrisAvrund",
     "10\r\n100\r\n100\r\n1000\r\n1000\r\n10000\r\n10000\r\n100000\r\n100000\r\n100000000"},
    {"Syinställningar2", "PAutoUppdatUtpris", true},
    {"Syvaluta", "Kod", "SEK"},
    {"Syvaluta", "Benämning", "Svenska kronor"},
    {"Syvaluta", "Kundreskontra", 1.0},
    {"Syvaluta", "Levreskontra", 1.0},
    {"Syvaluta", "Faktor", std::int64_t{1}},
    {"Prodaltrubrik", "Nummer", std::int64_t{1}},
    {"Prodaltrubrik", "Rubrik", "EAN"},
};

Value valueOf(const FirstValue& first) {
    if (const auto* text = std::get_if<std::string_view>(&first.value)) return std::string(*text);
    if (const auto* truth = std::get_if<bool>(&first.value)) return *truth;
    if (const auto* whole = std::get_if<std::int64_t>(&first.value)) return *whole;
    return std::get<double>(first.value);
}

}  // namespace

std::vector<NewCompanyRow> filledCompanyRows(std::string_view companyName) {
    std::vector<NewCompanyRow> rows = newCompanyRows(companyName);
    for (const FirstValue& first : kFilled) {
        auto row = std::ranges::find(rows, first.table, &NewCompanyRow::table);
        if (row == rows.end()) {
            rows.push_back({.table = std::string(first.table), .values = {}});
            row = rows.end() - 1;
        }
        row->values.emplace_back(first.column, valueOf(first));
    }
    return rows;
}

std::vector<TableDef> companySchema() { return parseSchema(kSchemaText, kIndexesText); }

}  // namespace kolmera
