#include "import/templates/templateimport.h"

#include <algorithm>

#include "definitions/couplingfile.h"
#include "platform/lettercase.h"
#include "platform/recordfolder.h"

namespace kolmera {
namespace {

/// That of all jobs, where they have one.
std::string companyOf(const std::vector<Job>& jobs) {
    std::string company;
    for (const Job& job : jobs) {
        if (job.company.empty() || equalNoCase(job.company, company)) continue;
        if (!company.empty()) return {};
        company = job.company;
    }
    return company;
}

}  // namespace

TemplateImport::TemplateImport(std::filesystem::path dataFolder, JobTemplate wanted)
    : folder_(std::move(dataFolder)), wanted_(std::move(wanted)) {
    for (const auto& [number, name] : wanted_.supplierNames)
        suppliers_.push_back({.number = number, .name = name, .here = {}});
    look();
    setCompany(job_ && !job_->company.empty() ? job_->company : companyOf(JobFile(folder_).all()));
}

bool TemplateImport::setName(const std::string& name) {
    JobTemplate named = wanted_;
    named.definition.job.name = trimmed(name);
    const std::string& before = job().name;
    const bool isReserved = ÄrStandardFormat(before) || ÄrStandardFormat(named.definition.job.name);
    if (!isSound(named) || (isReserved && named.definition.job.name != before)) return false;
    wanted_ = std::move(named);
    look();
    return true;
}

/// The jobs of the trade formats are there from the start, without a price file.
bool TemplateImport::isSetUp() const {
    return !ÄrStandardFormat(job_->name) || !job_->priceFile.empty() || options_.limits.any() || options_.source;
}

TemplateImport::Options TemplateImport::storedOptions() const {
    const JobOptionsFile options(folder_);
    return {.limits = options.limits(job_->name), .source = options.source(job_->name)};
}

void TemplateImport::look() {
    const RunDefinition& definition = wanted_.definition;
    job_ = JobFile(folder_).find(definition.job.name);
    options_ = job_ ? storedOptions() : Options{};
    couplings_ = CouplingFile(folder_).ofJob(definition.job.name);
    mask_ = definition.mask ? MaskFile(folder_).find(definition.mask->mask.Namn) : std::nullopt;
    writesOver_.clear();
    if ((job_ && isSetUp()) || !couplings_.empty()) writesOver_.push_back(definition.job.name);
    if (!mask_) return;
    WholeMask same = *definition.mask;
    same.mask.number = mask_->mask.number;
    if (*mask_ != same) writesOver_.push_back(same.mask.Namn);
}

bool TemplateImport::lookAtCompany(CompanyRegister& companies, SqlLayer& sql) {
    compareSuppliers({});
    if (!companies.ÖppnaDatabas(company())) return false;
    compareSuppliers(readSuppliers(sql));
    sql.FtgDB.reset();
    return true;
}

void TemplateImport::compareSuppliers(const std::vector<SupplierRow>& company) {
    company_ = company;
    for (Supplier& supplier : suppliers_) {
        const int row = rowOfSupplier(company_, supplier.number);
        // A coupling may name a supplier who is nowhere; it stays so.
        if (row < 0 && supplier.name.empty() && supplier.number != job().supplier) {
            supplier.here = supplier.number;
            continue;
        }
        const bool same =
            row >= 0 && !supplier.name.empty() && company_[static_cast<std::size_t>(row)].searchName == supplier.name;
        supplier.here = same ? supplier.number : std::string();
    }
}

void TemplateImport::setSupplier(std::size_t place, const std::string& here) {
    const int row = rowOfSupplier(company_, here);
    suppliers_.at(place).here = row < 0 ? std::string() : company_[static_cast<std::size_t>(row)].number;
}

std::optional<std::string> TemplateImport::nameHere(const std::string& number) const {
    const int row = rowOfSupplier(company_, number);
    return row < 0 ? std::nullopt : std::optional(company_[static_cast<std::size_t>(row)].searchName);
}

std::string TemplateImport::numberOfName(std::size_t place) const {
    const std::string& name = suppliers_.at(place).name;
    if (name.empty() || std::ranges::count(company_, name, &SupplierRow::searchName) != 1) return {};
    return std::ranges::find(company_, name, &SupplierRow::searchName)->number;
}

bool TemplateImport::knowsSuppliers() const {
    return std::ranges::none_of(suppliers_, [](const Supplier& supplier) { return supplier.here.empty(); });
}

int TemplateImport::save() const {
    RunDefinition definition = wanted_.definition;
    const auto here = [this](std::string& number) {
        const auto found = std::ranges::find(suppliers_, number, &Supplier::number);
        if (found != suppliers_.end()) number = found->here;
    };
    here(definition.job.supplier);
    for (Coupling& coupling : definition.couplings) {
        coupling.job = definition.job.name;
        here(coupling.supplier);
    }
    definition.job.command = job_ ? job_->command : std::string();
    RecordChange change(folder_);
    if (definition.mask) putMask(change, *definition.mask, mask_);
    const int number = putJob(change, definition.job, job_);
    putCouplings(change, definition.job.name, definition.couplings, couplings_);
    // The record did not change, and its options cannot from here on.
    if (job_ && storedOptions() != options_)
        throw PlatformError(errors::kChangedElsewhere, "the options of the job have changed").about(job_->name);
    putOptions(change.text(kJobOptionsFile), definition.job.name,
               {.limits = wanted_.limits, .source = definition.source});
    change.commit();
    return number;
}

}  // namespace kolmera
