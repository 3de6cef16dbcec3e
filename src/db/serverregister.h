#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// One company on a database server, as DVSQLSvr.ini of the data folder registers it.
struct ServerCompany {
    std::string name;
    std::string description;
    std::string connectString;
};

/// The registered server companies in file order. A missing file is created empty, where the folder can be written.
/// Throws PlatformError when the file cannot be read.
std::vector<ServerCompany> registeredServers(const std::filesystem::path& dataFolder);

/// Registers a server company; one of that name (letter case does not count) takes its place. Throws
/// PlatformError: kTextTooLong for a text that does not fit its field (50, 50 and 100 characters), kWrongType for one
/// that Windows-1252 cannot hold and for a name that is not "SQL;" and more, and when the file cannot be written. A new
/// file is for its owner alone.
void registerServer(const std::filesystem::path& dataFolder, const ServerCompany& server);

/// The path of DVSQLSvr.ini in the data folder, whatever the case of its letters.
std::filesystem::path serverRegisterFile(const std::filesystem::path& dataFolder);

}  // namespace kolmera
