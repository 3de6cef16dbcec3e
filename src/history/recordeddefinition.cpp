#include "history/recordeddefinition.h"

#include <nlohmann/json.hpp>

#include "db/productcolumns.h"

namespace kolmera {
namespace {

using Json = nlohmann::json;

Json parsed(const std::string& text) {
    Json json = Json::parse(text, nullptr, false);
    return json.is_object() ? json : Json::object();
}

Json member(const Json& object, const char* name) {
    const auto found = object.find(name);
    return found == object.end() ? Json() : *found;
}

std::string textMember(const Json& object, const char* name) {
    const Json value = object.is_object() ? member(object, name) : Json();
    return value.is_string() ? value.get<std::string>() : std::string();
}

RecordedDefinition::Key keyOf(const Json& relation) {
    const Json target = member(relation, "Mål");
    switch (target.is_number_integer() ? target.get<int>() : 0) {
        case ordinal(kProdukt, "Nummer"):
            return RecordedDefinition::Key::Number;
        case ordinal(kProdukt, "Söknamn"):
            return RecordedDefinition::Key::SearchName;
        case ordinal(kProdukt, "Levartikelnr"):
            return RecordedDefinition::Key::SupplierArticle;
        default:
            return RecordedDefinition::Key::Alternative;
    }
}

}  // namespace

RecordedDefinition recordedDefinition(const RunHeader& run) {
    RecordedDefinition result;
    const Json definition = parsed(run.definition);
    const Json mask = member(definition, "mask");
    result.supplier = textMember(member(definition, "job"), "supplier");
    if (!mask.is_object()) {
        // Of the trade formats only EIO's files are not written in the code page of DOS.
        result.codePage = run.job == "(EIO)" ? CodePage::Windows1252 : CodePage::Oem850;
        return result;
    }
    if (textMember(mask, "Tecken") == "J") result.codePage = CodePage::Oem850;
    const Json relations = member(mask, "relations");
    for (const Json& relation : relations.is_array() ? relations : Json::array()) {
        if (textMember(relation, "Division") == "S") result.key = keyOf(relation);
    }
    return result;
}

bool emptiedTables(const RunHeader& run) {
    const Json counts = parsed(run.counts);
    for (const char* count : {"deleted_products", "deleted_pricelist", "deleted_alternatives"}) {
        const Json value = member(counts, count);
        if (value.is_number() && value.get<double>() > 0) return true;
    }
    return false;
}

}  // namespace kolmera
