#include "import/run/recordeddefinition.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "definitions/targetcodes.h"
#include "import/run/runcounts.h"

namespace kolmera {
namespace {

RecordedDefinition::Key keyOf(int keyTarget) {
    switch (keyTarget) {
        case target("Nummer"):
            return RecordedDefinition::Key::Number;
        case target("Söknamn"):
            return RecordedDefinition::Key::SearchName;
        case target("Levartikelnr"):
            return RecordedDefinition::Key::SupplierArticle;
        default:
            return RecordedDefinition::Key::Alternative;
    }
}

}  // namespace

RecordedDefinition recordedDefinition(const RunHeader& run) {
    RecordedDefinition result;
    const std::optional<RunDefinition> definition = definitionOf(run.definition);
    if (!definition) return result;
    result.supplier = definition->job.supplier;
    if (definition->source) result.source = definition->source->format;
    if (!definition->mask) {
        // Of the trade formats only EIO's files are not written in the code page of DOS.
        if (definition->job.name != "(EIO)") result.codePage = CodePage::Oem850;
        return result;
    }
    if (definition->mask->mask.Tecken == 'J') result.codePage = CodePage::Oem850;
    for (const Relation& relation : definition->mask->relations) {
        if (relation.Division == 'S') result.key = keyOf(relation.Mål);
    }
    return result;
}

bool emptiedTables(const RunHeader& run) {
    const nlohmann::json counts = nlohmann::json::parse(run.counts, nullptr, false);
    for (const char* count : {"deleted_products", "deleted_pricelist", "deleted_alternatives"}) {
        const auto found = counts.find(count);
        if (found != counts.end() && found->is_number() && found->get<double>() > 0) return true;
    }
    return false;
}

}  // namespace kolmera
