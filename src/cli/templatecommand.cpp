#include "cli/templatecommand.h"

#include <fcntl.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "cli/jobsession.h"
#include "cli/printablelines.h"
#include "definitions/joboptions.h"
#include "definitions/maskfile.h"
#include "definitions/supplierlist.h"
#include "import/run/runcounts.h"
#include "lang/keys/jobtemplate.h"
#include "lang/keys/terminal.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"
#include "platform/recordfolder.h"
#include "source/settingsjson.h"

namespace kolmera::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kVersionMember = "kolmeraTemplate";
constexpr const char* kSupplierMember = "supplierName";
constexpr const char* kLimitsMember = "limits";
constexpr int kVersion = 1;

struct JobTemplate {
    RunDefinition definition;
    Limits limits;
    std::string supplierName;  ///< of the job's supplier, where it was made
};

/// What fits into a record of the folder's files.
bool fits(const std::string& text, int characters) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    return characterCount(text) <= static_cast<std::size_t>(characters) && std::ranges::none_of(text, isControl) &&
           lackingCharacters(composed(text), CodePage::Windows1252).empty();
}

bool within(int number, int most) { return number >= 0 && number <= most; }

bool isSound(const Relation& relation) {
    constexpr int kThree = 999, kFour = 9999;
    return within(relation.Källa, kThree) && within(relation.Mål, kThree) && within(relation.FrånPos, kFour) &&
           within(relation.Längd, kFour);
}

/// Nobody has looked at a template that was made elsewhere.
bool isSound(const RunDefinition& definition) {
    constexpr int kTyped = 4, kColumns = 999;
    constexpr std::size_t kMostCouplings = 1000;
    const Job& job = definition.job;
    bool sound = !trimmed(job.name).empty() && fits(job.name, kJobTextLength) && fits(job.priceFile, kJobTextLength) &&
                 fits(job.mask, kJobTextLength) && fits(job.supplier, kCouplingTextLength) && fits(job.kind, 1) &&
                 fits(job.fromGroup, kJobGroupLength) && fits(job.toGroup, kJobGroupLength) &&
                 within(job.heading1, kColumns) && within(job.heading2, kColumns);
    if (definition.mask) {
        const auto& [mask, relations] = *definition.mask;
        sound = sound && !trimmed(mask.Namn).empty() && fits(mask.Namn, kMaskNameLength) &&
                std::string_view("FTP").find(mask.FilTyp) != std::string_view::npos && fits(mask.AntalRader, kTyped) &&
                fits(mask.Postlängd, kTyped) && within(mask.AntalKolumner, kColumns) &&
                relations.size() <= std::size_t{kMostRelations} &&
                std::ranges::all_of(relations, [](const Relation& each) { return isSound(each); });
    }
    return sound && definition.couplings.size() <= kMostCouplings &&
           std::ranges::all_of(definition.couplings, [](const Coupling& coupling) {
               return fits(coupling.code, kCouplingTextLength) && fits(coupling.supplier, kCouplingTextLength);
           });
}

std::string textOf(const JobTemplate& made) {
    Json json = Json::parse(definitionText(made.definition));
    json[kVersionMember] = kVersion;
    if (!made.supplierName.empty()) json[kSupplierMember] = made.supplierName;
    for (const LimitKind& kind : kLimits) {
        if (const auto& value = made.limits.*kind.value) json[kLimitsMember][std::string(kind.name)] = *value;
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::optional<JobTemplate> templateOf(const std::string& text) {
    try {
        const Json json = Json::parse(text);
        if (json.at(kVersionMember) != kVersion) return std::nullopt;
        auto definition = definitionOf(text);
        if (!definition || !isSound(*definition)) return std::nullopt;
        if (json.contains("source") && !sourceSettingsOf(json.at("source"))) return std::nullopt;
        JobTemplate read{.definition = std::move(*definition), .limits = {}, .supplierName = {}};
        read.supplierName = json.value(kSupplierMember, std::string());
        const Json limits = json.value(kLimitsMember, Json::object());
        for (const LimitKind& kind : kLimits) {
            if (const auto value = limits.find(std::string(kind.name)); value != limits.end())
                read.limits.*kind.value = std::max(value->get<double>(), 0.0);
        }
        return read;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

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
    [[nodiscard]] std::optional<JobTemplate> read();
    [[nodiscard]] std::vector<SupplierRow> suppliersOf(const std::string& company);
    [[nodiscard]] std::string companyHere(const std::optional<Job>& existing);
    [[nodiscard]] bool isSetUp(const Job& job) const;
    [[nodiscard]] bool replaces(const JobTemplate& wanted, const std::optional<Job>& existing);
    [[nodiscard]] bool knowsSupplier(JobTemplate& wanted);
    void save(const JobTemplate& wanted);
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

/// None of a company that cannot be opened, which has been told.
std::vector<SupplierRow> TemplateCommand::suppliersOf(const std::string& company) {
    Session& session = session_.session;
    MessageBoxes boxes(session_.port, {});
    CompanyRegister companies(session.state, session.texts, boxes);
    std::vector<SupplierRow> suppliers;
    if (companies.ÖppnaDatabas(company)) suppliers = readSuppliers(session.state.sql);
    session.state.sql.FtgDB.reset();
    return suppliers;
}

int TemplateCommand::exportJob() {
    const auto job = session_.findJob();
    if (!job) return exitcode::kStopped;
    const JobOptionsFile options(folder());
    JobTemplate made{.definition = {.job = *job,
                                    .mask = MaskFile(folder()).find(job->mask),
                                    .couplings = CouplingFile(folder()).ofJob(job->name),
                                    .source = options.source(job->name)},
                     .limits = options.limits(job->name),
                     .supplierName = {}};
    if (!job->supplier.empty()) {
        const auto suppliers = suppliersOf(job->company);
        const int row = rowOfSupplier(suppliers, job->supplier);
        if (row >= 0) made.supplierName = suppliers[static_cast<std::size_t>(row)].searchName;
    }
    Job& left = made.definition.job;
    left.number = 0;
    left.company.clear();
    left.command.clear();
    OutputFile file(arguments_.file);
    file.write(textOf(made));
    file.finish();
    if (!job->command.empty()) surroundings_.err << session_.session.text(text::jobtemplate::kCommandStays) << '\n';
    return exitcode::kDone;
}

std::optional<JobTemplate> TemplateCommand::read() {
    constexpr std::size_t kLargest = 1 << 22;
    const Descriptor file(arguments_.file, O_RDONLY | O_NONBLOCK);
    if (file.size() > kLargest) return std::nullopt;
    std::string text(kLargest, '\0');
    text.resize(file.readAt(0, text.data(), text.size()));
    auto wanted = templateOf(text);
    if (wanted && !arguments_.as.empty()) wanted->definition.job.name = trimmed(arguments_.as);
    if (wanted && !isSound(wanted->definition)) return std::nullopt;
    return wanted;
}

std::string TemplateCommand::companyHere(const std::optional<Job>& existing) {
    if (!arguments_.company.empty()) return arguments_.company;
    if (existing && !existing->company.empty()) return existing->company;
    std::string company;
    for (const Job& job : JobFile(folder()).all()) {
        if (job.company.empty() || equalNoCase(job.company, company)) continue;
        if (!company.empty()) return {};
        company = job.company;
    }
    return company;
}

/// The jobs of the trade formats are there from the start, without a price file.
bool TemplateCommand::isSetUp(const Job& job) const {
    const JobOptionsFile options(folder());
    return !ÄrStandardFormat(job.name) || !job.priceFile.empty() || options.limits(job.name).any() ||
           options.source(job.name);
}

/// Whether what is there already may be written over.
bool TemplateCommand::replaces(const JobTemplate& wanted, const std::optional<Job>& existing) {
    if (arguments_.replace) return true;
    const RunDefinition& definition = wanted.definition;
    std::string taken;
    if (existing && isSetUp(*existing)) taken = definition.job.name;
    if (!CouplingFile(folder()).ofJob(definition.job.name).empty() && !definition.couplings.empty())
        taken = definition.job.name;
    if (definition.mask) {
        const auto mask = MaskFile(folder()).find(definition.mask->mask.Namn);
        Mask same = definition.mask->mask;
        if (mask) same.number = mask->mask.number;
        if (mask && (mask->mask != same || mask->relations != definition.mask->relations)) taken = same.Namn;
    }
    if (!taken.empty()) session_.say(session_.session.text(text::jobtemplate::kTaken, taken));
    return taken.empty();
}

/// A number means the same supplier where it has the same name.
bool TemplateCommand::knowsSupplier(JobTemplate& wanted) {
    Job& job = wanted.definition.job;
    if (job.supplier.empty()) return true;
    const auto suppliers = suppliersOf(job.company);
    const std::string number = arguments_.supplier.empty() ? job.supplier : arguments_.supplier;
    const int row = rowOfSupplier(suppliers, number);
    const bool same = row >= 0 && (!arguments_.supplier.empty() ||
                                   suppliers[static_cast<std::size_t>(row)].searchName == wanted.supplierName);
    job.supplier = number;
    if (!same)
        session_.say(session_.session.text(text::jobtemplate::kOtherSupplier, number + " " + wanted.supplierName));
    return same;
}

/// All of it or nothing.
void TemplateCommand::save(const JobTemplate& wanted) {
    const RunDefinition& definition = wanted.definition;
    RecordChange change(folder());
    if (definition.mask) putMask(change, *definition.mask);
    putJob(change, definition.job);
    for (Coupling coupling : definition.couplings) {
        coupling.job = definition.job.name;
        putCoupling(change, coupling);
    }
    putOptions(change.text(kJobOptionsFile), definition.job.name,
               {.limits = wanted.limits, .source = definition.source});
    change.commit();
}

int TemplateCommand::importJob() {
    if (!session_.session.hasDataFolder(surroundings_.err)) return exitcode::kStopped;
    auto wanted = read();
    if (!wanted) return refuse(text::jobtemplate::kNoTemplate, arguments_.file);
    Job& job = wanted->definition.job;
    const auto existing = JobFile(folder()).find(job.name);
    job.number = existing ? existing->number : 0;
    job.command = existing ? existing->command : std::string();
    job.company = companyHere(existing);
    if (job.company.empty()) return refuse(text::jobtemplate::kWhichCompany, job.name);
    if (!replaces(*wanted, existing) || !knowsSupplier(*wanted)) return exitcode::kStopped;
    save(*wanted);
    PrintableStream(surroundings_.out) << session_.session.text(text::jobtemplate::kRead, job.name) << '\n';
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
