#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "source/rowreader.h"
#include "source/sourceformat.h"

namespace kolmera {

/// What the user has said of a file: detection takes it as given and finds out the rest.
struct KnownOfSource {
    std::optional<SourceKind> kind;
    std::optional<std::string> member;
    std::optional<CharacterSet> characters;
    std::optional<char> delimiter;
    std::optional<char> quote;
    std::optional<std::string> sheet;
    std::optional<std::string> record;
    std::optional<std::uint64_t> length;
};

/// From 0 (a guess) to 1 (it cannot be otherwise; also what was given).
struct SourceConfidence {
    double kind = 0;
    double member = 0;
    double characters = 0;
    double delimiter = 0;
    double quote = 0;
    double sheet = 0;
    double headings = 0;  ///< that there are some, and where; `skip` with them
    double decimalSign = 0;
    double thousandsSign = 0;
    double dateOrder = 0;
};

struct Detection {
    SourceFormat format;
    SourceConfidence confidence;
    /// The character sets that may be meant, the likeliest first; more than one where it is not sure.
    std::vector<CharacterSet> characterSets;
    std::vector<std::string> members;  ///< of a .zip file
    std::vector<std::string> sheets;   ///< of a workbook
};

/// Below it the user should be asked.
inline constexpr double kSureEnough = 0.8;

/// Looks at a price file, of a text at its first 20 MB. Throws PlatformError.
Detection detectSource(const std::filesystem::path& file, const KnownOfSource& known = {},
                       const SourceLimits& limits = {});

/// The first `count` rows of the table, for showing, headings first where there are some (numbers as Row::number).
struct SampleRow {
    std::uint64_t number;
    std::vector<std::string> cells;
};
std::vector<SampleRow> sampleRows(const std::filesystem::path& file, const SourceFormat& format, std::size_t count,
                                  const SourceLimits& limits = {});

}  // namespace kolmera
