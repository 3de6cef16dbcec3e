#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// Which targets a heading of a price file means. The table of data/headings is built in; rows of RUBRIKER.TSV of the
/// data folder (the same columns, UTF-8) go before it.
class HeadingWords {
  public:
    HeadingWords() = default;
    /// Throws PlatformError for a file that is there and cannot be read; one that is no such table has no rows.
    static HeadingWords read(const std::filesystem::path& dataFolder);

    /// Columns of Produkt by name, or "alt:" and a heading of alternative numbers, the likeliest first.
    [[nodiscard]] std::vector<std::string> targets(std::string_view heading) const;

  private:
    void add(std::string_view table);

    std::map<std::string, std::vector<std::string>, std::less<>> targets_;
};

inline constexpr std::string_view kOwnHeadingWords = "RUBRIKER.TSV";
inline constexpr std::string_view kAlternative = "alt:";
extern const std::string_view kHeadingWordsText;

}  // namespace kolmera
