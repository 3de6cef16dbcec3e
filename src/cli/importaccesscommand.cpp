#include "cli/importaccesscommand.h"

#include <fmt/format.h>

#include <ostream>
#include <string>

#include "cli/printablelines.h"
#include "cli/session.h"
#include "cli/terminalport.h"
#include "db/companyschema.h"
#include "lang/errortext.h"
#include "lang/keys/access.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"
#include "platform/jet/jetreader.h"
#include "platform/lettercase.h"
#include "startup/accessimport.h"
#include "startup/accesstexts.h"
#include "startup/company.h"

namespace kolmera::cli {
namespace {

namespace fs = std::filesystem;

bool isCompanyName(const std::string& name) {
    const std::string upper = upperCase(name);
    return upper.starts_with("FTG") && upper.ends_with(".MDB") && name.find('/') == std::string::npos;
}

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
    if (!isCompanyName(name)) return fail(session.text(text::access::kNameNeeded, name), exitcode::kUsage);
    const fs::path company = session.state.drives.resolve(name, session.state.dataFolder());
    std::error_code missing;
    if (fs::equivalent(company, arguments.file, missing) || jet::isAccessFile(company)) {
        return fail(session.text(text::access::kSameFile, company.string()), exitcode::kStopped);
    }
    if (!arguments.replace && fs::exists(fs::symlink_status(company, missing))) {
        return fail(session.text(text::access::kExists, name), exitcode::kStopped);
    }
    TerminalPort port(surroundings.err, surroundings.cancel, false);
    MessageBoxes boxes(port, session.state.helpFile);
    CompanyRegister companies(session.state, session.texts, boxes);
    AccessImport import{.reader = surroundings.programFolder / jet::kReaderProgram,
                        .file = arguments.file,
                        .company = company,
                        .companyName = fs::path(name).stem().string(),
                        .replace = arguments.replace,
                        .options = {}};
    import.options.locale = session.state.locale;
    import.options.password = companies.LösenFör(name);
    import.options.wait = [&] { return !port.cancelled();
};
import.options.knownTables = companySchema;
try {
    const AccessResult result =
        importAccessFile(import, [&](std::string_view, std::int64_t) { return !port.cancelled(); });
    if (!result.cancelled) return tell(session, result, name, surroundings);
} catch (const PlatformError& error) {
    if (!port.cancelled()) {
        const PlatformError named = error.subject().empty() ? error.about(arguments.file) : error;
        return fail(session.text(text::access::kNotImported, arguments.file) + ' ' + errorText(session.texts, named),
                    exitcode::kStopped);
    }
}
surroundings.err << session.text(text::access::kCancelled) << '\n';
return exitcode::kCancelled;
}  // namespace kolmera::cli

}  // namespace kolmera::cli
