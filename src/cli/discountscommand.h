#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct DiscountsArguments {
    std::string supplier;  ///< number
    std::string file;      ///< relative to the current folder
    std::string dataFolder;
    std::string company;  ///< database file, server name or company name; empty: the suite's current or the only one
};

/// `discounts export SUPPLIER FILE --data DIR [--company NAME]`: writes the supplier's discount letter to a text file
/// or spreadsheet.
int exportDiscountsCommand(const DiscountsArguments& arguments, const Surroundings& surroundings);

/// `discounts import SUPPLIER FILE --data DIR [--company NAME]`: replaces the supplier's discount letter by the file's,
/// confirmation given.
int importDiscountsCommand(const DiscountsArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
