#pragma once

#include <filesystem>

#include "platform/locale.h"

namespace kolmera {

/// Fills a new data folder with the demo: the rows of the company's tables, masks, jobs, couplings and price files of
/// `source` (the folder data/demo of the program). Throws PlatformError.
void fillDemoCompany(const std::filesystem::path& source, const std::filesystem::path& dataFolder,
                     const std::filesystem::path& companyFile, const Locale& locale);

}  // namespace kolmera
