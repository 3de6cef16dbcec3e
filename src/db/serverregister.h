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

/// The path of DVSQLSvr.ini in the data folder, whatever the case of its letters.
std::filesystem::path serverRegisterFile(const std::filesystem::path& dataFolder);

}  // namespace kolmera
