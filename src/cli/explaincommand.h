#pragma once

#include <string>

#include "cli/previewcommand.h"

namespace kolmera::cli {

struct ExplainArguments : PreviewArguments {
    std::string product;
};

/// `explain JOB PRODUCT [--json]` with the options of `preview`: how the prices of a product would be computed, step by
/// step. Nothing of the run stays. kStopped when the price file has no record of the product.
int explainCommand(const ExplainArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
