#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "definitions/jobfile.h"
#include "import/run/recordkeeping.h"
#include "import/run/runport.h"
#include "lang/languagetexts.h"
#include "platform/date.h"
#include "startup/company.h"
#include "startup/messageboxes.h"
#include "startup/startstate.h"

namespace kolmera {

class PriceTrace;
struct TakenSource;

/// What is different in a run that nothing comes of.
struct PreviewMode {
    /// Opens a private copy of the company as `state.sql.FtgDB`; the tables `untouched` may be empty in it, but for
    /// those that the run empties. A failure is shown and answers false.
    std::function<bool(std::string_view company, std::span<const std::string_view> untouched)> openCopy;
    bool runsCommand = false;  ///< the preparation command is carried out; else the price file is taken as it is
};

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
    const PreviewMode* preview = nullptr;  ///< set in a preview
    PriceTrace* trace = nullptr;           ///< hears how prices are computed
    /// Asked when all is known and nothing is changed yet; false ends the run. Unset, nothing speaks against it.
    std::function<bool(bool emptyTables)> mayWrite = {};
    RecordKeeping* record = nullptr;  ///< set where the run keeps a record
    /// Another price file for this run, "-" for standard input; the preparation command is then left out.
    std::string otherFile = {};
    /// What the run reads in place of its price file. Set by the run before it asks `mayWrite`; a run that is given one
    /// reads it.
    std::shared_ptr<TakenSource> taken = {};
};

}  // namespace kolmera
