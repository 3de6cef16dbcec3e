#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/value.h"

namespace kolmera {

struct FieldDef {
    std::string name;
    FieldType type = FieldType::Text;
    int size = 0;              ///< characters of a text field, 0 otherwise
    bool counter = false;      ///< given by the engine, primary key
    bool defaultNull = false;  ///< number or Boolean without the default 0
};

struct IndexDef {
    std::string name;
    std::string fields;  ///< "+A;+B", "-" before a descending column
    bool unique = false;

    [[nodiscard]] std::vector<std::string> columns() const;  ///< "A", "B"
};

/// A table: its fields in their order (a field's ordinal is its place, from 0) and its indexes.
struct TableDef {
    std::string name;
    std::vector<FieldDef> fields;
    std::vector<IndexDef> indexes;

    /// Ordinal of a field by name without regard to letter case, -1 when unknown.
    [[nodiscard]] int ordinal(std::string_view field) const;
    /// The index of that name without regard to letter case, nullptr when unknown.
    [[nodiscard]] const IndexDef* index(std::string_view name) const;
};

}  // namespace kolmera
