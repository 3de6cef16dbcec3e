#pragma once

#include <string>
#include <vector>

#include "import/run/runsummary.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// What a run did, in a few words to be seen beside the list of jobs.
struct RunResult {
    struct Figure {
        std::string label, number;
        bool remarkable = false;  ///< something to look into
    };
    std::string heading;  ///< the job, how it ended, and how long it took
    std::vector<Figure> figures;
    bool good = true;

    /// The run never got as far as reading: what stopped it has been told, and there is nothing else to tell.
    [[nodiscard]] bool empty() const { return figures.empty(); }
    /// All of it as one line: "Job: Klar, 3,2 s. Lästa poster 12, ...".
    [[nodiscard]] std::string line() const;
};

RunResult runResult(LanguageTexts& texts, const Locale& locale, const std::string& job, const RunSummary& summary,
                    double seconds);

}  // namespace kolmera
