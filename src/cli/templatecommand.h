#pragma once

#include <string>
#include <vector>

#include "cli/commandline.h"

namespace kolmera::cli {

struct TemplateArguments {
    std::string job, file, dataFolder;
    // Import.
    std::string as;                      ///< the job's name here; empty: the template's
    std::vector<std::string> suppliers;  ///< "NUMBER" of the job's supplier here, or "THERE=NUMBER" of any
    std::string company;                 ///< empty: that of the replaced job, or of all jobs here
    bool replace = false;                ///< of what has the same names
};

/// `template export JOB FILE --data DIR`: a job with its mask, source, couplings and limits as one JSON file. Its
/// company and its command stay at home.
int exportTemplateCommand(const TemplateArguments& arguments, const Surroundings& surroundings);
/// `template import FILE --data DIR [--as NAME] [--supplier [THERE=]NUMBER ...] [--company NAME]
/// [--replace]`.
int importTemplateCommand(const TemplateArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
