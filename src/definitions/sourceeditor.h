#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "definitions/property.h"
#include "lang/languagetexts.h"
#include "source/detection/detection.h"
#include "source/sourcesettings.h"

namespace kolmera {

enum class SourceProperty {
    Kind,
    Member,
    Characters,
    Delimiter,
    Quote,
    Length,
    Starts,
    Sheet,
    Record,
    Skip,
    Headings,
    DecimalSign,
    ThousandsSign,
    DateOrder
};

/// What a price file is, as it was found and as the user corrects it, without its window. `detect` first, and after
/// each change what is shown is read anew.
class SourceEditor {
  public:
    /// `stored` is what the job keeps already, which then counts as said by the user.
    SourceEditor(LanguageTexts& texts, std::filesystem::path file, const std::optional<SourceSettings>& stored);

    /// Looks at the file. False when it cannot be read: `error` says why.
    bool detect();
    [[nodiscard]] const std::string& error() const { return error_; }
    [[nodiscard]] const SourceFormat& format() const { return found_.format; }
    [[nodiscard]] const std::filesystem::path& file() const { return file_; }
    /// What the job is to keep: the format, and beside it what it keeps of columns and rows.
    [[nodiscard]] SourceSettings settings() const;
    void takeColumns(std::vector<SourceColumn> columns) { columns_ = std::move(columns); }
    void takeLeftOut(std::vector<LeftOutRows> leaveOut) { leaveOut_ = std::move(leaveOut); }
    /// The file is one that a mask may read as it is: fixed positions or tabs, in a set of one byte a character.
    /// Nothing is to be asked of the user then.
    [[nodiscard]] bool maskMayReadIt() const;
    [[nodiscard]] std::string words() const;  ///< what was found, in a sentence

    using Property = kolmera::Property<SourceProperty>;
    /// Those that the kind of file has.
    [[nodiscard]] const std::vector<Property>& properties() const { return properties_; }
    void choose(Property::Name name, int choice);
    void chooseCharacters(CharacterSet characters);
    void type(Property::Name name, const std::string& text);

    static constexpr std::size_t kShownRows = 100;
    [[nodiscard]] const std::vector<SampleRow>& rows() const { return rows_; }
    [[nodiscard]] std::size_t columns() const;
    [[nodiscard]] std::vector<std::string> headings() const;  ///< none where the file has none

    /// Where the character set is not sure: the likeliest three, each with lines in which they differ.
    struct Decoding {
        CharacterSet characters;
        std::string name;
        std::vector<std::string> lines;
    };
    [[nodiscard]] const std::vector<Decoding>& decodings() const { return decodings_; }

  private:
    using Name = Property::Name;

    void keep(const SourceFormat& format);
    void forget();
    void apply();
    void readRows();
    void readDecodings();
    [[nodiscard]] bool isAscii() const;  ///< the rows that are shown
    [[nodiscard]] std::string aboutHeadings() const;
    void buildProperties();
    [[nodiscard]] std::vector<std::string> memberChoices() const;
    void add(Name name, ModuleKey caption, double confidence, std::vector<std::string> choices, int chosen);
    void addTyped(Name name, ModuleKey caption, double confidence, std::string text);
    void addTextProperties();
    [[nodiscard]] std::vector<std::string> names(const std::vector<std::string>& signs) const;

    LanguageTexts& texts_;
    std::filesystem::path file_;
    std::vector<SourceColumn> columns_;
    std::vector<LeftOutRows> leaveOut_;
    KnownOfSource known_;
    struct Said {
        std::optional<std::vector<std::size_t>> starts;
        std::optional<std::uint64_t> skip;
        std::optional<bool> headings;
        std::optional<char> decimalSign;
        std::optional<std::string> thousandsSign;
        std::optional<DateOrder> dateOrder;
    };
    Said said_;
    Detection found_;
    std::vector<Property> properties_;
    std::vector<SampleRow> rows_;
    std::vector<Decoding> decodings_;
    std::string error_;
};

}  // namespace kolmera
