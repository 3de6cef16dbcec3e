#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/comparison.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// An article of a price file as a company knows it.
struct NamedArticle {
    std::string_view article, product, name;
};

/// Which articles a comparison shows, and in which order.
struct ComparisonQuery {
    std::string text{};           ///< as typed: all its words have to stand in the row, whatever their case
    std::optional<bool> isNew{};  ///< only the new ones, or only those that are gone
    int sort = 0;                 ///< a column of ComparisonList
    bool descending = false;
};

/// The articles that one price file has and the other lacks, as a list that is named, filtered, sorted and saved. The
/// list keeps 8 bytes a row. Call `show` first. Knows no window.
class ComparisonList {
  public:
    enum Column { kKind, kArticle, kProduct, kName, kColumns };
    using Cells = std::array<std::string, kColumns>;

    ComparisonList(FileComparison& comparison, LanguageTexts& texts, const Locale& locale);

    /// Names the articles that the company knows; `each` gives its articles. Of several alike the first one counts.
    void nameArticles(const std::function<void(const std::function<void(const NamedArticle&)>& take)>& each);
    void show(const ComparisonQuery& query);

    [[nodiscard]] std::int64_t count() const { return static_cast<std::int64_t>(order_.size()); }
    [[nodiscard]] Cells headings() const;
    [[nodiscard]] Cells cells(std::int64_t row);
    /// Cells between tabs, for the clipboard and text files.
    [[nodiscard]] std::string line(const Cells& cells) const;
    /// Writes what is shown as a sheet of a workbook (.xlsx), or as text (UTF-8). The file comes whole or not at all.
    /// Throws PlatformError.
    void save(const std::filesystem::path& file);

  private:
    SqliteConnection& connection_;
    LanguageTexts& texts_;
    Locale locale_;
    std::vector<std::int64_t> order_;
    SqliteStatement article_;
};

}  // namespace kolmera
