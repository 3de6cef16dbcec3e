#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "history/recordreader.h"
#include "platform/descriptor.h"
#include "platform/encodings.h"
#include "source/sourceformat.h"

struct stat;

namespace kolmera {

/// The text of a price file around a record.
struct FileExcerpt {
    enum class File {
        Same,     ///< as the run read it, byte for byte
        Changed,  ///< other bytes: the record may stand elsewhere now
        Missing,  ///< gone, or not to be read
        Shorter,  ///< it ends before the record does
    };
    File file = File::Missing;
    std::string before, record, after;  ///< UTF-8, lines that end with LF; cells of a source between tabs
};

/// The price file of a run as it is now, in the characters in which the run read it. Whether its bytes are those that
/// were read is looked at once, as long as nobody touches the file.
class RecordedPriceFile {
  public:
    /// `source`: the rows of such a file were converted, and records have the numbers of its rows.
    RecordedPriceFile(RecordedFile file, CodePage codePage, std::optional<SourceFormat> source = {})
        : recorded_(std::move(file)), codePage_(codePage), source_(std::move(source)) {}

    [[nodiscard]] const RecordedFile& recorded() const { return recorded_; }
    FileExcerpt excerpt(const RecordPlace& place);

  private:
    bool isAsRecorded(const Descriptor& file, const struct stat& now);

    void showRows(std::int64_t record, FileExcerpt& excerpt) const;

    RecordedFile recorded_;
    CodePage codePage_;
    std::optional<SourceFormat> source_;
    std::optional<std::array<std::int64_t, 6>> looked_;  ///< what the system tells of the file that was looked at
    bool same_ = false;
};

}  // namespace kolmera
