#pragma once

#include <filesystem>
#include <string>

#include "platform/paths.h"

namespace kolmera {

/// Writes the preparation batch file and starts it: its lines run one after the other with /bin/sh in `folder`, CR
/// dropped, `DEL name` removing a file, `COPY a b`, `REN a b` and `CD folder` as far as a preparation needs. The
/// batch file is the command, CR LF, "DEL " and its own name, CR LF, in Windows-1252. It runs as a process of its own;
/// the only signal of its end is that the batch file is gone. Throws PlatformError (kFileNotFound or kInternal, with
/// the system's text) when it cannot be written or started.
void startBatch(const std::filesystem::path& folder, const std::string& batchName, const std::string& command,
                const DriveMap& drives);

}  // namespace kolmera
