#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "lang/languagetexts.h"
#include "source/sourcesettings.h"

namespace kolmera {

/// Which rows of a price file are no records, shown on its first thousand, without its window.
class LeftOutEditor {
  public:
    /// Reads the first rows. Throws PlatformError.
    LeftOutEditor(LanguageTexts& texts, const std::filesystem::path& file, SourceSettings settings);

    [[nodiscard]] const std::vector<LeftOutRows>& patterns() const { return settings_.leaveOut; }
    /// "Benämning: Summa*", with how many of the first rows it leaves out.
    [[nodiscard]] std::vector<std::string> lines() const;
    /// What a pattern can be looked for in: any column, then each of the file's.
    [[nodiscard]] std::vector<std::string> columns() const;
    /// `column` is a place among `columns`. An empty pattern would leave out no row; it is not added.
    bool add(int column, const std::string& pattern);
    void remove(int place);
    /// Adds patterns for rows of sums, where the first rows have some. False when there are none.
    bool suggest();

    struct Shown {
        std::uint64_t row;  ///< Row::number
        std::string text;
    };
    [[nodiscard]] const std::vector<Shown>& leftOut() const { return leftOut_; }
    [[nodiscard]] std::string summary() const;

  private:
    static constexpr std::size_t kRows = 1000;
    struct KeptRow {
        std::uint64_t number;
        std::vector<std::string> cells;
    };

    [[nodiscard]] std::vector<const KeptRow*> leftOutBy(const std::vector<LeftOutRows>& patterns) const;
    void refresh();

    LanguageTexts& texts_;
    SourceSettings settings_;
    std::vector<KeptRow> rows_;
    std::size_t columnsOfFile_ = 0;
    std::vector<Shown> leftOut_;
};

}  // namespace kolmera
