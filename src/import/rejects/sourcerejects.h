#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "import/run/runcounts.h"
#include "platform/descriptor.h"
#include "platform/outputfile.h"
#include "platform/workplaces.h"

namespace kolmera {

/// Writes the rejected records of a price file that was converted, as rows of that file, behind its headings and what
/// stands above them: of a delimited or fixed text byte for byte, unpacked; of a workbook or XML as the semicolon text
/// that is read in its place (see `openRows`). `rejected` are the records' numbers, in their order. How many were
/// written; nothing when `goesOn` says so. Throws PlatformError.
std::optional<std::int64_t> writeSourceRejects(const Descriptor& file, const RunDefinition& definition,
                                               const std::vector<std::int64_t>& rejected,
                                               const std::vector<WorkPlace>& places, OutputFile& output,
                                               const std::function<bool()>& goesOn);

}  // namespace kolmera
