#pragma once

#include <string>
#include <vector>

#include "cli/commandline.h"

namespace kolmera::cli {

struct RegistersArguments {
    bool json = false;
};

struct RegisterArguments {
    std::string name;    ///< of the register, in either language
    std::string action;  ///< empty: list
    std::vector<std::string> words;
    std::string dataFolder;
    std::string company;
    std::vector<std::string> columns;  ///< import: HEADING=COLUMN
    bool dryRun = false;
    bool json = false;
};

/// `registers [--json]`: what registers there are.
int registersCommand(const RegistersArguments& arguments, const Surroundings& surroundings);

/// `register NAME [list [WORDS] | columns | show KEY | set KEY COLUMN=VALUE ... | remove KEY | import FILE [--columns
/// HEADING=COLUMN ...] [--dry-run] | export FILE] --data DIR [--company NAME] [--json]`: rows of a register, which is a
/// table of the company or a part of its settings. What is written is kept as a run, and can be undone.
int registerCommand(const RegisterArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
