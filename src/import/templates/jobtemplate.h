#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "definitions/joboptions.h"
#include "definitions/supplierlist.h"
#include "import/run/runcounts.h"

namespace kolmera {

/// A job to be given away: with its mask, source, couplings and limits. Its company and its command stay at home.
struct JobTemplate {
    RunDefinition definition;
    Limits limits;
    std::map<std::string, std::string> supplierNames;  ///< of the numbers in it, where it was made; "" is not known
};

/// The template of a stored job; `suppliers` are those of its company.
JobTemplate templateOf(const std::filesystem::path& dataFolder, const Job& job,
                       const std::vector<SupplierRow>& suppliers);
/// Whether it can be stored: nobody has looked at a template that was made elsewhere.
bool isSound(const JobTemplate& made);

/// Writes it as JSON: what `definitionText` writes, and "kolmeraTemplate" (1), "supplierNames", "limits". Throws
/// PlatformError.
void writeTemplate(const JobTemplate& made, const std::filesystem::path& file);
/// Nothing for a file that is no sound template. Throws PlatformError when it cannot be read.
std::optional<JobTemplate> readTemplate(const std::filesystem::path& file);

}  // namespace kolmera
