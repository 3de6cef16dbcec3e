#pragma once

#include <optional>

#include "definitions/jobfile.h"
#include "import/run/runport.h"
#include "lang/languagetexts.h"
#include "platform/date.h"
#include "startup/company.h"
#include "startup/messageboxes.h"
#include "startup/startstate.h"

namespace kolmera {

/// What an import run needs of the program. Made where a run is started; the run machinery takes it whole, the
/// routines below take what they use.
struct ImportContext {
    StartState& state;
    LanguageTexts& texts;
    MessageBoxes& boxes;         ///< shows on `port`
    CompanyRegister& companies;  ///< reports to `boxes`
    RunPort& port;
    Date Idag;       ///< today, as the program holds it since its window was loaded
    int JobbNr = 0;  ///< record number of the job in KOLMERA.TXT
    /// The job as the user saw it; a run does not start from another one that has got its number meanwhile.
    std::optional<Job> shown = std::nullopt;
};

}  // namespace kolmera
