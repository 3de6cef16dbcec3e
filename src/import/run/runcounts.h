#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "definitions/couplingfile.h"
#include "definitions/jobfile.h"
#include "definitions/maskfile.h"
#include "import/run/runsummary.h"
#include "source/sourcesettings.h"

namespace kolmera {

/// The counts of a run, from "records" to "read_as_one_line", as the summary file and the record have them.
nlohmann::ordered_json countsJson(const RunSummary& summary);

/// What a run goes by.
struct RunDefinition {
    Job job;
    std::optional<WholeMask> mask = std::nullopt;
    std::vector<Coupling> couplings = {};
    std::optional<SourceSettings> source = std::nullopt;
};

/// JSON: "job", "mask" with "relations", "couplings", "source" as it is stored; the members are the fields of `Job`,
/// `Mask`, `Relation` and `Coupling` by name.
std::string definitionText(const RunDefinition& definition);
/// What such a text says; nothing for any other text.
std::optional<RunDefinition> definitionOf(const std::string& text);

}  // namespace kolmera
