#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// What can be seen of a file without reading it to its end: all of one of up to 3 MB; of a larger one its beginning,
/// its middle and its end, a megabyte each, cut to whole lines. A 0x1A at the very end of the file is left out.
class FileSample {
  public:
    /// Throws PlatformError when the file cannot be read. Of what is no plain file nothing is taken: a look at a pipe
    /// would empty it.
    explicit FileSample(const std::filesystem::path& file);

    [[nodiscard]] bool plainFile() const { return plainFile_; }
    [[nodiscard]] const std::vector<std::string>& pieces() const { return pieces_; }
    [[nodiscard]] std::string_view beginning() const;
    /// The file has no bytes.
    [[nodiscard]] bool empty() const { return beginning().empty(); }

  private:
    bool plainFile_ = false;
    std::vector<std::string> pieces_;
};

/// What the first bytes of a file say that is no text of one byte a character.
enum class Signature {
    None,
    Zip,       ///< also an .xlsx workbook
    Compound,  ///< an .xls workbook, or another Office document
    Pdf,
    Packed,  ///< gzip, 7z, rar
    WebPage,
    Utf16,  ///< by its mark, or by a zero in every other byte
};
Signature signatureOf(std::string_view beginning);

/// The mark that some programs put before UTF-8.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// The bytes beyond ASCII in texts, as UTF-8.
struct Utf8Count {
    std::int64_t letters = 0;  ///< characters of western European texts, in two or three bytes
    std::int64_t other = 0;    ///< other characters
    std::int64_t invalid = 0;  ///< bytes that cannot be UTF-8

    void add(std::string_view bytes);
    /// In the single-byte character sets, "Ã¥" and its like stand in no text of their own.
    [[nodiscard]] bool atLeast(std::int64_t count) const {
        return invalid == 0 && letters >= count && letters >= other;
    }
};

/// How lines end.
struct LineEnds {
    std::int64_t carriageReturns = 0;  ///< CR or CR LF
    std::int64_t lineFeeds = 0;        ///< LF alone, between two records (or behind the last one)
    bool openEnd = false;              ///< a text without line end behind the last one

    /// `isRecord` tells whether the text between two ends is a record of its own.
    void add(std::string_view bytes, const std::function<bool(std::string_view)>& isRecord);
};

}  // namespace kolmera
