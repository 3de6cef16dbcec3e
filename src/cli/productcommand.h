#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct ProductArguments {
    std::string number;
    std::string dataFolder;
    std::string company;
    int changes = 20;
    bool json = false;
};

/// `product NUMBER --data DIR [--company NAME] [--changes N] [--json]`: what the company holds of a product, and what
/// past runs have changed of it.
int productCommand(const ProductArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
