#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

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
    bool crLf;               ///< the last field is the record end CR LF
    bool ownerOnly = false;  ///< a new file is for its owner alone: it holds passwords
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
    /// Left-aligned, padded with blanks. Decomposed letters are composed. Throws, and changes nothing: kTextTooLong for
    /// a text that is longer than the field, kWrongType for one with characters that Windows-1252 lacks.
    void setText(RecordField field, std::string_view utf8);
    /// The same for a text that others see cut: to the width, with "?" for characters that Windows-1252 lacks.
    void setCutText(RecordField field, std::string_view utf8);
    /// Decimal digits, zero-padded to the width. Throws kTextTooLong for a negative number and one with more digits.
    void setNumber(RecordField field, int number);
    [[nodiscard]] const std::string& bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

/// The records of a file, numbered from 1, as the suite keeps its settings and definitions; in memory. A last record
/// that lacks no more than its two last bytes counts and is completed: who edits such a file as text often loses the
/// last line end.
class Records {
  public:
    Records(const RecordLayout& layout, std::string bytes);

    /// Whole records (length / record length; a partial record at the end is ignored).
    [[nodiscard]] int count() const;
    /// Record n; one beyond the end reads as blanks.
    [[nodiscard]] Record read(int number) const;
    /// Leaves all other records as they are, and a partial one at the end. `number` is 1 or more.
    void write(int number, const Record& record);
    /// Writes behind the last whole record, over a partial one, and returns the new number.
    int append(const Record& record);
    /// `keep` sees every record with its number, may change it, and says whether it stays. Numbers behind a removed
    /// record move down by one; a partial record at the end stays there. Returns the number of records removed.
    int keepOnly(const std::function<bool(int number, Record& record)>& keep);

    [[nodiscard]] const std::string& bytes() const { return bytes_; }

  private:
    const RecordLayout* layout_;
    std::string bytes_;
};

}  // namespace kolmera
