#include "definitions/firststeps.h"

#include <algorithm>
#include <system_error>

#include "db/sqllayer.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "startup/suppliernames.h"

namespace kolmera {

FirstSteps firstSteps(const StartState& state, const std::vector<Job>& jobs) {
    FirstSteps steps;
    std::error_code unknown;
    const std::string& company = state.StandardFöretag;
    if (company.empty() || SqlLayer::ÄrSQLDatabas(upperCase(company)) ||
        !std::filesystem::exists(state.drives.resolve(company, state.dataFolder()), unknown))
        return steps;
    PassedOverSilently passedOver;  // who opens the couplings is told
    steps.todo = std::ranges::all_of(jobs, [&](const Job& job) { return ÄrStandardFormat(job.name); });
    for (const Job& job : jobs) {
        if (!steps.todo) return steps;
        attempt(passedOver, job.name, [&] { steps.todo = CouplingFile(state.dataFolder()).ofJob(job.name).empty(); });
    }
    steps.supplier = steps.todo && !supplierNames(state, company).empty();
    return steps;
}

std::vector<CoupledJob> coupledJobs(const StartState& state, const std::string& company) {
    std::vector<CoupledJob> rows;
    const CouplingFile couplings(state.dataFolder());
    for (const Job& job : JobFile(state.dataFolder()).all()) {
        const std::string& of = job.company.empty() ? state.StandardFöretag : job.company;
        if (!ÄrStandardFormat(job.name) || !equalNoCase(of, company)) continue;
        const std::vector<Coupling> those = couplings.ofJob(job.name);
        for (const Coupling& coupling : those) rows.push_back({job.number, job.name, coupling});
        if (those.empty()) rows.push_back({job.number, job.name, {}});
    }
    return rows;
}

}  // namespace kolmera
