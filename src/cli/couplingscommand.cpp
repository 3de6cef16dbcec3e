#include "cli/couplingscommand.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "cli/jobsession.h"
#include "cli/texttable.h"
#include "definitions/couplingfile.h"
#include "definitions/supplierlist.h"
#include "lang/keys/help.h"
#include "lang/keys/letter.h"
#include "lang/keys/prisutfa.h"
#include "lang/keys/registers.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"
#include "startup/startup.h"

namespace kolmera::cli {
namespace {

/// What "CODE=SUPPLIER" says, the supplier as the company spells it. Nothing, and told, when one of them cannot be.
std::optional<std::vector<Coupling>> wanted(JobSession& found, const Job& job, const CouplingsArguments& arguments,
                                            const std::vector<SupplierRow>& suppliers) {
    std::vector<Coupling> couplings;
    for (const std::string& text : arguments.set) {
        const std::size_t sign = text.rfind('=');
        const std::string code(trimmed(std::string_view(text).substr(0, sign)));
        if (sign == std::string::npos || code.empty()) {
            found.say(found.session.text(text::help::kSetCoupling));
            return std::nullopt;
        }
        const std::string supplier(trimmed(std::string_view(text).substr(sign + 1)));
        const int row = rowOfSupplier(suppliers, supplier);
        if (row < 0) {
            found.say(found.session.text(text::letter::kNoSuchSupplier, supplier));
            return std::nullopt;
        }
        couplings.push_back({.job = job.name,
                             .code = code,
                             .supplier = suppliers[static_cast<std::size_t>(row)].number,
                             .mainSupplier = arguments.main});
    }
    return couplings;
}

/// Of the job's company; nothing, and told, when it cannot be opened.
std::optional<std::vector<SupplierRow>> suppliersOf(JobSession& found, const Job& job) {
    MessageBoxes boxes(found.port, {});
    CompanyRegister companies(found.session.state, found.session.texts, boxes);
    LäsDorvikIni(found.session.state);
    if (!companies.ÖppnaDatabas(job.company)) return std::nullopt;
    std::vector<SupplierRow> suppliers = readSuppliers(found.session.state.sql);
    found.session.state.sql.FtgDB.reset();
    return suppliers;
}

bool remove(JobSession& found, CouplingFile& file, const Job& job, const std::string& code) {
    const std::vector<Coupling> shown = file.ofJob(job.name);
    const auto coupling =
        std::ranges::find_if(shown, [&](const Coupling& one) { return equalNoCase(one.code, trimmed(code)); });
    if (coupling == shown.end()) {
        found.say('"' + code + "\" " + found.session.text(text::registers::kNotThere));
        return false;
    }
    file.remove(*coupling, shown);
    return true;
}

void print(Session& session, const std::vector<Coupling>& couplings, bool asJson, std::ostream& out) {
    TextTable table({session.texts.FormulärSträng(text::registers::kCode),
                     session.text(text::terminal::kSupplierHeading),
                     session.texts.FormulärSträng(text::prisutfa::kMainSupplier)});
    auto list = nlohmann::ordered_json::array();
    for (const Coupling& coupling : couplings) {
        table.add({coupling.code, coupling.supplier, coupling.mainSupplier ? "H" : ""});
        list.push_back({{"code", coupling.code}, {"supplier", coupling.supplier}, {"main", coupling.mainSupplier}});
    }
    if (asJson) {
        out << list.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    } else {
        table.print(out);
    }
}

}  // namespace

int couplingsCommand(const CouplingsArguments& arguments, const Surroundings& surroundings) {
    const JobArguments named{.job = arguments.job, .dataFolder = arguments.dataFolder, .locale = {}};
    JobSession found(named, surroundings);
    const auto job = found.findJob();
    if (!job) return exitcode::kStopped;
    CouplingFile file(found.session.state.dataFolder());
    if (!arguments.set.empty()) {
        const auto suppliers = suppliersOf(found, *job);
        const auto couplings = suppliers ? wanted(found, *job, arguments, *suppliers) : std::nullopt;
        if (!couplings) return exitcode::kStopped;
        for (const Coupling& coupling : *couplings) file.save(coupling);
    }
    for (const std::string& code : arguments.remove) {
        if (!remove(found, file, *job, code)) return exitcode::kStopped;
    }
    print(found.session, file.ofJob(job->name), arguments.json, surroundings.out);
    return exitcode::kDone;
}

}  // namespace kolmera::cli
