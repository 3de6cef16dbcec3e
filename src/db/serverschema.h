#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/engine/schema.h"

namespace kolmera {

/// The database servers that a company can live on.
enum class ServerKind { SqlServer, PostgreSql, MariaDb };

/// The kind of that name ("sqlserver", "postgresql", "mariadb"; letter case does not count).
std::optional<ServerKind> serverKind(std::string_view name);

/// The script, UTF-8, that makes these tables in an empty database of a server: columns in their order, every name as
/// it is written here, number and Boolean columns with default 0 unless NULL was declared, texts without regard to
/// letter case and in Swedish order as far as the server can, and the indexes. The tables' IDs count by themselves and
/// take values of their own too.
std::string serverSchema(ServerKind kind, std::span<const TableDef> tables);

/// The statements that add the first rows of a new company, which every company has (`newCompanyRows`).
std::string serverFirstRows(ServerKind kind, std::string_view companyName);

}  // namespace kolmera
