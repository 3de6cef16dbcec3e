#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "import/run/runport.h"
#include "import/run/runreport.h"
#include "lang/languagetexts.h"
#include "platform/descriptor.h"
#include "platform/workplaces.h"
#include "source/conversion/rownumbers.h"
#include "source/conversion/sourceconverter.h"

namespace kolmera {

/// Standard input in the place of a price file.
inline constexpr const char* kStandardInput = "-";

/// The price file of a run that is not read as it lies there: what is read instead is in files without names.
struct TakenSource {
    std::filesystem::path original;  ///< as the user named it
    Descriptor kept;                 ///< its bytes, where it is a pipe; else not open
    Descriptor content;              ///< what the run reads, where it was converted; else not open
    std::optional<RowNumbers> rows;  ///< of what was written, line by line or record by record
    std::int64_t rowsPerRecord = 1;
    SourceNotes notes;
    std::optional<SourceSettings> settings;  ///< where it was converted

    /// Where the original's bytes are.
    [[nodiscard]] std::filesystem::path bytes() const { return kept.isOpen() ? pathOf(kept) : original; }
    /// What the run reads.
    [[nodiscard]] std::filesystem::path read() const { return content.isOpen() ? pathOf(content) : bytes(); }
};

/// The bytes of a pipe, or of standard input, in a file without a name. Throws PlatformError.
Descriptor keptBytes(const std::filesystem::path& pipe, const std::vector<WorkPlace>& places,
                     const std::function<bool()>& cancelled);

/// Headings that the source of a job names, and which the file has not.
struct HeadingsChanged {
    HeadingFault fault;
    std::vector<std::string> headings;  ///< of the file at hand
};

/// Converts the price file, unless headings are missing. `progress` is told how far it has come, from 0 to 1. Throws
/// PlatformError.
std::optional<HeadingsChanged> convert(TakenSource& source, const SourceSettings& settings, const TargetLayout& layout,
                                       const std::vector<WorkPlace>& places, const std::function<bool()>& cancelled,
                                       const std::function<void(double)>& progress);

/// What has to be said of them.
std::string headingMessage(LanguageTexts& texts, const HeadingsChanged& changed, const SourceSettings& settings);

/// Tells the report what was not taken as it stands in the source.
void tell(const SourceNotes& notes, RunReport& report);

}  // namespace kolmera
