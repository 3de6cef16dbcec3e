#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/engine/schema.h"

namespace kolmera {

/// Reads a CREATE TABLE statement that a file holds. Statements of files are never carried out: this takes what a
/// company's tables may have (names, our types, PRIMARY KEY of the counter, COLLATE SVENSKA, DEFAULT 0) and nothing
/// else, and what is needed of it is written anew from the result.
std::optional<TableDef> parseTableStatement(std::string_view statement);

/// An index and the table that it is of.
struct TableIndexDef {
    std::string table;
    IndexDef index;
};

/// Reads a CREATE INDEX statement likewise.
std::optional<TableIndexDef> parseIndexStatement(std::string_view statement);

}  // namespace kolmera
