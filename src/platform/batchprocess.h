#pragma once

#include <filesystem>
#include <string>

#include "platform/paths.h"

namespace kolmera {

/// Writes the preparation batch file over any old one and starts it. The batch file is the command, CR LF, "DEL " and
/// its own name, CR LF, in Windows-1252. Its lines run one after the other in `folder`, CR dropped:
///  - DEL, COPY, REN, CD and REM (any letter case, also ERASE, RENAME, CHDIR) with Windows paths through `drives`, "*"
///    and "?" in the names of DEL and COPY, switches and "> NUL" passed over;
///  - every other line as a command of /bin/sh, in a shell of its own; so are several commands in one line ("cd a &&
///  b").
/// It runs as a process of its own session, without input, its output on our standard error. It ends whatever its
/// commands do; the only signal of its end is that the batch file is gone. Throws PlatformError (kFileNotFound or
/// kInternal, with the system's text) when it cannot be written or started.
void startBatch(const std::filesystem::path& folder, const std::string& batchName, const std::string& command,
                const DriveMap& drives);

}  // namespace kolmera
