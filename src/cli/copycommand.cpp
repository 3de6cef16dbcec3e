#include "cli/copycommand.h"

#include <fmt/format.h>

#include <chrono>
#include <ostream>

#include "cli/session.h"
#include "cli/terminalport.h"
#include "db/companyschema.h"
#include "lang/keys/server.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "startup/company.h"
#include "startup/companycopy.h"

namespace kolmera::cli {
namespace {

/// Makes the file of a company that is not there yet; its rows come from the source.
void makeMissingFile(CompanyRegister& companies, const StartState& state, const std::string& name) {
    if (SqlLayer::ÄrSQLDatabas(upperCase(name))) return;
    const auto file = state.drives.resolve(name, state.dataFolder());
    std::error_code unreadable;
    if (!std::filesystem::exists(file, unreadable)) createFileDatabase(file, companySchema(), companies.LösenFör(name));
}

std::unique_ptr<Database> opened(CompanyRegister& companies, StartState& state, const std::string& name) {
    if (!companies.ÖppnaDatabas(name)) return nullptr;
    return std::move(state.sql.FtgDB);
}

/// What the source holds, not what has happened: the same command would meet it again.
bool isOfARow(const PlatformError& error) {
    return error.number() == errors::kDuplicateKey || error.number() == errors::kWrongType ||
           error.number() == errors::kTextTooLong;
}

int tell(Session& session, const CopyArguments& arguments, const CopyResult& result, const Surroundings& surroundings) {
    const auto fail = [&](ModuleKey text) {
        const std::string place = result.table.empty() ? "" : fmt::format(" {}, ID {}.", result.table, result.id);
        surroundings.err << session.text(text::terminal::kError) << ' ' << session.text(text, arguments.to) << place
                         << '\n';
        return exitcode::kStopped;
    };
    switch (result.outcome) {
        case CopyResult::Outcome::OtherRows:
            return fail(text::server::kOtherRows);
        case CopyResult::Outcome::Differs:
            return fail(text::server::kRowDiffers);
        case CopyResult::Outcome::Cancelled:
            surroundings.err << session.text(text::server::kCopyingCancelled) << '\n';
            return exitcode::kCancelled;
        case CopyResult::Outcome::Done:
            break;
    }
    for (const CopiedTable& table : result.tables) surroundings.out << table.name << ": " << table.rows << '\n';
    surroundings.out << session.text(text::server::kCopied, arguments.from) << ' '
                     << session.text(text::server::kRowsCompared, arguments.to) << '\n';
    return exitcode::kDone;
}

}  // namespace

int copyCompanyCommand(const CopyArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    for (const std::string& company : {arguments.from, arguments.to}) {
        if (session.cutAtSemicolon(company, surroundings.err)) return exitcode::kUsage;
    }
    if (equalNoCase(arguments.from, arguments.to)) {
        surroundings.err << session.text(text::terminal::kError) << ' ' << session.text(text::server::kSameCompany)
                         << '\n';
        return exitcode::kUsage;
    }
    TerminalPort port(session, surroundings.err, surroundings.cancel, false);
    MessageBoxes boxes(port, session.state.helpFile);
    CompanyRegister companies(session.state, session.texts, boxes);
    companies.waitForLock = [&] { return !port.cancelled(); };
    companies.waitForAnswer = [&](std::chrono::milliseconds) { return !port.cancelled(); };
    try {
        const auto source = opened(companies, session.state, arguments.from);
        if (!source) return exitcode::kStopped;
        makeMissingFile(companies, session.state, arguments.to);
        const auto target = opened(companies, session.state, arguments.to);
        if (!target) return exitcode::kStopped;
        const CopyResult result = copyCompany(*source, *target, [&] { return !port.cancelled(); });
        return tell(session, arguments, result, surroundings);
    } catch (const PlatformError& error) {
        surroundings.err << session.text(text::terminal::kError) << ' '
                         << (isOfARow(error) ? session.text(text::server::kRowNotTaken, arguments.to)
                                             : session.text(text::server::kCopyingStopped, arguments.to))
                         << ' ' << session.explain(error) << '\n';
        return port.cancelled() ? exitcode::kCancelled : exitcode::kStopped;
    }
}

}  // namespace kolmera::cli
