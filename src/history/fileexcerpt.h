#pragma once

#include <string>

#include "history/recordreader.h"

namespace kolmera {

/// The text of a price file around a record.
struct FileExcerpt {
    enum class File {
        Same,     ///< as the run read it, by size and time
        Changed,  ///< another size or time: the record may stand elsewhere now
        Missing,  ///< gone, or not to be read
        Shorter,  ///< it ends before the record does
    };
    File file = File::Missing;
    std::string before, record, after;  ///< UTF-8, lines that end with LF
};

FileExcerpt excerptOf(const RecordedFile& file, const RecordPlace& place);

}  // namespace kolmera
