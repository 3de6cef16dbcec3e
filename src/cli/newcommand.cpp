#include "cli/newcommand.h"

#include <ostream>

#include "cli/democompany.h"
#include "cli/session.h"
#include "lang/errortext.h"
#include "platform/error.h"
#include "startup/datafolder.h"

namespace kolmera::cli {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kCompanyFile = "FTG1.mdb";

bool mayBeFilled(const fs::path& folder) {
    std::error_code ignored;
    return !fs::exists(folder, ignored) || (fs::is_directory(folder, ignored) && fs::is_empty(folder, ignored));
}

// Makes the folder and lets `fill` write into it; the message tells how it went.
int makeFolder(Session& session, const fs::path& folder, const Surroundings& surroundings, int doneText,
               const std::function<void()>& fill) {
    if (!mayBeFilled(folder)) {
        surroundings.err << session.text(250) << ' ' << session.text(232, folder.string()) << '\n';
        return exitcode::kStopped;
    }
    try {
        createDataFolder(folder);
        fill();
    } catch (const PlatformError& error) {
        surroundings.err << session.text(250) << ' ' << session.text(233, folder.string()) << ' '
                         << errorText(session.texts, error) << '\n';
        return exitcode::kStopped;
    }
    surroundings.out << session.text(doneText, folder.string()) << '\n';
    return exitcode::kDone;
}

}  // namespace

int newCommand(const std::string& folder, const std::string& companyName, const Surroundings& surroundings) {
    Session session(surroundings);
    const fs::path target = absoluteFolder(folder);
    return makeFolder(session, target, surroundings, 230, [&] {
        createCompany(target, kCompanyFile, companyName.empty() ? session.text(234) : companyName);
    });
}

int demoCommand(const std::string& folder, const Surroundings& surroundings) {
    Session session(surroundings);
    const fs::path target = absoluteFolder(folder);
    return makeFolder(session, target, surroundings, 231, [&] {
        createCompany(target, kCompanyFile, session.text(235));
        fillDemoCompany(surroundings.programFolder / "demo", target, target / kCompanyFile, session.state.locale);
    });
}

}  // namespace kolmera::cli
