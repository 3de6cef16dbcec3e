#include "cli/newcommand.h"

#include <ostream>

#include "cli/democompany.h"
#include "cli/session.h"
#include "definitions/datafolder.h"
#include "lang/errortext.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"
#include "platform/privatefolder.h"
#include "startup/newcompany.h"

namespace kolmera::cli {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kCompanyFile = "FTG1.mdb";

bool mayBeFilled(const fs::path& folder) {
    std::error_code ignored;
    return !fs::exists(folder, ignored) || (fs::is_directory(folder, ignored) && fs::is_empty(folder, ignored));
}

/// A folder that is filled out of sight, and shows itself whole or not at all: beside the wanted folder, or inside it
/// when that is there already (it may have rights of its own). What is unfinished is removed.
class FolderInTheMaking {
  public:
    explicit FolderInTheMaking(const fs::path& wanted)
        : wanted_(wanted.has_filename() ? wanted : wanted.parent_path()),
          exists_(fs::exists(wanted)),
          private_(madePlace(exists_ ? wanted_ : wanted_.parent_path()), ".kolmera") {
        fs::create_directory(folder());  // with the rights that the user gives to new folders
    }

    [[nodiscard]] fs::path folder() const { return private_.path() / "folder"; }
    void finish() {
        if (!exists_) return fs::rename(folder(), wanted_);
        const std::vector<fs::path> entries(fs::directory_iterator(folder()), {});
        for (const fs::path& entry : entries) fs::rename(entry, wanted_ / entry.filename());
    }

  private:
    static fs::path madePlace(const fs::path& place) {
        fs::create_directories(place);
        return place;
    }

    fs::path wanted_;
    bool exists_;
    PrivateFolder private_;
};

// Makes the folder and lets `fill` write into it; the message tells how it went.
int makeFolder(Session& session, const fs::path& folder, const Surroundings& surroundings, ModuleKey doneText,
               const std::function<void(const fs::path& folder)>& fill) {
    const auto stopped = [&](ModuleKey text, std::string_view reason) {
        surroundings.err << session.text(text::terminal::kError) << ' ' << session.text(text, folder.string()) << reason
                         << '\n';
        return exitcode::kStopped;
    };
    if (!mayBeFilled(folder)) return stopped(text::terminal::kFolderNotEmpty, "");
    try {
        FolderInTheMaking making(folder);
        createDataFolder(making.folder());
        fill(making.folder());
        making.finish();
    } catch (const PlatformError& error) {
        return stopped(text::terminal::kFolderNotCreated, " " + errorText(session.texts, error));
    } catch (const fs::filesystem_error& error) {
        const PlatformError cause(errors::kInternal, error.code().message());
        return stopped(text::terminal::kFolderNotCreated,
                       " " + errorText(session.texts, cause.ofSystem(error.code().value())));
    }
    surroundings.out << session.text(doneText, folder.string()) << '\n';
    return exitcode::kDone;
}

}  // namespace

int newCommand(const NewArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings);
    const fs::path target = absoluteFolder(arguments.folder);
    return makeFolder(session, target, surroundings, text::terminal::kFolderCreated, [&](const fs::path& made) {
        createCompany(made, kCompanyFile,
                      arguments.companyName.empty() ? session.text(text::terminal::kMyCompany) : arguments.companyName);
    });
}

int demoCommand(const NewArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings);
    const fs::path target = absoluteFolder(arguments.folder);
    return makeFolder(session, target, surroundings, text::terminal::kDemoCreated, [&](const fs::path& made) {
        createCompany(made, kCompanyFile, session.text(text::terminal::kDemoCompany));
        fillDemoCompany(surroundings.programFolder / "demo", made, made / kCompanyFile, session.state.locale);
    });
}

}  // namespace kolmera::cli
