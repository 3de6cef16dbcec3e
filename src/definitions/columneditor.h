#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "definitions/property.h"
#include "lang/languagetexts.h"
#include "source/conversion/targetlayout.h"
#include "source/conversion/values.h"
#include "source/rowreader.h"
#include "source/sourcesettings.h"

namespace kolmera {

enum class ColumnProperty {
    From,
    FoundBy,
    Meaning,
    DecimalSign,
    ThousandsSign,
    DateOrder,
    Blanks,
    DropPrefix,
    DropSuffix,
    Zeros,
    Width,
    AddPrefix,
    AddSuffix,
    Fixed,
    Join,
    JoinedBy
};

/// Where the columns of a mask come from and how their values are read, with what comes of the first rows, without its
/// window. One column is shown at a time.
class ColumnEditor {
  public:
    /// Reads the first rows. `target` is what is read of them. Throws PlatformError.
    ColumnEditor(LanguageTexts& texts, const std::filesystem::path& file, SourceSettings settings, TargetLayout target);

    [[nodiscard]] const SourceSettings& settings() const { return settings_; }

    /// The columns of the mask, as a list shows them. None where lines are read as they are.
    [[nodiscard]] std::vector<std::string> columns() const;
    [[nodiscard]] int chosen() const { return chosen_; }
    void chooseColumn(int place);
    /// One behind the last, for what the file has no column for: a fixed value, or another part of one. It is chosen.
    void addColumn();
    [[nodiscard]] bool canAddColumn() const { return hasColumns_; }

    using Property = kolmera::Property<ColumnProperty>;
    [[nodiscard]] const std::vector<Property>& properties() const { return properties_; }
    void choose(ColumnProperty name, int choice);
    void type(ColumnProperty name, const std::string& text);

    using Replacements = std::vector<std::pair<std::string, std::string>>;
    [[nodiscard]] Replacements replacements() const { return rule().replace; }
    /// Rows that replace nothing by nothing are left out.
    void replace(Replacements replacements);

    static constexpr std::size_t kShownRows = 100;
    struct Shown {
        std::uint64_t row;  ///< Row::number
        std::string before, after;
        bool fits;  ///< it means what the column says, and the mask's characters have it all
    };
    [[nodiscard]] const std::vector<Shown>& shown() const { return shown_; }
    /// How many of them do not fit, and why, in words.
    [[nodiscard]] std::string remarks() const;

  private:
    using Name = ColumnProperty;
    struct KeptRow {
        std::uint64_t number;
        std::vector<std::pair<std::string, Cell::Kind>> cells;
    };

    void readRows(const std::filesystem::path& file);
    [[nodiscard]] const SourceColumn* stored() const;
    [[nodiscard]] SourceColumn column() const;
    [[nodiscard]] ValueRule rule() const { return column().rule; }
    /// The chosen column, kept from now on.
    SourceColumn& kept();
    void setPlace(ColumnName& name, int choice, bool byHeading);
    [[nodiscard]] bool isUnique(std::size_t place) const;
    [[nodiscard]] std::string nameOf(const ColumnName& name) const;
    /// The number of its column in the file at hand, 0 for none.
    [[nodiscard]] int placeOf(const ColumnName& name) const;
    void refresh();
    void convert();
    void buildProperties();
    [[nodiscard]] std::vector<std::string> sources(const ColumnName& present) const;
    [[nodiscard]] std::vector<std::string> signs(const std::vector<std::string>& signs) const;
    void add(Name name, ModuleKey caption, std::vector<std::string> choices, int chosen, bool enabled = true);
    void addTyped(Name name, ModuleKey caption, std::string text, bool enabled = true);

    LanguageTexts& texts_;
    SourceSettings settings_;
    TargetLayout target_;
    bool hasColumns_ = false;
    std::vector<KeptRow> rows_;
    std::size_t columnsOfFile_ = 0;
    int chosen_ = 0;
    std::vector<Property> properties_;
    std::vector<Shown> shown_;
    std::size_t unfit_ = 0, lacking_ = 0;
};

}  // namespace kolmera
