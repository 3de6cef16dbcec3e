#include "cli/commandline.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <optional>
#include <ostream>
#include <sstream>

#include "cli/commands.h"
#include "cli/nearnames.h"
#include "cli/printablelines.h"
#include "lang/keys/help.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"

namespace kolmera::cli {
namespace {

constexpr const char* kProgram = "kolmera-cli";

/// The parser's own words in the language of the session. What its help takes for a group's heading is set on the
/// commands themselves.
void translate(CLI::App& app, const HelpText& helpText) {
    const auto formatter = app.get_formatter();
    formatter->label("Usage", helpText(text::help::kUsage));
    formatter->label("OPTIONS", helpText(text::help::kOptionsWord));
    formatter->label("SUBCOMMAND", helpText(text::help::kCommand));
    formatter->label("Positionals", helpText(text::help::kArguments));
    formatter->label("REQUIRED", helpText(text::help::kRequired));
    formatter->label("TEXT", "");
    formatter->label("Env", helpText(text::help::kEnvironment));
    formatter->label("Excludes", helpText(text::help::kNotWith));
    app.set_help_flag("-h,--help", helpText(text::help::kHelp))->group(helpText(text::help::kOptions));
    app.option_defaults()->group(helpText(text::help::kOptions));
    app.group(helpText(text::help::kCommands));
}

/// A session of the command line itself, opened when it has something to tell: the commands open their own.
class Teller {
  public:
    explicit Teller(const Surroundings& surroundings) : surroundings_(surroundings) {}

    Session& session() {
        if (!session_) session_.emplace(surroundings_);
        return *session_;
    }

  private:
    const Surroundings& surroundings_;
    std::optional<Session> session_;
};

/// What the parser did not expect: its text ends in it.
std::string unexpected(const CLI::ParseError& error) {
    const std::string what = error.what();
    return what.substr(std::min(what.rfind(": ") + 2, what.size()));
}

/// What the parser found wrong, in the language of the session. Its own text is English, and names the option or the
/// argument at one end.
std::string explain(Session& session, const CLI::ParseError& error) {
    const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
    const std::string what = error.what();
    const auto before = [&](std::string_view words) { return what.substr(0, what.find(words)); };
    if (code == CLI::ExitCodes::RequiredError) {
        const bool command = what.starts_with("A subcommand");
        return session.text(text::help::kMissing,
                            command ? session.text(text::help::kCommand) : before(" is required"));
    }
    if (code == CLI::ExitCodes::ExtrasError) return session.text(text::help::kUnexpected, unexpected(error));
    if (code == CLI::ExitCodes::ArgumentMismatch) return session.text(text::help::kValueMissing, before(": "));
    if (code == CLI::ExitCodes::ExcludesError) {
        std::string both = what;
        if (const auto at = both.find(" excludes "); at != std::string::npos) both.replace(at, 10, ", ");
        return session.text(text::help::kExcludes, both);
    }
    if (code == CLI::ExitCodes::ValidationError) return session.text(text::help::kUnusable, before(" not in "));
    return session.text(text::help::kUnusable, what);
}

/// The first argument, when it should be a command and is none.
bool knowsCommand(const CLI::App& app, const std::vector<std::string>& arguments, Teller& teller, std::ostream& err) {
    if (arguments.empty() || arguments[0].starts_with('-')) return true;
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    if (std::ranges::find(names, arguments[0]) != names.end()) return true;
    Session& session = teller.session();
    err << session.text(text::terminal::kError) << ' ' << session.text(text::help::kNoSuchCommand, arguments[0]);
    const auto near = nearNames(arguments[0], names);
    if (!near.empty()) err << ' ' << session.text(text::terminal::kDidYouMean, near[0]);
    err << '\n';
    return false;
}

int misread(const CLI::App& app, const CLI::ParseError& error, Session& session, std::ostream& err) {
    std::string command = kProgram;
    const CLI::App* at = &app;
    while (!at->get_subcommands().empty()) {
        at = at->get_subcommands().front();
        command += ' ' + at->get_name();
    }
    err << session.text(text::terminal::kError) << ' ' << explain(session, error);
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
        std::vector<std::string> options;
        for (const CLI::Option* option : at->get_options()) {
            for (const std::string& name : option->get_lnames()) options.push_back("--" + name);
        }
        std::istringstream words(unexpected(error));
        for (std::string word; words >> word;) {
            const auto near = word.starts_with("--") ? nearNames(word, options) : std::vector<std::string>();
            if (!near.empty()) err << ' ' << session.text(text::terminal::kDidYouMean, near[0]);
        }
    }
    err << '\n' << session.text(text::help::kSeeHelp, command + " --help") << '\n';
    return exitcode::kUsage;
}

/// The exit code of a command that has not come to its end.
int stopped(const Surroundings& surroundings) {
    return surroundings.cancel.load() ? exitcode::kCancelled : exitcode::kStopped;
}

int carryOutLine(const std::vector<std::string>& arguments, Surroundings& surroundings) {
    Teller teller(surroundings);
    // Only help shows these texts, and looking all of them up takes as long as a small run. Options of a group without
    // a name would be hidden.
    const bool helps = std::ranges::any_of(
        arguments, [](const std::string& each) { return each.starts_with("-h") || each == "--help"; });
    const HelpText helpText = [&](ModuleKey key) { return helps ? teller.session().text(key) : std::string("-"); };
    CLI::App app(helpText(text::help::kProgram), kProgram);
    translate(app, helpText);
    app.set_version_flag("--version", std::string("kolmera ") + KOLMERA_VERSION, helpText(text::help::kVersion));
    std::function<int()> chosen;
    const bool begins = !arguments.empty() && !arguments[0].starts_with('-');
    describeCommands(app, begins ? std::string_view(arguments[0]) : std::string_view(), helpText, surroundings, chosen);
    if (!knowsCommand(app, arguments, teller, surroundings.err)) return exitcode::kUsage;
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // CLI11 takes them last first
    } catch (const CLI::Success& asked) {
        app.exit(asked, surroundings.out, surroundings.err);
        return exitcode::kDone;
    } catch (const CLI::ParseError& error) {
        return misread(app, error, teller.session(), surroundings.err);
    }
    try {
        const int code = chosen();
        return code == exitcode::kStopped ? stopped(surroundings) : code;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const PlatformError& error) {
        Session& session = teller.session();
        surroundings.err << session.text(text::terminal::kError) << ' ' << session.explain(error) << '\n';
        return stopped(surroundings);
    } catch (const std::exception& error) {
        Session& session = teller.session();
        surroundings.err << session.text(text::terminal::kError) << ' '
                         << session.text(text::terminal::kUnexpectedError, error.what()) << '\n';
        return exitcode::kStopped;
    }
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments, const Surroundings& machine) {
    PrintableStream err(machine.err);
    Surroundings surroundings{.out = machine.out,
                              .err = err,
                              .programFolder = machine.programFolder,
                              .settingsFile = machine.settingsFile,
                              .locale = machine.locale,
                              .cancel = machine.cancel};
    const int code = carryOutLine(arguments, surroundings);
    if (surroundings.out.flush().good()) return code;
    if (surroundings.cancel.load(std::memory_order_relaxed)) return exitcode::kCancelled;
    Session session(surroundings);
    surroundings.err << session.text(text::terminal::kError) << ' ' << session.text(text::terminal::kOutputCut) << '\n';
    return code == exitcode::kDone ? exitcode::kStopped : code;
}

}  // namespace kolmera::cli
