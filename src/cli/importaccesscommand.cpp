#include "cli/importaccesscommand.h"

#include <filesystem>
#include <ostream>
#include <string>

#include "cli/printablelines.h"
#include "cli/session.h"
#include "cli/terminalport.h"
#include "lang/keys/access.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"
#include "startup/accesscompany.h"
#include "startup/accessimport.h"
#include "startup/accesstexts.h"
#include "startup/company.h"

namespace kolmera::cli {
namespace {

namespace fs = std::filesystem;

int tell(Session& session, const AccessResult& result, const std::string& company, const Surroundings& surroundings) {
    PrintableStream out(surroundings.out);
    for (const CopiedTable& table : result.tables) out << table.name << ": " << table.rows << '\n';
    out << session.text(text::access::kImported, company) << '\n';
    if (result.remarks.empty()) return exitcode::kDone;
    PrintableStream err(surroundings.err);
    err << session.text(text::access::kRemarks, std::to_string(result.remarks.size())) << '\n';
    for (const AccessRemark& remark : result.remarks) err << "  " << remarkText(session.texts, remark) << '\n';
    return exitcode::kPassedOver;
}

}  // namespace

int importAccessCommand(const ImportAccessArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    const auto fail = [&](const std::string& text, int code) {
        PrintableStream(surroundings.err) << session.text(text::terminal::kError) << ' ' << text << '\n';
        return code;
    };
    const std::string name =
        arguments.company.empty() ? fs::path(arguments.file).filename().string() : arguments.company;
    if (!isCompanyFileName(name)) return fail(session.text(text::access::kNameNeeded, name), exitcode::kUsage);
    TerminalPort port(session, surroundings.err, surroundings.cancel, false, {}, !surroundings.quiet);
    MessageBoxes boxes(port, session.state.helpFile);
    CompanyRegister companies(session.state, session.texts, boxes);
    AccessImport import =
        accessImportOf(session.state, companies, arguments.file, name, [&] { return !port.cancelled(); });
    import.replace = arguments.replace;
    switch (obstacleTo(import)) {
        case AccessObstacle::SameFile:
            return fail(session.text(text::access::kSameFile, import.company.string()), exitcode::kStopped);
        case AccessObstacle::Exists:
            return fail(session.text(text::access::kExists, name), exitcode::kStopped);
        case AccessObstacle::Name:
        case AccessObstacle::None:
            break;
    }
    try {
        const AccessResult result = importAccessFile(import, [&](const AccessProgress& progress) {
            const bool begun = progress.of > 0;
            port.status(session.text(text::access::kReading, begun ? std::string(progress.table) : arguments.file));
            port.progress(static_cast<std::uint64_t>(progress.rows),
                          static_cast<std::uint64_t>(begun ? progress.of : 1), progress.rows);
            return !port.cancelled();
        });
        port.runMode(false);
        if (!result.cancelled) return tell(session, result, name, surroundings);
    } catch (const PlatformError& error) {
        port.runMode(false);
        if (!port.cancelled()) {
            const PlatformError named = error.subject().empty() ? error.about(arguments.file) : error;
            return fail(session.text(text::access::kNotImported, arguments.file) + ' ' + session.explain(named),
                        exitcode::kStopped);
        }
    }
    surroundings.err << session.text(text::access::kCancelled) << '\n';
    return exitcode::kCancelled;
}

}  // namespace kolmera::cli
