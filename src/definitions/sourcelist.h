#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "definitions/maskfile.h"
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

/// After how many bytes the records of a sample repeat, see `repeatedLength`; 0: it does not seem to.
std::size_t repeatedLengthOf(const std::filesystem::path& sample, CodePage page);

/// The first records of a price file, at most `count`: the fields of lines and columns, in UTF-8, or the bytes of
/// records of fixed length, which are cut later.
struct SampleRecords {
    std::vector<std::vector<std::string>> fields;  ///< "F", "T"
    std::vector<std::string> bytes;                ///< "P"

    [[nodiscard]] std::size_t size() const { return fields.size() + bytes.size(); }
};
SampleRecords recordsOf(const std::filesystem::path& sample, const Mask& mask, std::size_t count);
/// The bytes of a piece, fewer behind the record's end.
std::string_view cut(std::string_view record, Piece piece);
CodePage codePageOf(const Mask& mask);
/// A text in one line: a line feed is shown, other control characters are blanks.
std::string printable(std::string text);

/// What a number box holds: its leading number, 0 to 9999.
int typedNumber(std::string_view text);

}  // namespace kolmera
