#include "cli/templatecommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <ostream>

#include "cli/jobsession.h"
#include "cli/printablelines.h"
#include "import/templates/templateimport.h"
#include "lang/keys/jobtemplate.h"
#include "lang/keys/terminal.h"

namespace kolmera::cli {
namespace {

class TemplateCommand {
  public:
    TemplateCommand(const TemplateArguments& arguments, const Surroundings& surroundings)
        : arguments_(arguments),
          surroundings_(surroundings),
          named_{.job = arguments.job, .dataFolder = arguments.dataFolder, .locale = {}},
          session_(named_, surroundings) {}

    int exportJob();
    int importJob();

  private:
    [[nodiscard]] std::optional<std::vector<SupplierRow>> suppliersOf(const std::string& company);
    [[nodiscard]] bool knowsSuppliers(TemplateImport& wanted);
    int refuse(ModuleKey text, std::string_view about) {
        session_.say(session_.session.text(text, about));
        return exitcode::kStopped;
    }
    [[nodiscard]] std::filesystem::path folder() const { return session_.session.state.dataFolder(); }

    const TemplateArguments& arguments_;
    const Surroundings& surroundings_;
    JobArguments named_;
    JobSession session_;
};

/// Nothing of a company that cannot be opened, which has been told.
std::optional<std::vector<SupplierRow>> TemplateCommand::suppliersOf(const std::string& company) {
    Session& session = session_.session;
    MessageBoxes boxes(session_.port, {});
    CompanyRegister companies(session.state, session.texts, boxes);
    std::optional<std::vector<SupplierRow>> suppliers;
    if (companies.ÖppnaDatabas(company)) suppliers = readSuppliers(session.state.sql);
    session.state.sql.FtgDB.reset();
    return suppliers;
}

int TemplateCommand::exportJob() {
    const auto job = session_.findJob();
    if (!job) return exitcode::kStopped;
    JobTemplate made = templateOf(folder(), *job, {});
    const RunDefinition& definition = made.definition;
    // Without the company's names, each supplier is asked for where the template is read.
    if (!definition.job.supplier.empty() || !definition.couplings.empty())
        made = templateOf(folder(), *job, suppliersOf(job->company).value_or(std::vector<SupplierRow>()));
    writeTemplate(made, arguments_.file);
    if (!job->command.empty()) surroundings_.err << session_.session.text(text::jobtemplate::kCommandStays) << '\n';
    return exitcode::kDone;
}

/// The numbers that the command line says: "NUMBER" of the job's supplier, "THERE=NUMBER" of any.
bool TemplateCommand::knowsSuppliers(TemplateImport& wanted) {
    if (wanted.suppliers().empty()) return true;
    Session& session = session_.session;
    MessageBoxes boxes(session_.port, {});
    CompanyRegister companies(session.state, session.texts, boxes);
    if (!wanted.lookAtCompany(companies, session.state.sql)) return false;
    for (const std::string& said : arguments_.suppliers) {
        const std::size_t sign = said.find('=');
        const std::string there = sign == std::string::npos ? wanted.job().supplier : said.substr(0, sign);
        const std::string here = sign == std::string::npos ? said : said.substr(sign + 1);
        const auto found = std::ranges::find(wanted.suppliers(), there, &TemplateImport::Supplier::number);
        if (found == wanted.suppliers().end()) {
            session_.say(session_.session.text(text::jobtemplate::kNotInTemplate, there));
            return false;
        }
        wanted.setSupplier(static_cast<std::size_t>(found - wanted.suppliers().begin()), here);
    }
    for (const TemplateImport::Supplier& each : wanted.suppliers()) {
        if (each.here.empty())
            session_.say(session_.session.text(text::jobtemplate::kOtherSupplier, each.number + " " + each.name));
    }
    return wanted.knowsSuppliers();
}

int TemplateCommand::importJob() {
    if (!session_.session.hasDataFolder(surroundings_.err)) return exitcode::kStopped;
    auto read = readTemplate(arguments_.file);
    if (!read) return refuse(text::jobtemplate::kNoTemplate, arguments_.file);
    TemplateImport wanted(folder(), std::move(*read));
    if (!arguments_.as.empty() && !wanted.setName(arguments_.as))
        return refuse(text::jobtemplate::kWrongName, arguments_.as);
    if (!arguments_.company.empty()) wanted.setCompany(arguments_.company);
    if (wanted.company().empty()) return refuse(text::jobtemplate::kWhichCompany, wanted.job().name);
    if (!wanted.writesOver().empty() && !arguments_.replace)
        return refuse(text::jobtemplate::kTaken, wanted.writesOver().back());
    if (!knowsSuppliers(wanted)) return exitcode::kStopped;
    wanted.save();
    PrintableStream(surroundings_.out) << session_.session.text(text::jobtemplate::kRead, wanted.job().name) << '\n';
    return exitcode::kDone;
}

int withErrorsTold(const TemplateArguments& arguments, const Surroundings& surroundings,
                   int (TemplateCommand::*work)()) {
    try {
        return (TemplateCommand(arguments, surroundings).*work)();
    } catch (const PlatformError& error) {
        Session session(surroundings, arguments.dataFolder);
        surroundings.err << session.text(text::terminal::kError) << ' ' << session.explain(error) << '\n';
        return exitcode::kStopped;
    }
}

}  // namespace

int exportTemplateCommand(const TemplateArguments& arguments, const Surroundings& surroundings) {
    return withErrorsTold(arguments, surroundings, &TemplateCommand::exportJob);
}

int importTemplateCommand(const TemplateArguments& arguments, const Surroundings& surroundings) {
    return withErrorsTold(arguments, surroundings, &TemplateCommand::importJob);
}

}  // namespace kolmera::cli
