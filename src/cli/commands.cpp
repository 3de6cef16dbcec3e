#include "cli/commands.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <streambuf>

#include "cli/comparecommand.h"
#include "cli/copycommand.h"
#include "cli/couplingscommand.h"
#include "cli/discountscommand.h"
#include "cli/explaincommand.h"
#include "cli/historycommand.h"
#include "cli/importaccesscommand.h"
#include "cli/inspectcommand.h"
#include "cli/jobscommand.h"
#include "cli/limitscommand.h"
#include "cli/newcommand.h"
#include "cli/previewcommand.h"
#include "cli/productcommand.h"
#include "cli/registercommand.h"
#include "cli/repaircommand.h"
#include "cli/runcommand.h"
#include "cli/servercommands.h"
#include "cli/showcommand.h"
#include "cli/sourcecommand.h"
#include "cli/templatecommand.h"
#include "cli/undocommand.h"
#include "lang/keys/help.h"

namespace kolmera::cli {
namespace {

/// One command and its options. What the options fill lives as long as the command does.
class Command {
  public:
    Command(CLI::App& command, const HelpText& helpText) : command_(command), text_(helpText) {
        command.get_help_ptr()->group(text_(text::help::kOptions));
    }

    Command& argument(const char* name, std::string& value, ModuleKey purpose) {
        command_.add_option(name, value, text_(purpose))->required();
        return *this;
    }
    CLI::Option* option(const char* name, std::string& value, ModuleKey purpose) {
        return command_.add_option(name, value, text_(purpose));
    }
    CLI::Option* list(const char* name, std::vector<std::string>& values, ModuleKey purpose) {
        return command_.add_option(name, values, text_(purpose));
    }
    CLI::Option* number(const char* name, int& value, ModuleKey purpose) {
        return command_.add_option(name, value, text_(purpose))->check(CLI::NonNegativeNumber);
    }
    CLI::Option* flag(const char* name, bool& value, ModuleKey purpose) {
        return command_.add_flag(name, value, text_(purpose));
    }
    Command& data(std::string& folder) {
        option("-d,--data", folder, text::help::kData)->envname("KOLMERA_DATA")->required();
        return *this;
    }

  private:
    CLI::App& command_;
    const HelpText& text_;
};

class Commands {
  public:
    Commands(CLI::App& app, std::string_view named, const HelpText& text, Surroundings& surroundings,
             std::function<int()>& chosen)
        : app_(app), named_(named), text_(text), surroundings_(surroundings), chosen_(chosen) {
        app_.require_subcommand(1);
    }

    /// A command whose options `describe` adds, filling an `Arguments`, and which `carryOut` carries out.
    template <class Arguments, class Describe>
    void add(const char* name, ModuleKey purpose, Describe&& describe,
             int (*carryOut)(const Arguments&, const Surroundings&), CLI::App* above = nullptr) {
        CLI::App* command = (above ? above : &app_)->add_subcommand(name, text_(purpose));
        if (!named_.empty() && named_ != (above ? above->get_name() : name)) return;
        const auto arguments = std::make_shared<Arguments>();
        Command described(*command, text_);
        describe(described, *arguments);
        described.flag("-v,--verbose", surroundings_.verbose, text::help::kVerbose);
        command->callback([arguments, carryOut, &chosen = chosen_, &surroundings = surroundings_] {
            chosen = [arguments, carryOut, &surroundings] {
                return surroundings.quiet ? quietly(*arguments, carryOut, surroundings)
                                          : carryOut(*arguments, surroundings);
            };
        });
    }
    /// Lets a command be told to say nothing when all goes well.
    CLI::Option* mayBeQuiet(Command& command) {
        return command.flag("-q,--quiet", surroundings_.quiet, text::help::kQuiet);
    }
    /// A command that only has commands of its own.
    CLI::App* group(const char* name, ModuleKey purpose) {
        CLI::App* command = app_.add_subcommand(name, text_(purpose));
        command->require_subcommand(1);
        command->get_help_ptr()->group(text_(text::help::kOptions));
        return command;
    }

  private:
    /// Takes what it is given and keeps nothing.
    class Nowhere : public std::streambuf {
      protected:
        int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    };

    template <class Arguments>
    static int quietly(const Arguments& arguments, int (*carryOut)(const Arguments&, const Surroundings&),
                       const Surroundings& surroundings) {
        Nowhere nowhere;
        std::ostream out(&nowhere);
        return carryOut(arguments, {.out = out,
                                    .err = surroundings.err,
                                    .programFolder = surroundings.programFolder,
                                    .settingsFile = surroundings.settingsFile,
                                    .locale = surroundings.locale,
                                    .cancel = surroundings.cancel,
                                    .quiet = true,
                                    .verbose = surroundings.verbose});
    }

    CLI::App& app_;
    std::string_view named_;
    const HelpText& text_;
    Surroundings& surroundings_;
    std::function<int()>& chosen_;
};

void addFolders(Commands& commands) {
    commands.add<NewArguments>(
        "new", text::help::kNew,
        [&commands](Command& command, NewArguments& arguments) {
            commands.mayBeQuiet(command);
            command.argument("DIR", arguments.folder, text::help::kNewFolder);
            command.option("--company", arguments.companyName, text::help::kCompanyName);
        },
        newCommand);
    commands.add<NewArguments>(
        "demo", text::help::kDemo,
        [&commands](Command& command, NewArguments& arguments) {
            commands.mayBeQuiet(command);
            command.argument("DIR", arguments.folder, text::help::kNewFolder);
        },
        demoCommand);
}

void describeJob(Command& command, JobArguments& arguments) {
    command.argument("JOB", arguments.job, text::help::kJob).data(arguments.dataFolder);
    command.flag("--empty", arguments.emptyTables, text::help::kEmpty);
    CLI::Option* strict = command.flag("--strict", arguments.strict, text::help::kStrict);
    command.flag("--force", arguments.force, text::help::kForce)->excludes(strict);
    command.option("--locale", arguments.locale, text::help::kLocale)->check(CLI::IsMember({"sv", "en"}));
    command.option("--file", arguments.file, text::help::kRunFile);
}

void describePreparation(Command& command, PreviewArguments& arguments) {
    CLI::Option* prepare = command.flag("--prepare", arguments.prepare, text::help::kPrepare);
    command.flag("--no-prepare", arguments.noPrepare, text::help::kNoPrepare)->excludes(prepare);
}

void addJobs(Commands& commands) {
    commands.add<JobsArguments>(
        "jobs", text::help::kJobs,
        [](Command& command, JobsArguments& arguments) {
            command.data(arguments.dataFolder).flag("--json", arguments.json, text::help::kJson);
        },
        jobsCommand);
    commands.add<RunArguments>(
        "run", text::help::kRun,
        [&commands](Command& command, RunArguments& arguments) {
            commands.mayBeQuiet(command);
            describeJob(command, arguments);
            command.option("--summary", arguments.summaryFile, text::help::kSummary);
            command.option("--rejects", arguments.rejectsFile, text::help::kRejects);
        },
        runCommand);
    commands.add<PreviewArguments>(
        "preview", text::help::kPreview,
        [](Command& command, PreviewArguments& arguments) {
            describeJob(command, arguments);
            describePreparation(command, arguments);
            command.flag("--json", arguments.output.json, text::help::kJson);
            command.option("--save", arguments.output.file, text::help::kSaveChanges);
        },
        previewCommand);
    commands.add<ExplainArguments>(
        "explain", text::help::kExplain,
        [](Command& command, ExplainArguments& arguments) {
            describeJob(command, arguments);
            command.argument("PRODUCT", arguments.product, text::help::kProduct);
            describePreparation(command, arguments);
            command.flag("--json", arguments.output.json, text::help::kJson);
        },
        explainCommand);
    commands.add<LimitsArguments>(
        "limits", text::help::kLimits,
        [](Command& command, LimitsArguments& arguments) {
            command.argument("JOB", arguments.job, text::help::kJob).data(arguments.dataFolder);
            command.list("--set", arguments.set, text::help::kSetLimit);
            command.flag("--clear", arguments.clear, text::help::kClearLimits);
            command.flag("--json", arguments.json, text::help::kJson);
        },
        limitsCommand);
    commands.add<CouplingsArguments>(
        "couplings", text::help::kCouplings,
        [](Command& command, CouplingsArguments& arguments) {
            command.argument("JOB", arguments.job, text::help::kJob).data(arguments.dataFolder);
            command.list("--set", arguments.set, text::help::kSetCoupling);
            command.flag("--main", arguments.main, text::help::kMainSupplier);
            command.list("--remove", arguments.remove, text::help::kRemoveCoupling);
            command.flag("--json", arguments.json, text::help::kJson);
        },
        couplingsCommand);
}

void addSources(Commands& commands) {
    commands.add<InspectArguments>(
        "inspect", text::help::kInspect,
        [](Command& command, InspectArguments& arguments) {
            command.argument("FILE", arguments.file, text::help::kInspectFile);
            command.option("--member", arguments.member, text::help::kInspectMember);
            command.option("--sheet", arguments.sheet, text::help::kInspectSheet);
            command.flag("--json", arguments.json, text::help::kJson);
        },
        inspectCommand);
    commands.add<SourceArguments>(
        "source", text::help::kSource,
        [](Command& command, SourceArguments& arguments) {
            command.argument("JOB", arguments.job, text::help::kJob).data(arguments.dataFolder);
            CLI::Option* detect = command.flag("--detect", arguments.detect, text::help::kDetect);
            command.option("--file", arguments.file, text::help::kOtherFile)->needs(detect);
            command.list("--set", arguments.set, text::help::kSetSource);
            command.flag("--clear", arguments.clear, text::help::kClearSource);
            command.flag("--json", arguments.json, text::help::kJson);
        },
        sourceCommand);
    commands.add<ConvertArguments>(
        "convert", text::help::kConvert,
        [](Command& command, ConvertArguments& arguments) {
            command.argument("JOB", arguments.job, text::help::kJob).data(arguments.dataFolder);
            command.option("--output", arguments.output, text::help::kConvertOutput)->required();
            command.option("--file", arguments.file, text::help::kOtherFile);
        },
        convertCommand);
}

void addTemplates(Commands& commands) {
    CLI::App* templates = commands.group("template", text::help::kTemplate);
    commands.add<TemplateArguments>(
        "export", text::help::kTemplateExport,
        [&commands](Command& command, TemplateArguments& arguments) {
            commands.mayBeQuiet(command);
            command.argument("JOB", arguments.job, text::help::kJob)
                .argument("FILE", arguments.file, text::help::kTemplateFile)
                .data(arguments.dataFolder);
        },
        exportTemplateCommand, templates);
    commands.add<TemplateArguments>(
        "import", text::help::kTemplateImport,
        [&commands](Command& command, TemplateArguments& arguments) {
            commands.mayBeQuiet(command);
            command.argument("FILE", arguments.file, text::help::kTemplateFile).data(arguments.dataFolder);
            command.option("--as", arguments.as, text::help::kTemplateAs);
            command.list("--supplier", arguments.suppliers, text::help::kTemplateSupplier);
            command.option("--company", arguments.company, text::help::kCompany);
            command.flag("--replace", arguments.replace, text::help::kTemplateReplace);
        },
        importTemplateCommand, templates);
}

void addHistory(Commands& commands) {
    commands.add<HistoryArguments>(
        "history", text::help::kHistory,
        [](Command& command, HistoryArguments& arguments) {
            command.data(arguments.dataFolder).flag("--json", arguments.json, text::help::kJson);
            command.option("--company", arguments.company, text::help::kCompany);
        },
        historyCommand);
    commands.add<ShowArguments>(
        "show", text::help::kShow,
        [](Command& command, ShowArguments& arguments) {
            command.argument("RUN", arguments.run, text::help::kRunName).data(arguments.dataFolder);
            command.flag("--json", arguments.output.json, text::help::kJson);
            command.option("--save", arguments.output.file, text::help::kSaveChanges);
            command.option("--rejects", arguments.rejectsFile, text::help::kRejects);
        },
        showCommand);
    commands.add<CompareArguments>(
        "compare", text::help::kCompare,
        [](Command& command, CompareArguments& arguments) {
            command.argument("RUN", arguments.run, text::help::kRunName).data(arguments.dataFolder);
            command.option("--with", arguments.with, text::help::kCompareWith);
            command.flag("--json", arguments.output.json, text::help::kJson);
            command.option("--save", arguments.output.file, text::help::kSaveChanges);
        },
        compareCommand);
    commands.add<UndoArguments>(
        "undo", text::help::kUndo,
        [&commands](Command& command, UndoArguments& arguments) {
            command.argument("RUN", arguments.run, text::help::kRunName).data(arguments.dataFolder);
            command.flag("--dry-run", arguments.dryRun, text::help::kDryRun);
            command.flag("--json", arguments.json, text::help::kJson)->excludes(commands.mayBeQuiet(command));
        },
        undoCommand);
}

void addCompanies(Commands& commands) {
    commands.add<RepairArguments>(
        "repair", text::help::kRepair,
        [&commands](Command& command, RepairArguments& arguments) {
            commands.mayBeQuiet(command);
            command.argument("COMPANY", arguments.company, text::help::kCompanyFile).data(arguments.dataFolder);
        },
        repairCommand);
    commands.add<SchemaArguments>(
        "server-schema", text::help::kServerSchema,
        [](Command& command, SchemaArguments& arguments) {
            command.option("--dialect", arguments.dialect, text::help::kDialect)->required();
            command.option("--company", arguments.companyName, text::help::kCompanyName);
        },
        serverSchemaCommand);
    commands.add<ServerArguments>(
        "add-server", text::help::kAddServer,
        [&commands](Command& command, ServerArguments& arguments) {
            commands.mayBeQuiet(command);
            command.argument("NAME", arguments.name, text::help::kServerName).data(arguments.dataFolder);
            command.option("--connect", arguments.connectString, text::help::kConnect);
            command.option("--connect-file", arguments.connectFile, text::help::kConnectFile);
            command.option("--description", arguments.description, text::help::kDescription);
        },
        addServerCommand);
    commands.add<CopyArguments>(
        "copy-company", text::help::kCopy,
        [&commands](Command& command, CopyArguments& arguments) {
            commands.mayBeQuiet(command);
            command.argument("FROM", arguments.from, text::help::kCopyFrom)
                .argument("TO", arguments.to, text::help::kCopyTo)
                .data(arguments.dataFolder);
        },
        copyCompanyCommand);
    commands.add<ImportAccessArguments>(
        "import-access", text::help::kImportAccess,
        [&commands](Command& command, ImportAccessArguments& arguments) {
            commands.mayBeQuiet(command);
            command.argument("FILE", arguments.file, text::help::kAccessFile).data(arguments.dataFolder);
            command.option("--company", arguments.company, text::help::kAccessCompany);
            command.flag("--replace", arguments.replace, text::help::kAccessReplace);
        },
        importAccessCommand);
}

void addDiscounts(Commands& commands) {
    CLI::App* discounts = commands.group("discounts", text::help::kDiscounts);
    const auto describe = [&commands](Command& command, DiscountsArguments& arguments) {
        commands.mayBeQuiet(command);
        command.argument("SUPPLIER", arguments.supplier, text::help::kSupplier)
            .argument("FILE", arguments.file, text::help::kLetterFile)
            .data(arguments.dataFolder)
            .option("--company", arguments.company, text::help::kCompany);
    };
    commands.add<DiscountsArguments>("export", text::help::kExport, describe, exportDiscountsCommand, discounts);
    commands.add<DiscountsArguments>("import", text::help::kImport, describe, importDiscountsCommand, discounts);
}

void addRegisters(Commands& commands) {
    commands.add<RegistersArguments>(
        "registers", text::help::kRegisters,
        [](Command& command, RegistersArguments& arguments) {
            command.flag("--json", arguments.json, text::help::kJson);
        },
        registersCommand);
    commands.add<RegisterArguments>(
        "register", text::help::kRegister,
        [](Command& command, RegisterArguments& arguments) {
            command.argument("NAME", arguments.name, text::help::kRegisterName);
            command.option("ACTION", arguments.action, text::help::kRegisterAction);
            command.list("WORDS", arguments.words, text::help::kRegisterWords);
            command.data(arguments.dataFolder);
            command.option("--company", arguments.company, text::help::kCompany);
            command.list("--columns", arguments.columns, text::help::kRegisterColumns);
            command.flag("--dry-run", arguments.dryRun, text::help::kRegisterDryRun);
            command.flag("--json", arguments.json, text::help::kJson);
        },
        registerCommand);
    commands.add<ProductArguments>(
        "product", text::help::kProductCommand,
        [](Command& command, ProductArguments& arguments) {
            command.argument("NUMBER", arguments.number, text::help::kProductNumber).data(arguments.dataFolder);
            command.option("--company", arguments.company, text::help::kCompany);
            command.number("--changes", arguments.changes, text::help::kProductChanges);
            command.flag("--json", arguments.json, text::help::kJson);
        },
        productCommand);
}

}  // namespace

void describeCommands(CLI::App& app, std::string_view named, const HelpText& text, Surroundings& surroundings,
                      std::function<int()>& chosen) {
    Commands commands(app, named, text, surroundings, chosen);
    addFolders(commands);
    addJobs(commands);
    addSources(commands);
    addHistory(commands);
    addCompanies(commands);
    addDiscounts(commands);
    addTemplates(commands);
    addRegisters(commands);
}

}  // namespace kolmera::cli
