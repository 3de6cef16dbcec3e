#pragma once

#include <optional>
#include <string>

#include "source/detection/detection.h"

namespace kolmera {

/// How the rows of a text are cut: by a delimiter, with quotes or without, or at fixed positions. Fills kind,
/// delimiter, quote, starts and length of the format. `text` is UTF-8; `isWhole`: it is all of the file.
void detectLayout(std::string text, bool isWhole, const KnownOfSource& known, Detection& detection);

}  // namespace kolmera
