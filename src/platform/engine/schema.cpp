#include "platform/engine/schema.h"

#include "platform/lettercase.h"

namespace kolmera {

std::vector<std::string> IndexDef::columns() const {
    std::vector<std::string> names = split(fields, ";");
    for (std::string& column : names) {
        if (column.starts_with('+') || column.starts_with('-')) column.erase(0, 1);
    }
    return names;
}

int TableDef::ordinal(std::string_view field) const {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (equalNoCase(fields[i].name, field)) return static_cast<int>(i);
    }
    return -1;
}

const IndexDef* TableDef::index(std::string_view indexName) const {
    for (const IndexDef& candidate : indexes) {
        if (equalNoCase(candidate.name, indexName)) return &candidate;
    }
    return nullptr;
}

}  // namespace kolmera
