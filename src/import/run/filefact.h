#pragma once

#include <string>
#include <vector>

#include "platform/encodings.h"

namespace kolmera {

/// What a price file seems to be, seen before the run.
enum class FileLook {
    Empty,
    Zip,
    Compound,
    Pdf,
    Packed,
    WebPage,
    Utf16,
    Utf8Mark,
    Utf8,
    LineFeeds,      ///< its lines end in LF, which ends no line
    SomeLineFeeds,  ///< some of them do
    NoTabs,         ///< a mask for tabs, a file without
    Drifting,       ///< its records are not as long as the mask says
    NoKeys,         ///< no record has a search key
    OtherNumbers,   ///< its numbers are written as in the other locale
    NotOfFormat,    ///< no line of the trade format
    Uncoupled,      ///< no line of a coupled supplier
    OtherGroups,    ///< no line within the job's product groups
    NotNumbers,     ///< most of its numbers are none, in neither locale
};

/// One respect in which a price file is not what the run expects.
struct FileFact {
    FileLook look{};
    bool garbage = false;  ///< reading would write what nobody meant, not only less than was meant
    std::string example{};
    std::string file{};   ///< the file's name when it is not the price file itself
    CodePage codePage{};  ///< in which the run reads the file
};
using FileFacts = std::vector<FileFact>;

}  // namespace kolmera
