#include "cli/servercommands.h"

#include <fmt/format.h>

#include <fstream>
#include <optional>
#include <ostream>

#include "cli/session.h"
#include "db/companyschema.h"
#include "db/conversions.h"
#include "db/serverregister.h"
#include "db/serverschema.h"
#include "db/sqllayer.h"
#include "lang/keys/server.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera::cli {

int serverSchemaCommand(const SchemaArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings);
    const std::optional<ServerKind> kind = serverKind(arguments.dialect);
    if (!kind) {
        surroundings.err << session.text(text::terminal::kError) << ' '
                         << session.text(text::server::kUnknownKind, arguments.dialect) << '\n';
        return exitcode::kUsage;
    }
    surroundings.out << serverSchema(*kind, companySchema()) << '\n'
                     << serverFirstRows(*kind, arguments.companyName.empty() ? session.text(text::terminal::kMyCompany)
                                                                             : arguments.companyName);
    return exitcode::kDone;
}

namespace {

/// The connect string of the command line or of the first line of its file; nothing, and told, when there is none.
std::optional<std::string> connectStringOf(Session& session, const ServerArguments& arguments, std::ostream& err) {
    std::string text = arguments.connectString;
    if (!arguments.connectFile.empty()) {
        std::ifstream file(arguments.connectFile == "-" ? "/dev/stdin" : arguments.connectFile);
        if (!std::getline(file, text)) {
            err << session.text(text::terminal::kError) << ' '
                << session.text(text::server::kUnreadableFile, arguments.connectFile) << '\n';
            return std::nullopt;
        }
    }
    text = trimmed(text);
    if (!text.empty()) return text;
    err << session.text(text::terminal::kError) << ' ' << session.text(text::server::kNoConnectString) << '\n';
    return std::nullopt;
}

bool holdsPassword(std::string_view connectString) {
    const std::string upper = fmt::format(";{}", upperCase(connectString));
    return upper.find(";PWD=") != std::string::npos || upper.find(";PASSWORD=") != std::string::npos;
}

}  // namespace

int addServerCommand(const ServerArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    const auto folder = absoluteFolder(arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    if (session.cutAtSemicolon(arguments.name, surroundings.err)) return exitcode::kUsage;
    const auto connectString = connectStringOf(session, arguments, surroundings.err);
    if (!connectString) return exitcode::kUsage;
    ServerCompany server{arguments.name, arguments.description, *connectString};
    if (!SqlLayer::ÄrSQLDatabas(upperCase(server.name))) server.name = "SQL;" + server.name;
    try {
        registerServer(folder, server);
    } catch (const PlatformError& error) {
        surroundings.err << session.text(text::terminal::kError) << ' '
                         << session.text(text::server::kNotRegistered, server.name) << ' ' << session.explain(error)
                         << '\n';
        return exitcode::kStopped;
    }
    surroundings.out << session.text(text::server::kRegistered, server.name) << '\n';
    if (holdsPassword(*connectString)) surroundings.err << session.text(text::server::kReadablePassword) << '\n';
    return exitcode::kDone;
}

}  // namespace kolmera::cli
