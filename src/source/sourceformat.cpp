#include "source/sourceformat.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "source/sourcejson.h"

namespace kolmera {
namespace {

using Json = nlohmann::ordered_json;

template <class Kind>
struct Name {
    Kind kind;
    std::string_view name;
};
constexpr Name<SourceKind> kKinds[] = {
    {SourceKind::Delimited, "delimited"},
    {SourceKind::Fixed, "fixed"},
    {SourceKind::Xlsx, "xlsx"},
    {SourceKind::Xls, "xls"},
    {SourceKind::Ods, "ods"},
    {SourceKind::Xml, "xml"},
};
constexpr Name<CharacterSet> kCharacterSets[] = {
    {CharacterSet::Utf8, "utf-8"},        {CharacterSet::Utf16Le, "utf-16le"},
    {CharacterSet::Utf16Be, "utf-16be"},  {CharacterSet::Windows1252, "windows-1252"},
    {CharacterSet::Latin1, "iso-8859-1"}, {CharacterSet::Latin9, "iso-8859-15"},
    {CharacterSet::Oem850, "cp850"},
};
constexpr Name<DateOrder> kDateOrders[] = {
    {DateOrder::Unknown, "unknown"},
    {DateOrder::YearMonthDay, "year-month-day"},
    {DateOrder::DayMonthYear, "day-month-year"},
    {DateOrder::MonthDayYear, "month-day-year"},
};

template <class Kind, std::size_t Count>
std::string_view nameIn(const Name<Kind> (&names)[Count], Kind kind) {
    for (const Name<Kind>& row : names) {
        if (row.kind == kind) return row.name;
    }
    return {};
}

// What the members of an object hold; false when a value cannot be.
bool take(const Json& value, std::string& into) {
    if (value.is_string()) into = value.get<std::string>();
    return value.is_string();
}
bool take(const Json& value, bool& into) {
    if (value.is_boolean()) into = value.get<bool>();
    return value.is_boolean();
}
bool take(const Json& value, std::uint64_t& into) {
    if (value.is_number_unsigned()) into = value.get<std::uint64_t>();
    return value.is_number_unsigned();
}
/// One character of ASCII; an empty text is '\0'.
bool take(const Json& value, char& into) {
    std::string text;
    if (!take(value, text) || text.size() > 1 || text == "\n" || text == "\r") return false;
    into = text.empty() ? '\0' : text.front();
    return static_cast<unsigned char>(into) < 0x80;
}
template <class Element>
bool take(const Json& value, std::vector<Element>& into) {
    if (!value.is_array()) return false;
    into.clear();
    for (const Json& element : value) {
        if (!take(element, into.emplace_back())) return false;
    }
    return true;
}
template <class Kind, std::size_t Count>
bool takeNamed(const Json& value, const Name<Kind> (&names)[Count], Kind& into) {
    std::string text;
    if (!take(value, text)) return false;
    for (const Name<Kind>& row : names) {
        if (row.name != text) continue;
        into = row.kind;
        return true;
    }
    return false;
}
bool take(const Json& value, SourceKind& into) { return takeNamed(value, kKinds, into); }
bool take(const Json& value, CharacterSet& into) { return takeNamed(value, kCharacterSets, into); }
bool take(const Json& value, DateOrder& into) { return takeNamed(value, kDateOrders, into); }

template <class Value>
Json jsonOf(const Value& value) {
    return value;
}
Json jsonOf(char value) { return value == '\0' ? std::string() : std::string(1, value); }
Json jsonOf(SourceKind kind) { return nameOf(kind); }
Json jsonOf(CharacterSet characters) { return nameOf(characters); }
Json jsonOf(DateOrder order) { return nameOf(order); }

/// Hands the name and the place of each member to `each`: the one list of them.
template <class Each>
void forEachMember(Each&& each) {
    each("kind", &SourceFormat::kind);
    each("member", &SourceFormat::member);
    each("characters", &SourceFormat::characters);
    each("delimiter", &SourceFormat::delimiter);
    each("quote", &SourceFormat::quote);
    each("starts", &SourceFormat::starts);
    each("length", &SourceFormat::length);
    each("sheet", &SourceFormat::sheet);
    each("record", &SourceFormat::record);
    each("fields", &SourceFormat::fields);
    each("skip", &SourceFormat::skip);
    each("headings", &SourceFormat::headings);
    each("decimal-sign", &SourceFormat::decimalSign);
    each("thousands-sign", &SourceFormat::thousandsSign);
    each("date-order", &SourceFormat::dateOrder);
}

}  // namespace

std::string_view nameOf(SourceKind kind) { return nameIn(kKinds, kind); }
std::string_view nameOf(CharacterSet characters) { return nameIn(kCharacterSets, characters); }
std::string_view nameOf(DateOrder order) { return nameIn(kDateOrders, order); }

Json toJson(const SourceFormat& format) {
    const SourceFormat defaults;
    Json object = {{"kind", nameOf(format.kind)}};
    forEachMember([&](const char* name, auto member) {
        if (format.*member != defaults.*member) object[name] = jsonOf(format.*member);
    });
    return object;
}

std::optional<SourceFormat> sourceFormatOf(const Json& object) {
    if (!object.is_object()) return std::nullopt;
    SourceFormat format;
    bool sound = true;
    forEachMember([&](const char* name, auto member) {
        const auto found = object.find(name);
        if (found != object.end() && !take(*found, format.*member)) sound = false;
    });
    if (!sound || !std::ranges::is_sorted(format.starts)) return std::nullopt;
    return format;
}

}  // namespace kolmera
