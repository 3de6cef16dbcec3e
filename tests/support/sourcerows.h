#pragma once

#include <string>
#include <string_view>

#include "source/readers/opensource.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

/// The rows of a reader, a line each: the number, then "|" before each cell. Numbers, dates and truth values are marked
/// "#", "@" and "?".
std::string rowsOf(RowReader& reader);
/// The same of a file with these bytes.
std::string rowsOf(std::string_view bytes, const SourceFormat& format, const SourceLimits& limits = {});

}  // namespace kolmera::test
