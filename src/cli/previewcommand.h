#pragma once

#include "cli/changeoutput.h"
#include "cli/jobsession.h"

namespace kolmera::cli {

struct PreviewArguments : JobArguments {
    bool prepare = false;    ///< run the preparation command
    bool noPrepare = false;  ///< do not; the same as neither, but nothing is said
    ChangeOutput output;
};

/// `preview JOB --data DIR [--empty] [--strict|--force] [--locale sv|en] [--prepare|--no-prepare] [--json]
/// [--save FILE]`: what `run` would do, with the exit codes of `run`. Nothing of it stays. With --json only JSON goes
/// to the output.
int previewCommand(const PreviewArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
