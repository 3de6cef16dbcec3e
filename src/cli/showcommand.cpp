#include "cli/showcommand.h"

#include "cli/rejectsoutput.h"
#include "cli/runchoice.h"
#include "cli/session.h"
#include "history/runfolder.h"
#include "history/warnings.h"

namespace kolmera::cli {

int showCommand(const ShowArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    const RunFolder folder(session.state.dataFolder());
    const std::vector<RunHeader> runs = listedRuns(session, folder, surroundings.err);
    const std::optional<RunHeader> run = chosenRun(session, runs, arguments.run, surroundings.err);
    if (!run) return exitcode::kStopped;
    if (!arguments.rejectsFile.empty()) {
        std::string told;
        const bool good = printRejects(session, folder, run->id, arguments.rejectsFile, surroundings, told);
        return good ? exitcode::kDone : exitcode::kStopped;
    }
    return printChanges(session, RecordReader(folder.file(run->id)), previousRun(runs, *run), arguments.output,
                        surroundings);
}

}  // namespace kolmera::cli
