#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "source/sourcesettings.h"

namespace kolmera {

/// Settings as an object; what has its default value is left out.
nlohmann::ordered_json toJson(const SourceSettings& settings);
/// The other way round: nothing when a member has a value that it cannot have. Members of other names are passed over.
std::optional<SourceSettings> sourceSettingsOf(const nlohmann::ordered_json& object);

}  // namespace kolmera
