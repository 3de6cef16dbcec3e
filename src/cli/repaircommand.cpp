#include "cli/repaircommand.h"

#include <ostream>

#include "cli/session.h"
#include "cli/terminalport.h"
#include "lang/errortext.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "startup/company.h"
#include "startup/repairtexts.h"

namespace kolmera::cli {
namespace {

constexpr int kSound = 606, kNotRepaired = 607, kOnlyFiles = 608, kNoSuchCompany = 313;

int repaired(Session& session, CompanyRegister& companies, const std::string& company,
             const Surroundings& surroundings) {
    if (companies.isSound(company)) {
        surroundings.out << session.text(kSound, company) << '\n';
        return exitcode::kDone;
    }
    const RepairReport report = companies.repair(company);
    for (const auto& [table, rows] : report.rows) surroundings.out << table << ": " << rows << '\n';
    surroundings.err << replaceAll(repairText(session.texts, report), "\r\n", "\n") << '\n';
    return exitcode::kPassedOver;
}

}  // namespace

int repairCommand(const std::string& company, const std::string& dataFolder, const Surroundings& surroundings) {
    Session session(surroundings, dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    const auto fail = [&](const std::string& text, int code) {
        surroundings.err << session.text(250) << ' ' << text << '\n';
        return code;
    };
    if (SqlLayer::ÄrSQLDatabas(upperCase(company))) return fail(session.text(kOnlyFiles), exitcode::kUsage);
    TerminalPort port(surroundings.err, surroundings.cancel, false);
    MessageBoxes boxes(port, session.state.helpFile);
    CompanyRegister companies(session.state, session.texts, boxes);
    companies.waitForLock = [&] { return !port.cancelled(); };
    try {
        return repaired(session, companies, company, surroundings);
    } catch (const PlatformError& error) {
        if (port.cancelled()) return exitcode::kCancelled;
        if (error.number() == errors::kFileNotFound)
            return fail(session.text(kNoSuchCompany, company), exitcode::kStopped);
        return fail(session.text(kNotRepaired, company) + ' ' + errorText(session.texts, error), exitcode::kStopped);
    }
}

}  // namespace kolmera::cli
