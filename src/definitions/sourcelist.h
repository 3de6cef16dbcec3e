#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "platform/encodings.h"

namespace kolmera {

/// A piece of a fixed-length record: first byte (from 1) and number of bytes.
struct Piece {
    int FrånPos = 0;
    int Längd = 0;
};

/// A field of the sample price file. Its source number is its place in the list, from 1.
struct SourceField {
    std::string text;  ///< number, ".", a tab, the beginning of the contents
    Piece piece{};     ///< fixed length only
};

/// The fields that the first record of a price file is cut into, in the three structures; at most as many as a relation
/// can number. They throw PlatformError when the file cannot be read.
using SourceFields = std::vector<SourceField>;
inline constexpr int kMostSources = 999;  ///< three digits in PRISMPOS.TXT

/// "F": the first `lines` lines; those that the file does not have are empty.
SourceFields linesOf(const std::filesystem::path& sample, int lines, CodePage page);
/// "T": the columns of the first line.
struct SourceColumns {
    SourceFields fields;
    int count = 0;  ///< of all columns of the line
};
SourceColumns columnsOf(const std::filesystem::path& sample, CodePage page);
/// "P": the pieces of the first record, then the rest behind the last of them.
SourceFields piecesOf(const std::filesystem::path& sample, int length, std::span<const Piece> pieces, CodePage page);

/// What a number box holds: its leading number, 0 to 9999.
int typedNumber(std::string_view text);

}  // namespace kolmera
