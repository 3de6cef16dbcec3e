#pragma once

#include <filesystem>
#include <string>

#include "platform/locale.h"

namespace kolmera {

/// Whether a new data folder can be made there: nothing is there yet, or an empty folder.
bool mayBecomeDataFolder(const std::filesystem::path& folder);

// Making a data folder with its first company FTG1.mdb. It shows itself whole or not at all: what is unfinished is
// removed. Throws PlatformError, kDuplicateKey where the folder has something in it already.
void makeNewFolder(const std::filesystem::path& folder, const std::string& companyName);
/// The same with the demo's company, masks, jobs, couplings and price files from the folder `demoFiles`.
void makeDemoFolder(const std::filesystem::path& folder, const std::string& companyName,
                    const std::filesystem::path& demoFiles, const Locale& locale);

}  // namespace kolmera
