#include "cli/repaircommand.h"

#include <ostream>

#include "cli/printablelines.h"
#include "cli/session.h"
#include "cli/terminalport.h"
#include "lang/keys/company.h"
#include "lang/keys/repair.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "startup/company.h"
#include "startup/repairtexts.h"

namespace kolmera::cli {
namespace {

int repaired(Session& session, CompanyRegister& companies, const std::string& company,
             const Surroundings& surroundings) {
    if (companies.isSound(company)) {
        surroundings.out << session.text(text::repair::kNotDamaged, company) << '\n';
        return exitcode::kDone;
    }
    const RepairReport report = companies.repair(company);
    for (const auto& [table, rows] : report.rows) PrintableStream(surroundings.out) << table << ": " << rows << '\n';
    surroundings.err << replaceAll(repairText(session.texts, report), "\r\n", "\n") << '\n';
    return exitcode::kPassedOver;
}

}  // namespace

int repairCommand(const RepairArguments& arguments, const Surroundings& surroundings) {
    const std::string& company = arguments.company;
    Session session(surroundings, arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    const auto fail = [&](const std::string& text, int code) {
        surroundings.err << session.text(text::terminal::kError) << ' ' << text << '\n';
        return code;
    };
    if (SqlLayer::ÄrSQLDatabas(upperCase(company)))
        return fail(session.text(text::repair::kOnlyFiles), exitcode::kUsage);
    TerminalPort port(session, surroundings.err, surroundings.cancel, false);
    MessageBoxes boxes(port, session.state.helpFile);
    CompanyRegister companies(session.state, session.texts, boxes);
    companies.waitForLock = [&] { return !port.cancelled(); };
    try {
        return repaired(session, companies, company, surroundings);
    } catch (const PlatformError& error) {
        if (port.cancelled()) return exitcode::kCancelled;
        if (error.number() == errors::kFileNotFound)
            return fail(session.text(text::company::kNoSuchCompany, company), exitcode::kStopped);
        return fail(session.text(text::repair::kCannotRepair, company) + ' ' + session.explain(error),
                    exitcode::kStopped);
    }
}

}  // namespace kolmera::cli
