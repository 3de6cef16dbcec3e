#pragma once

#include <filesystem>
#include <string_view>

#include "definitions/jobfile.h"
#include "import/run/filefact.h"
#include "import/tradeformats/linelayout.h"
#include "import/tradeformats/suppliercouplings.h"

namespace kolmera {

/// A trade format as it is seen before the run.
struct TradeLook {
    CodePage page;
    Columns supplierCode;
    bool (*hasTexts)(std::string_view line);  ///< texts of the line are stored
    bool (*hasPrice)(std::string_view line);  ///< a price line of the format, damaged ones apart
    bool (*inGroups)(std::string_view line, const Job& job);
    bool readsHeader;  ///< of a header line at the beginning, too
};
extern const TradeLook kEioLook, kRskLook, kFinfoLook;

/// Looks at a file that is going to be read as a trade format, by a job with product groups in upper case. Nothing is
/// read of pipes and devices. Throws PlatformError.
FileFacts lookAtTradeFile(const std::filesystem::path& file, const TradeLook& format, SupplierLookup& suppliers,
                          const Job& job);
/// Looks at the product groups beside a RSK file; a file that is missing or cannot be read has no facts.
FileFacts lookAtGroups(const std::filesystem::path& priceFile);

}  // namespace kolmera
