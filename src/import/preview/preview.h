#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "history/recordreader.h"
#include "import/run/importcontext.h"
#include "import/run/runsummary.h"
#include "platform/privatefolder.h"

namespace kolmera {

struct PreviewOptions {
    bool emptyTables = false;
    bool runsCommand = false;  ///< the preparation command is carried out; else the price file is taken as it is
    /// The preview is part of a run, which has prepared the file and asked about it.
    bool withinRun = false;
};

/// What a run would do.
struct Preview {
    RunSummary summary;
    std::vector<std::string> told;          ///< what the run would tell at its end
    std::string commandLeftOut;             ///< the preparation command, where the job has one that was not carried out
    std::unique_ptr<PrivateFolder> folder;  ///< holds the record
    std::unique_ptr<RecordReader> record;   ///< of the changes; none where the run did not reach its company
};

/// Carries out the current job to its end on a private copy of its company: the same code as `Utför`, but nothing of it
/// stays, nothing is locked and nobody else sees anything. What stops a run stops a preview, and is told on the port of
/// `context`, as is that there is no room for the copy.
Preview previewRun(ImportContext& context, std::string_view jobText, const PreviewOptions& options);

}  // namespace kolmera
