#include "source/settingsjson.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "source/sourcejson.h"

namespace kolmera {
namespace {

using Json = nlohmann::ordered_json;

// What no person writes by hand is not taken from a file either.
constexpr std::size_t kLongestText = 4000;
constexpr std::size_t kMostRows = 20000;
constexpr int kMostColumns = 16384;

struct Refused {};

std::string text(const Json& value) {
    if (!value.is_string() || value.get_ref<const std::string&>().size() > kLongestText) throw Refused();
    return value.get<std::string>();
}

int number(const Json& value) {
    if (!value.is_number_integer() || value.get<std::int64_t>() < 0 || value.get<std::int64_t>() > kMostColumns)
        throw Refused();
    return value.get<int>();
}

bool truth(const Json& value) {
    if (!value.is_boolean()) throw Refused();
    return value.get<bool>();
}

const Json& list(const Json& value) {
    if (!value.is_array() || value.size() > kMostRows) throw Refused();
    return value;
}

/// The member's value, handed to `take` where there is one.
template <class Take>
void member(const Json& object, const char* name, Take&& take) {
    if (!object.is_object()) throw Refused();
    if (const auto found = object.find(name); found != object.end()) take(*found);
}

template <class Value, class Names>
Value named(const Json& value, const Names& names) {
    const std::string name = text(value);
    const auto found = std::ranges::find(names, name, [](const auto& row) { return row.second; });
    if (found == std::end(names)) throw Refused();
    return found->first;
}

template <class Names, class Value>
std::string nameIn(const Names& names, Value value) {
    return std::string(std::ranges::find(names, value, [](const auto& row) { return row.first; })->second);
}

using Meaning = ValueRule::Meaning;
using Zeros = ValueRule::Zeros;

constexpr std::pair<Meaning, std::string_view> kMeanings[] = {
    {Meaning::Automatic, "automatic"}, {Meaning::Text, "text"}, {Meaning::Number, "number"}, {Meaning::Date, "date"}};
constexpr std::pair<Zeros, std::string_view> kZeros[] = {
    {Zeros::Kept, "kept"}, {Zeros::Dropped, "dropped"}, {Zeros::Filled, "filled"}};
const std::pair<DateOrder, std::string_view> kOrders[] = {{DateOrder::Unknown, nameOf(DateOrder::Unknown)},
                                                          {DateOrder::YearMonthDay, nameOf(DateOrder::YearMonthDay)},
                                                          {DateOrder::DayMonthYear, nameOf(DateOrder::DayMonthYear)},
                                                          {DateOrder::MonthDayYear, nameOf(DateOrder::MonthDayYear)}};

struct TextMember {
    const char* name;
    std::string ValueRule::*value;
};
constexpr TextMember kTexts[] = {{"drop-prefix", &ValueRule::dropPrefix},
                                 {"drop-suffix", &ValueRule::dropSuffix},
                                 {"add-prefix", &ValueRule::addPrefix},
                                 {"add-suffix", &ValueRule::addSuffix},
                                 {"joined-by", &ValueRule::joinedBy}};

void put(Json& object, const ColumnName& name) {
    if (!name.heading.empty()) object["heading"] = name.heading;
    if (name.number != 0) object["number"] = name.number;
}

ColumnName columnName(const Json& object) {
    ColumnName name;
    member(object, "heading", [&](const Json& value) { name.heading = text(value); });
    member(object, "number", [&](const Json& value) { name.number = number(value); });
    return name;
}

Json toJson(const ValueRule& rule) {
    Json object = Json::object();
    if (rule.meaning != Meaning::Automatic) object["meaning"] = nameIn(kMeanings, rule.meaning);
    if (rule.decimalSign) object["decimal-sign"] = std::string(1, *rule.decimalSign);
    if (rule.thousandsSign) object["thousands-sign"] = *rule.thousandsSign;
    if (rule.dateOrder) object["date-order"] = nameIn(kOrders, *rule.dateOrder);
    if (!rule.trim) object["trim"] = false;
    if (rule.zeros != Zeros::Kept) object["zeros"] = nameIn(kZeros, rule.zeros);
    if (rule.width != 0) object["width"] = rule.width;
    for (const TextMember& each : kTexts) {
        if (const std::string& value = rule.*each.value; !value.empty()) object[each.name] = value;
    }
    if (rule.fixed) object["fixed"] = *rule.fixed;
    for (const auto& [from, to] : rule.replace) object["replace"].push_back(Json::array({from, to}));
    if (!rule.join.none()) put(object["join"], rule.join);
    return object;
}

ValueRule valueRule(const Json& object) {
    ValueRule rule;
    member(object, "meaning", [&](const Json& value) { rule.meaning = named<Meaning>(value, kMeanings); });
    member(object, "decimal-sign", [&](const Json& value) {
        const std::string sign = text(value);
        if (sign != "." && sign != ",") throw Refused();
        rule.decimalSign = sign.front();
    });
    member(object, "thousands-sign", [&](const Json& value) { rule.thousandsSign = text(value); });
    member(object, "date-order", [&](const Json& value) { rule.dateOrder = named<DateOrder>(value, kOrders); });
    member(object, "trim", [&](const Json& value) { rule.trim = truth(value); });
    member(object, "zeros", [&](const Json& value) { rule.zeros = named<Zeros>(value, kZeros); });
    member(object, "width", [&](const Json& value) { rule.width = number(value); });
    for (const TextMember& each : kTexts)
        member(object, each.name, [&](const Json& value) { rule.*each.value = text(value); });
    member(object, "fixed", [&](const Json& value) { rule.fixed = text(value); });
    member(object, "replace", [&](const Json& value) {
        for (const Json& pair : list(value)) {
            if (!pair.is_array() || pair.size() != 2) throw Refused();
            rule.replace.emplace_back(text(pair[0]), text(pair[1]));
        }
    });
    member(object, "join", [&](const Json& value) { rule.join = columnName(value); });
    return rule;
}

Json toJson(const SourceColumn& column) {
    Json object = {{"column", column.column}};
    put(object, column.from);
    if (const Json rule = toJson(column.rule); !rule.empty()) object["value"] = rule;
    return object;
}

SourceColumn sourceColumn(const Json& object) {
    SourceColumn column;
    member(object, "column", [&](const Json& value) { column.column = number(value); });
    if (column.column == 0) throw Refused();
    column.from = columnName(object);
    member(object, "value", [&](const Json& value) { column.rule = valueRule(value); });
    return column;
}

LeftOutRows leftOutRows(const Json& object) {
    LeftOutRows rows;
    rows.column = columnName(object);
    member(object, "pattern", [&](const Json& value) { rows.pattern = text(value); });
    return rows;
}

}  // namespace

Json toJson(const SourceSettings& settings) {
    Json object = {{"format", toJson(settings.format)}};
    for (const std::string& heading : settings.headings) object["headings"].push_back(heading);
    for (const SourceColumn& column : settings.columns) object["columns"].push_back(toJson(column));
    for (const LeftOutRows& rows : settings.leaveOut) {
        Json left = {{"pattern", rows.pattern}};
        put(left, rows.column);
        object["leave-out"].push_back(std::move(left));
    }
    return object;
}

std::optional<SourceSettings> sourceSettingsOf(const Json& object) {
    SourceSettings settings;
    try {
        member(object, "format", [&](const Json& value) {
            const std::optional<SourceFormat> format = sourceFormatOf(value);
            if (!format) throw Refused();
            settings.format = *format;
        });
        member(object, "headings", [&](const Json& value) {
            for (const Json& heading : list(value)) settings.headings.push_back(text(heading));
        });
        member(object, "columns", [&](const Json& value) {
            for (const Json& column : list(value)) settings.columns.push_back(sourceColumn(column));
        });
        member(object, "leave-out", [&](const Json& value) {
            for (const Json& rows : list(value)) settings.leaveOut.push_back(leftOutRows(rows));
        });
    } catch (const Refused&) {
        return std::nullopt;
    }
    return settings;
}

}  // namespace kolmera
