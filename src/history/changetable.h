#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <span>
#include <string>

#include "history/changelist.h"

namespace kolmera {

/// A whole number with its thousands apart, as users write it.
std::string grouped(std::int64_t number, const Locale& locale);
/// "+2,5 %"; small ones with two decimals.
std::string percentText(double percent, const Locale& locale);

/// Cells between tabs. A cell that a spreadsheet program would take for a formula gets an apostrophe.
std::string tabbedLine(std::span<const std::string> cells, const Locale& locale);

/// The rows of a list of changes as users read them, on the screen, on paper and in files.
class ChangeTable {
  public:
    enum Column { kProduct, kName, kColumn, kBefore, kAfter, kPercent, kKind, kRecord, kColumns };
    using Cells = std::array<std::string, kColumns>;
    /// Asked now and then with the number of rows written; false stops it.
    using KeepOn = std::function<bool(std::int64_t rows)>;

    ChangeTable(ChangeList& list, LanguageTexts& texts, const Locale& locale);

    [[nodiscard]] static ChangeQuery::Sort sortOf(int column);
    [[nodiscard]] Cells headings() const;
    /// Of a group's heading: what the group is about, and how many changes it has.
    [[nodiscard]] Cells cells(const ChangeRow& row) const;

    [[nodiscard]] std::string line(const Cells& cells) const { return tabbedLine(cells, locale_); }

    /// Every row of the list, in its order: false when it was stopped. Throws PlatformError.
    bool forEach(const std::function<void(const ChangeRow&)>& take, const KeepOn& keepOn) const;
    /// Writes the list as a sheet of a workbook (.xlsx), or as text (UTF-8); headings of groups are left out. The file
    /// comes whole or not at all.
    bool save(const std::filesystem::path& file, const KeepOn& keepOn) const;

  private:
    bool saveText(const std::filesystem::path& file, const KeepOn& keepOn) const;
    bool saveSheet(const std::filesystem::path& file, const KeepOn& keepOn) const;

    ChangeList& list_;
    LanguageTexts& texts_;
    Locale locale_;
    std::array<std::string, 3> kinds_;  ///< by ChangeKind
    std::string fromZero_;
};

}  // namespace kolmera
