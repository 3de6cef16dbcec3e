#include "import/templates/jobtemplate.h"

#include <fcntl.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "definitions/couplingfile.h"
#include "definitions/maskfile.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"
#include "platform/recordfolder.h"
#include "source/settingsjson.h"

namespace kolmera {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kVersionMember = "kolmeraTemplate";
constexpr const char* kSupplierMember = "supplierName";  // of the job's supplier alone
constexpr const char* kSuppliersMember = "supplierNames";
constexpr const char* kLimitsMember = "limits";
constexpr int kVersion = 1;
constexpr std::size_t kLargest = 1 << 22;

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

bool isSound(const WholeMask& whole) {
    constexpr int kTyped = 4, kColumns = 999;
    const auto& [mask, relations] = whole;
    return !trimmed(mask.Namn).empty() && fits(mask.Namn, kMaskNameLength) &&
           std::string_view("FTP").find(mask.FilTyp) != std::string_view::npos && fits(mask.AntalRader, kTyped) &&
           fits(mask.Postlängd, kTyped) && within(mask.AntalKolumner, kColumns) &&
           relations.size() <= std::size_t{kMostRelations} &&
           std::ranges::all_of(relations, [](const Relation& each) { return isSound(each); });
}

std::string textOf(const JobTemplate& made) {
    Json json = Json::parse(definitionText(made.definition));
    json[kVersionMember] = kVersion;
    for (const auto& [number, name] : made.supplierNames) json[kSuppliersMember][number] = name;
    for (const LimitKind& kind : kLimits) {
        if (const auto& value = made.limits.*kind.value) json[kLimitsMember][std::string(kind.name)] = *value;
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::optional<JobTemplate> templateIn(const std::string& text) {
    try {
        const Json json = Json::parse(text);
        if (json.at(kVersionMember) != kVersion) return std::nullopt;
        auto definition = definitionOf(text);
        if (!definition || (json.contains("source") && !sourceSettingsOf(json.at("source")))) return std::nullopt;
        JobTemplate read{.definition = std::move(*definition), .limits = {}, .supplierNames = {}};
        const Job& job = read.definition.job;
        if (!job.supplier.empty()) read.supplierNames[job.supplier] = json.value(kSupplierMember, std::string());
        for (const Coupling& coupling : read.definition.couplings) {
            if (!coupling.supplier.empty()) read.supplierNames.try_emplace(coupling.supplier);
        }
        const Json names = json.value(kSuppliersMember, Json::object());
        for (auto& [number, name] : read.supplierNames) name = names.value(number, name);
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

}  // namespace

bool isSound(const JobTemplate& made) {
    constexpr int kColumns = 999;
    constexpr std::size_t kMostCouplings = 1000;
    const Job& job = made.definition.job;
    return !trimmed(job.name).empty() && fits(job.name, kJobTextLength) && fits(job.priceFile, kJobTextLength) &&
           fits(job.mask, kJobTextLength) && fits(job.supplier, kCouplingTextLength) && fits(job.kind, 1) &&
           fits(job.fromGroup, kJobGroupLength) && fits(job.toGroup, kJobGroupLength) &&
           within(job.heading1, kColumns) && within(job.heading2, kColumns) &&
           (!made.definition.mask || isSound(*made.definition.mask)) &&
           made.definition.couplings.size() <= kMostCouplings &&
           std::ranges::all_of(made.definition.couplings, [](const Coupling& coupling) {
               return fits(coupling.code, kCouplingTextLength) && fits(coupling.supplier, kCouplingTextLength);
           });
}

JobTemplate templateOf(const std::filesystem::path& dataFolder, const Job& job,
                       const std::vector<SupplierRow>& suppliers) {
    const JobOptionsFile options(dataFolder);
    JobTemplate made{.definition = {.job = job,
                                    .mask = MaskFile(dataFolder).find(job.mask),
                                    .couplings = CouplingFile(dataFolder).ofJob(job.name),
                                    .source = options.source(job.name)},
                     .limits = options.limits(job.name),
                     .supplierNames = {}};
    Job& left = made.definition.job;
    left.number = 0;
    left.company.clear();
    left.command.clear();
    const auto name = [&](const std::string& number) {
        const int row = rowOfSupplier(suppliers, number);
        if (row >= 0) made.supplierNames[number] = suppliers[static_cast<std::size_t>(row)].searchName;
    };
    name(job.supplier);
    for (const Coupling& coupling : made.definition.couplings) name(coupling.supplier);
    return made;
}

void writeTemplate(const JobTemplate& made, const std::filesystem::path& file) {
    OutputFile output(file);
    output.write(textOf(made));
    output.finish();
}

std::optional<JobTemplate> readTemplate(const std::filesystem::path& file) {
    const Descriptor opened(file, O_RDONLY | O_NONBLOCK);
    if (opened.size() > kLargest) return std::nullopt;
    std::string text(kLargest, '\0');
    text.resize(opened.readAt(0, text.data(), text.size()));
    auto read = templateIn(text);
    if (read && !isSound(*read)) return std::nullopt;
    return read;
}

}  // namespace kolmera
