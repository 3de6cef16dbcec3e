#include "platform/engine/declaredtype.h"

#include <algorithm>
#include <charconv>

#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr struct {
    FieldType type;
    std::string_view name;
} kTypes[] = {
    {FieldType::Boolean, "BOOLEAN"}, {FieldType::Byte, "BYTE"},         {FieldType::Integer, "INTEGER"},
    {FieldType::Long, "LONG"},       {FieldType::Currency, "CURRENCY"}, {FieldType::Single, "SINGLE"},
    {FieldType::Double, "DOUBLE"},   {FieldType::Date, "DATETIME"},     {FieldType::Text, "TEXT"},
    {FieldType::Memo, "MEMO TEXT"},  // SQLite gives the column its affinity by the second word
};

/// The number between the brackets of "TEXT(20)", 0 without brackets.
int sizeOf(std::string_view type) {
    const std::size_t open = type.find('(');
    int size = 0;
    if (open != std::string_view::npos) std::from_chars(type.data() + open + 1, type.data() + type.size(), size);
    return size;
}

}  // namespace

std::string declaredType(const FieldDef& field) {
    if (field.counter) return "INTEGER";
    const auto known =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const auto& row) { return row.type == field.type; });
    if (known == std::end(kTypes)) throw PlatformError(errors::kInternal, "column " + field.name + " has no type");
    const std::string name(known->name);
    return field.type == FieldType::Text ? name + "(" + std::to_string(field.size) + ")" : name;
}

FieldDef fieldOfDeclaredType(std::string_view name, std::string_view type, bool counter) {
    const std::string_view word = type.substr(0, type.find('('));
    for (const auto& known : kTypes) {
        if (!equalNoCase(known.name, word)) continue;
        const FieldType fieldType = counter ? FieldType::Long : known.type;
        return {std::string(name), fieldType, sizeOf(type), counter, false};
    }
    throw PlatformError(errors::kInternal,
                        "column " + std::string(name) + " has the unknown type " + std::string(type));
}

bool hasZeroDefault(FieldType type) {
    return type != FieldType::Text && type != FieldType::Memo && type != FieldType::Date;
}

}  // namespace kolmera
