#include "cli/commandline.h"

#include <CLI/CLI.hpp>
#include <new>
#include <ostream>

#include "cli/copycommand.h"
#include "cli/discountscommand.h"
#include "cli/jobscommand.h"
#include "cli/newcommand.h"
#include "cli/repaircommand.h"
#include "cli/runcommand.h"
#include "cli/servercommands.h"
#include "cli/session.h"
#include "lang/errortext.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"

namespace kolmera::cli {
namespace {

struct Options {
    std::string folder;
    std::string company;
    std::string job;
    std::string summary;
    bool json = false;
    bool empty = false;
    bool strict = false;
    bool force = false;
    std::string locale;
    std::string dialect;
    std::string server;
    std::string connectString;
    std::string connectFile;
    std::string description;
    std::string from;
    std::string to;
    DiscountsArguments discounts;
};

void addDataOption(CLI::App& command, Options& options) {
    command.add_option("--data", options.folder, "Data folder of the suite")->required();
}

void describeServerCommands(CLI::App& app, Options& options) {
    CLI::App* schema = app.add_subcommand("server-schema", "Print the script that makes an empty company on a server");
    schema->add_option("--dialect", options.dialect, "sqlserver, postgresql or mariadb")->required();
    schema->add_option("--company", options.company, "Name of the company");

    CLI::App* server = app.add_subcommand("add-server", "Register a company on a database server");
    server->add_option("NAME", options.server, "Name of the company, as jobs name it: SQL;NAME")->required();
    server->add_option("--connect", options.connectString,
                       "ODBC connect string, up to 100 characters; without a password, which others would see");
    server->add_option("--connect-file", options.connectFile,
                       "File whose first line is the connect string; \"-\": standard input");
    server->add_option("--description", options.description, "Shown beside the name");
    addDataOption(*server, options);

    CLI::App* copy = app.add_subcommand("copy-company", "Copy a company from file to server or back");
    copy->add_option("FROM", options.from, "Company file of the data folder, or SQL;NAME")->required();
    copy->add_option("TO", options.to, "The same; a file that is missing is made")->required();
    addDataOption(*copy, options);
}

void describeDiscounts(CLI::App& app, Options& options) {
    CLI::App* discounts = app.add_subcommand("discounts", "Read or write a supplier's discount letter");
    discounts->require_subcommand(1);
    for (const auto& [name, purpose] :
         {std::pair("export", "Write the letter to a text file or a new sheet of an .xlsx"),
          std::pair("import", "Replace the letter by a text file or spreadsheet")}) {
        CLI::App* command = discounts->add_subcommand(name, purpose);
        command->add_option("SUPPLIER", options.discounts.supplier, "Number of the supplier")->required();
        command->add_option("FILE", options.discounts.file, "A text file or an .xlsx (an .xls can be read only)")
            ->required();
        command->add_option("--data", options.discounts.dataFolder, "Data folder of the suite")->required();
        command->add_option("--company", options.discounts.company, "Company file, SQL;NAME or name of the company");
    }
}

void describe(CLI::App& app, Options& options) {
    app.require_subcommand(1);

    CLI::App* made = app.add_subcommand("new", "Make a data folder with an empty company");
    made->add_option("DIR", options.folder, "Folder to make")->required();
    made->add_option("--company", options.company, "Name of the company");

    CLI::App* demo = app.add_subcommand("demo", "Make a data folder with a demo company, jobs and price files");
    demo->add_option("DIR", options.folder, "Folder to make")->required();

    CLI::App* jobs = app.add_subcommand("jobs", "List the import jobs of a data folder");
    addDataOption(*jobs, options);
    jobs->add_flag("--json", options.json, "Print JSON");

    CLI::App* run = app.add_subcommand("run", "Run an import job");
    run->add_option("JOB", options.job, "Name of the job")->required();
    addDataOption(*run, options);
    run->add_flag("--empty", options.empty, "Delete all products and supplier prices first");
    CLI::Option* strict =
        run->add_flag("--strict", options.strict, "Change nothing when the price file is not what it seems");
    run->add_flag("--force", options.force, "Read a price file that is not what it seems")->excludes(strict);
    run->add_option("--locale", options.locale, "How numbers are written: sv (12,50) or en (12.50)")
        ->check(CLI::IsMember({"sv", "en"}));
    run->add_option("--summary", options.summary, "Write the summary as JSON to this file");

    CLI::App* repair = app.add_subcommand("repair", "Save what can be read of a damaged company");
    repair->add_option("COMPANY", options.company, "Company file of the data folder")->required();
    addDataOption(*repair, options);

    describeServerCommands(app, options);
    describeDiscounts(app, options);
}

int dispatch(const CLI::App& app, const Options& options, const Surroundings& surroundings) {
    if (app.got_subcommand("new")) return newCommand(options.folder, options.company, surroundings);
    if (app.got_subcommand("demo")) return demoCommand(options.folder, surroundings);
    if (app.got_subcommand("jobs")) return jobsCommand(options.folder, options.json, surroundings);
    if (app.got_subcommand("repair")) return repairCommand(options.company, options.folder, surroundings);
    if (app.got_subcommand("discounts")) {
        const bool writes = app.get_subcommand("discounts")->got_subcommand("export");
        return (writes ? exportDiscountsCommand : importDiscountsCommand)(options.discounts, surroundings);
    }
    if (app.got_subcommand("server-schema")) return serverSchemaCommand(options.dialect, options.company, surroundings);
    if (app.got_subcommand("copy-company")) {
        return copyCompanyCommand({.from = options.from, .to = options.to, .dataFolder = options.folder}, surroundings);
    }
    if (app.got_subcommand("add-server")) {
        return addServerCommand({.name = options.server,
                                 .connectString = options.connectString,
                                 .connectFile = options.connectFile,
                                 .description = options.description,
                                 .dataFolder = options.folder},
                                surroundings);
    }
    return runCommand({.job = options.job,
                       .dataFolder = options.folder,
                       .emptyTables = options.empty,
                       .summaryFile = options.summary,
                       .locale = options.locale,
                       .strict = options.strict,
                       .force = options.force},
                      surroundings);
}

int carryOutLine(const std::vector<std::string>& arguments, const Surroundings& surroundings) {
    CLI::App app("Kolmera without a window: makes data folders, lists and runs import jobs.", "kolmera-cli");
    Options options;
    describe(app, options);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // CLI11 takes them last first
    } catch (const CLI::ParseError& error) {
        return app.exit(error, surroundings.out, surroundings.err) == 0 ? exitcode::kDone : exitcode::kUsage;
    }
    try {
        return dispatch(app, options, surroundings);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const PlatformError& error) {
        Session session(surroundings);
        surroundings.err << session.text(text::terminal::kError) << ' ' << errorText(session.texts, error) << '\n';
        return exitcode::kStopped;
    } catch (const std::exception& error) {
        Session session(surroundings);
        surroundings.err << session.text(text::terminal::kError) << ' '
                         << session.text(text::terminal::kUnexpectedError, error.what()) << '\n';
        return exitcode::kStopped;
    }
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments, const Surroundings& surroundings) {
    const int code = carryOutLine(arguments, surroundings);
    if (surroundings.out.flush().good()) return code;
    if (surroundings.cancel.load(std::memory_order_relaxed)) return exitcode::kCancelled;
    Session session(surroundings);
    surroundings.err << session.text(text::terminal::kError) << ' ' << session.text(text::terminal::kOutputCut) << '\n';
    return code == exitcode::kDone ? exitcode::kStopped : code;
}

}  // namespace kolmera::cli
