#include "cli/newcommand.h"

#include <functional>
#include <ostream>

#include "cli/session.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"
#include "setup/newfolder.h"

namespace kolmera::cli {
namespace fs = std::filesystem;
namespace {

// Lets `make` make the folder; the message tells how it went.
int makeFolder(Session& session, const fs::path& folder, const Surroundings& surroundings, ModuleKey doneText,
               const std::function<void()>& make) {
    const auto stopped = [&](ModuleKey text, std::string_view reason) {
        surroundings.err << session.text(text::terminal::kError) << ' ' << session.text(text, folder.string()) << reason
                         << '\n';
        return exitcode::kStopped;
    };
    if (!mayBecomeDataFolder(folder)) return stopped(text::terminal::kFolderNotEmpty, "");
    try {
        make();
    } catch (const PlatformError& error) {
        return stopped(text::terminal::kFolderNotCreated, " " + session.explain(error));
    }
    surroundings.out << session.text(doneText, folder.string()) << '\n';
    return exitcode::kDone;
}

}  // namespace

int newCommand(const NewArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings);
    const fs::path target = absoluteFolder(arguments.folder);
    return makeFolder(session, target, surroundings, text::terminal::kFolderCreated, [&] {
        makeNewFolder(target,
                      arguments.companyName.empty() ? session.text(text::terminal::kMyCompany) : arguments.companyName);
    });
}

int demoCommand(const NewArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings);
    const fs::path target = absoluteFolder(arguments.folder);
    return makeFolder(session, target, surroundings, text::terminal::kDemoCreated, [&] {
        makeDemoFolder(target, session.text(text::terminal::kDemoCompany), surroundings.programFolder / "demo",
                       session.state.locale);
    });
}

}  // namespace kolmera::cli
