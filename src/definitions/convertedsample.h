#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "definitions/maskfile.h"
#include "platform/descriptor.h"
#include "source/conversion/targetlayout.h"
#include "source/sourcesettings.h"

namespace kolmera {

/// The beginning of a price file as a run hands it to the mask, in a file without a name that lasts as long as this.
struct ConvertedSample {
    Descriptor content;
    std::filesystem::path path;
    std::vector<std::string> headings;  ///< of the columns, in their order
};

/// What a mask reads, with at least so many tab columns; without a mask, all of them as texts.
TargetLayout sampleLayout(const std::optional<WholeMask>& mask, std::size_t columns);

/// The highest number of a column that is named.
std::size_t columnsNamed(const std::vector<SourceColumn>& columns);

/// Of a mask of tab columns, and of a new one, all columns of the source; of another mask its own. Headings that the
/// source has lost are not looked for: the columns come from their old places. Throws PlatformError.
ConvertedSample convertSample(const std::filesystem::path& file, SourceSettings settings,
                              const std::optional<WholeMask>& mask, const std::filesystem::path& dataFolder);

/// Names the columns that a mask of tab columns reads by their headings, where a heading is there once: columns that
/// move then change nothing. What is named already stays.
void bindToHeadings(SourceSettings& settings, const WholeMask& mask);

}  // namespace kolmera
