#include "import/run/runcounts.h"

#include <nlohmann/json.hpp>

#include "source/settingsjson.h"

namespace kolmera {

namespace {

using Json = nlohmann::ordered_json;

char letter(const Json& json, const char* name) {
    const auto text = json.at(name).get<std::string>();
    return text.empty() ? '\0' : text.front();
}

Job jobOf(const Json& json) {
    return {.number = json.at("number"),
            .name = json.at("name"),
            .priceFile = json.at("priceFile"),
            .mask = json.at("mask"),
            .company = json.at("company"),
            .supplier = json.at("supplier"),
            .command = json.at("command"),
            .kind = json.at("kind"),
            .fromGroup = json.at("fromGroup"),
            .toGroup = json.at("toGroup"),
            .heading1 = json.at("heading1"),
            .heading2 = json.at("heading2")};
}

WholeMask maskOf(const Json& json) {
    WholeMask whole;
    whole.mask = {.number = json.at("number"),
                  .Namn = json.at("Namn"),
                  .FilTyp = letter(json, "FilTyp"),
                  .Tecken = letter(json, "Tecken"),
                  .SkapaNya = letter(json, "SkapaNya"),
                  .UppdatLev = letter(json, "UppdatLev"),
                  .AntalRader = json.at("AntalRader"),
                  .Postlängd = json.at("Postlängd"),
                  .AntalKolumner = json.at("AntalKolumner")};
    for (const Json& relation : json.at("relations")) {
        whole.relations.push_back({.Källa = relation.at("Källa"),
                                   .Mål = relation.at("Mål"),
                                   .FrånPos = relation.at("FrånPos"),
                                   .Längd = relation.at("Längd"),
                                   .TypKod = letter(relation, "TypKod"),
                                   .Division = letter(relation, "Division")});
    }
    return whole;
}

Json jobJson(const Job& job) {
    return {{"number", job.number},   {"name", job.name},         {"priceFile", job.priceFile},
            {"mask", job.mask},       {"company", job.company},   {"supplier", job.supplier},
            {"command", job.command}, {"kind", job.kind},         {"fromGroup", job.fromGroup},
            {"toGroup", job.toGroup}, {"heading1", job.heading1}, {"heading2", job.heading2}};
}

Json maskJson(const WholeMask& whole) {
    const Mask& mask = whole.mask;
    Json relations = Json::array();
    for (const Relation& relation : whole.relations) {
        relations.push_back({{"Källa", relation.Källa},
                             {"Mål", relation.Mål},
                             {"FrånPos", relation.FrånPos},
                             {"Längd", relation.Längd},
                             {"TypKod", std::string(1, relation.TypKod)},
                             {"Division", std::string(1, relation.Division)}});
    }
    return {{"number", mask.number},
            {"Namn", mask.Namn},
            {"FilTyp", std::string(1, mask.FilTyp)},
            {"Tecken", std::string(1, mask.Tecken)},
            {"SkapaNya", std::string(1, mask.SkapaNya)},
            {"UppdatLev", std::string(1, mask.UppdatLev)},
            {"AntalRader", mask.AntalRader},
            {"Postlängd", mask.Postlängd},
            {"AntalKolumner", mask.AntalKolumner},
            {"relations", std::move(relations)}};
}

}  // namespace

Json countsJson(const RunSummary& summary) {
    const RunReport& report = summary.report;
    return {{"records", summary.records},
            {"used", summary.used},
            {"new", summary.newProducts},
            {"changed", summary.changed},
            {"saved", summary.saved},
            {"skipped", summary.skipped},
            {"pricelist", summary.priceList},
            {"alternatives", summary.alternatives},
            {"documents", summary.documents},
            {"deleted_products", summary.deleted.products},
            {"deleted_pricelist", summary.deleted.priceList},
            {"deleted_alternatives", summary.deleted.alternatives},
            {"groups", summary.groups},
            {"group_lines_skipped", summary.groupLinesSkipped},
            {"passed_over", report.failed()},
            {"not_numbers", report.count(Remark::NotNumber)},
            {"missing_prices", report.count(Remark::MissingPrice)},
            {"read_as_one_line", summary.readAsOneLine}};
}

std::string definitionText(const RunDefinition& definition) {
    Json json = {{"job", jobJson(definition.job)}};
    if (definition.mask) json["mask"] = maskJson(*definition.mask);
    for (const Coupling& coupling : definition.couplings) {
        json["couplings"].push_back({{"job", coupling.job},
                                     {"code", coupling.code},
                                     {"supplier", coupling.supplier},
                                     {"mainSupplier", coupling.mainSupplier}});
    }
    if (definition.source) json["source"] = toJson(*definition.source);
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<RunDefinition> definitionOf(const std::string& text) {
    try {
        const Json json = Json::parse(text);
        RunDefinition definition{.job = jobOf(json.at("job"))};
        if (json.contains("mask")) definition.mask = maskOf(json.at("mask"));
        if (json.contains("source")) definition.source = sourceSettingsOf(json.at("source")).value_or(SourceSettings{});
        if (!json.contains("couplings")) return definition;
        for (const Json& coupling : json.at("couplings")) {
            definition.couplings.push_back({.job = coupling.at("job"),
                                            .code = coupling.at("code"),
                                            .supplier = coupling.at("supplier"),
                                            .mainSupplier = coupling.at("mainSupplier")});
        }
        return definition;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

}  // namespace kolmera
