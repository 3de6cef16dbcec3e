#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "platform/descriptor.h"

namespace kolmera {

/// One field of a fixed record: bytes counted from 0.
struct RecordField {
    std::string_view name;
    int offset;
    int width;
};

/// The description of a record as a table of fields. Each file's table stands once, beside the code that owns it.
struct RecordLayout {
    std::string_view file;  ///< file name in the data folder, for messages
    int length;             ///< bytes of a record
    std::span<const RecordField> fields;
    bool crLf;  ///< the last field is the record end CR LF
};

/// True when the fields fill the record without gap or overlap; for static_assert.
consteval bool fillsRecord(std::span<const RecordField> fields, int length) {
    int next = 0;
    for (const RecordField& field : fields) {
        if (field.offset != next || field.width <= 0) return false;
        next += field.width;
    }
    return next == length;
}

/// The field of that name; a misspelt name does not compile.
consteval RecordField field(std::span<const RecordField> fields, std::string_view name) {
    for (const RecordField& candidate : fields) {
        if (candidate.name == name) return candidate;
    }
    throw "no such field";
}

/// The bytes of one record (Windows-1252). A new record is blank; `crLf` layouts end in CR LF.
class Record {
  public:
    explicit Record(const RecordLayout& layout);  ///< blanks, and NUL in fields whose name begins with "reserved"
    Record(const RecordLayout& layout, std::string bytes);

    /// UTF-8 without blanks and NUL at both ends.
    [[nodiscard]] std::string text(RecordField field) const;
    /// The leading number of the trimmed text, rounded half to even, 0 when there is none ("007" and "7  " are 7).
    [[nodiscard]] int number(RecordField field) const;
    /// Left-aligned, padded with blanks, cut to the width.
    void setText(RecordField field, std::string_view utf8);
    /// Decimal digits, zero-padded to the width. Throws kTextTooLong for a negative number and one with more digits.
    void setNumber(RecordField field, int number);
    [[nodiscard]] const std::string& bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

/// A random-access file of fixed-length records numbered from 1, as the suite keeps its settings and definitions.
/// The name is found without regard to letter case. Open, use and close within one operation; there is no locking.
/// Errors are PlatformError with the file's name and the system's text.
class RecordFile {
  public:
    /// Both create a missing file empty. Where the folder cannot be written, it reads as empty in mode Read and is an
    /// error in mode ReadWrite; a folder that does not exist is an error in both.
    enum class Mode { Read, ReadWrite };

    RecordFile(const std::filesystem::path& file, const RecordLayout& layout, Mode mode = Mode::ReadWrite);
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    /// Whole records in the file (length / record length; a partial record at the end is ignored).
    [[nodiscard]] int count() const;
    /// Record n; one beyond the end reads as blanks.
    [[nodiscard]] Record read(int number) const;
    /// Leaves all other records as they are, and a partial one at the end. `number` is 1 or more.
    void write(int number, const Record& record);
    /// Writes behind the last whole record, over a partial one, and returns the new number.
    int append(const Record& record);

  private:
    Descriptor descriptor_;  ///< none for a missing file that cannot be made
    const RecordLayout& layout_;
};

/// Rewrites a file: `keep` sees every record with its number, may change it, and says whether it stays. The kept
/// records go to BUFFER.TXT in the file's folder (begun empty), which is synced and then renamed over the file, so
/// that no moment exists in which the data is only in the buffer. Numbers behind a removed record move down by one.
/// The bytes of a partial record at the end stay at the end. Returns the number of records removed. On an error, of
/// `keep` too, the old file stays as it was and the buffer is removed.
int rewriteRecords(const std::filesystem::path& file, const RecordLayout& layout,
                   const std::function<bool(int number, Record& record)>& keep);

}  // namespace kolmera
