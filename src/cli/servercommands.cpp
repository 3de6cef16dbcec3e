#include "cli/servercommands.h"

#include <ostream>

#include "cli/session.h"
#include "db/companyschema.h"
#include "db/serverregister.h"
#include "db/serverschema.h"
#include "db/sqllayer.h"
#include "lang/errortext.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera::cli {

int serverSchemaCommand(const std::string& dialect, const std::string& companyName, const Surroundings& surroundings) {
    Session session(surroundings);
    const std::optional<ServerKind> kind = serverKind(dialect);
    if (!kind) {
        surroundings.err << session.text(250) << ' ' << session.text(260, dialect) << '\n';
        return exitcode::kUsage;
    }
    surroundings.out << serverSchema(*kind, companySchema()) << '\n'
                     << serverFirstRows(*kind, companyName.empty() ? session.text(234) : companyName);
    return exitcode::kDone;
}

int addServerCommand(const ServerArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    const auto folder = absoluteFolder(arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    if (session.cutAtSemicolon(arguments.name, surroundings.err)) return exitcode::kUsage;
    ServerCompany server{arguments.name, arguments.description, arguments.connectString};
    if (!SqlLayer::ÄrSQLDatabas(upperCase(server.name))) server.name = "SQL;" + server.name;
    try {
        registerServer(folder, server);
    } catch (const PlatformError& error) {
        surroundings.err << session.text(250) << ' ' << session.text(262, server.name) << ' '
                         << errorText(session.texts, error) << '\n';
        return exitcode::kStopped;
    }
    surroundings.out << session.text(261, server.name) << '\n';
    return exitcode::kDone;
}

}  // namespace kolmera::cli
