#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/odbc/servertable.h"

namespace kolmera {

/// Names of the server's tables, as it spells them.
std::vector<std::string> readServerTables(ServerSession& session);

/// A table as the catalogue describes it, with the types of the table of that name that the program knows, where the
/// server's types allow them. Known columns come first, in the known order. Indexes lose the table's name before
/// theirs, and the one on the key is "PrimaryKey".
ServerTableInfo readServerTable(ServerSession& session, const std::string& name);

}  // namespace kolmera
