#pragma once

#include <optional>
#include <string>

#include "source/detection/detection.h"

namespace kolmera {

/// How the rows of a text are cut: by a delimiter, with quotes or without, or at fixed positions. Fills kind,
/// delimiter, quote and starts of the format. `text` is UTF-8.
void detectLayout(std::string text, const KnownOfSource& known, Detection& detection);

}  // namespace kolmera
