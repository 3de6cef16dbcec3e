#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include "cli/commandline.h"
#include "lang/languagetexts.h"
#include "startup/startstate.h"

namespace kolmera::cli {

/// The start-up state of one command: the user's language and drive map, the program folder, and the data folder that
/// the command line names in place of DVKlient.ini. Nobody signs in: whoever may run commands on the machine may run
/// jobs.
struct Session {
    explicit Session(const Surroundings& surroundings, const std::string& dataFolder = {});

    /// A text of the program's own module.
    std::string text(ModuleKey key) { return texts.ModulText(key); }
    std::string text(ModuleKey key, std::string_view var1) { return texts.ModulTextMed(key, var1); }

    /// Whether the data folder is there; `err` tells when it is not.
    bool hasDataFolder(std::ostream& err);

    /// Whether a company's name is what the shell has left of SQL;NAME without quotes; `err` tells when it is.
    bool cutAtSemicolon(std::string_view company, std::ostream& err);

    /// What an error is; to a verbose session also its number and the words that it came with.
    std::string explain(const PlatformError& error);

    StartState state;
    LanguageTexts texts;
    bool verbose;
};

/// The folder of the command line as an absolute path.
std::filesystem::path absoluteFolder(const std::string& folder);

}  // namespace kolmera::cli
