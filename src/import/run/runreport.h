#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "lang/keys/remark.h"
#include "lang/keys/source.h"
#include "platform/attempt.h"

namespace kolmera {

/// What a run meets in its price file beside what it takes as it stands.
enum class Remark {
    NotNumber,        ///< a value that is no number and was read as 0
    MissingPrice,     ///< a price that is missing, and was written as 0
    UnevenRecord,     ///< a mask's record that has not the fields of the mask: some are empty or another record's
    DamagedPrice,     ///< trade formats: a line that is passed over, because its price cannot be read
    DamagedQuantity,  ///< FINFO: a package that is left as it was, because its quantity cannot be read
    NotSaved,         ///< a record that the database did not take
    EmptyKey,         ///< a record without search key, written to the product whose own is empty
    UncoupledCode,    ///< trade formats: a line of a supplier code that is not coupled
    OutsideGroups,    ///< FINFO: a line outside the job's product groups
    NoProduct,        ///< a record whose product does not exist, and is not to be made
    NoKey,            ///< a record without search key or product number
    OtherLine,        ///< trade formats: a line of a kind that is not read
    // Of a source that is turned into what a mask reads; see source/conversion/sourcenotes.h.
    UnfitValue,         ///< a value that is not what its column says
    LackingCharacters,  ///< a value with characters that the mask's character set lacks
    CutValue,           ///< a value that is longer than its place in the record
    MalformedText,      ///< bytes that are no characters
    ErrorValue,         ///< a cell that holds an error
    BreakInValue,       ///< a value with line ends or tabs
    StrayQuote,         ///< quotes that stand where none should
    LeftOutRow,         ///< a row that the settings leave out
};

struct RemarkKind {
    Remark remark;
    std::string_view name;  ///< in the summary file
    ModuleKey text;
    bool asItStands;        ///< the file was taken as it stands: nothing to look into
    bool skips;             ///< the record wrote nothing
    bool rejects;           ///< the record may have to be corrected: it belongs in a file of rejected records
    bool ofSource = false;  ///< only a job with a source has it
};

/// One row a remark, in their order. What the job leaves out by its product groups is no reject, and neither is a line
/// that nobody reads.
inline constexpr RemarkKind kRemarks[] = {
    {Remark::NotNumber, "not_numbers", text::remark::kNotNumbers, false, false, true},
    {Remark::MissingPrice, "missing_prices", text::remark::kMissingPrices, false, false, true},
    {Remark::UnevenRecord, "uneven_records", text::remark::kUnevenRecords, false, false, true},
    {Remark::DamagedPrice, "damaged_prices", text::remark::kDamagedPrices, false, true, true},
    {Remark::DamagedQuantity, "damaged_quantities", text::remark::kDamagedQuantities, false, false, true},
    {Remark::NotSaved, "not_saved", text::remark::kNotSaved, false, true, true},
    {Remark::EmptyKey, "empty_keys", text::remark::kEmptyKeys, true, false, false},
    {Remark::UncoupledCode, "uncoupled_codes", text::remark::kUncoupledCodes, true, true, true},
    {Remark::OutsideGroups, "outside_groups", text::remark::kOutsideGroups, true, true, false},
    {Remark::NoProduct, "no_product", text::remark::kNoProduct, true, true, true},
    {Remark::NoKey, "no_key", text::remark::kNoKey, true, true, true},
    {Remark::OtherLine, "other_lines", text::remark::kOtherLines, true, true, false},
    {Remark::UnfitValue, "unfit_values", text::source::kUnfitValues, false, false, true, true},
    {Remark::LackingCharacters, "lacking_characters", text::source::kLackingCharacters, false, false, true, true},
    {Remark::CutValue, "cut_values", text::source::kCutValues, false, false, true, true},
    {Remark::MalformedText, "malformed_texts", text::source::kMalformedTexts, false, false, true, true},
    {Remark::ErrorValue, "error_values", text::source::kErrorValues, false, false, true, true},
    {Remark::BreakInValue, "breaks_in_values", text::source::kBreaksInValues, true, false, false, true},
    {Remark::StrayQuote, "stray_quotes", text::source::kStrayQuotes, true, false, false, true},
    {Remark::LeftOutRow, "left_out_rows", text::source::kLeftOutRows, true, false, false, true},
};

/// The kind of a statement that the database refused; its name is in `column`.
inline constexpr std::string_view kFailedStatement = "failed_statements";

/// Whether a remark of this kind makes its record a reject.
bool rejectsRecord(std::string_view kind);

/// Something that a report is told, as it is told.
struct Remarked {
    std::string_view kind;  ///< a name of kRemarks, or kFailedStatement
    std::int64_t record = 0;
    std::string_view product, column, text;  ///< whole, as they stand in the file
};

/// Hears all that a report is told, of which the report keeps only the first.
class RemarkListener {
  public:
    virtual ~RemarkListener() = default;
    /// The record at hand has this search key or product number.
    virtual void about(std::string_view product) = 0;
    virtual void remark(const Remarked& remarked) = 0;
    virtual void failed(const Remarked& remarked, const PlatformError& error) = 0;
};

/// Hears from the steps of an import what happened to the record at hand, counts it, and keeps the first of each kind
/// as examples. Call `at` for each record, `about` as soon as its product is known; the rest only when there is
/// something to tell. Texts of the file are kept short and printable.
class RunReport final : public PassedOver {
  public:
    struct Example {
        std::int64_t record = 0;  ///< record, or line of a trade format, from 1; 0 outside the file
        std::string product;      ///< its number, or the search key of the record
        std::string column;       ///< table and column, or the column of a trade format
        std::string text;         ///< what the file says there
    };
    struct Tally {
        std::int64_t count = 0;
        std::vector<Example> examples;
    };
    /// Statements that failed alike.
    struct Failure {
        std::string statement;
        PlatformError error;  ///< of the first one, as are record and product
        std::int64_t record = 0;
        std::string product;
        std::int64_t count = 0;
    };

    /// The listener has to stay until another one, or nullptr, takes its place.
    void tellTo(RemarkListener* listener) { listener_ = listener; }
    [[nodiscard]] RemarkListener* listener() const { return listener_; }
    void at(std::int64_t record) {
        record_ = record;
        product_.clear();
    }
    void about(std::string_view product) {
        product_.assign(product);
        if (listener_ != nullptr) listener_->about(product);
    }

    void remark(Remark remark, std::string_view column = {}, std::string_view text = {});
    /// So many of a kind beside those that were told.
    void more(Remark remark, std::int64_t count) { tallies_[static_cast<std::size_t>(remark)].count += count; }
    /// A value of the price file that is written as 0. `source` is its place in the record, from 1: a value that goes
    /// to several columns is one value. 0 when it goes to one.
    void zero(Remark remark, int source, std::string_view column, std::string_view text);
    /// A line of a supplier code that is not coupled; the codes are counted by name.
    void uncoupled(std::string_view code);
    /// A statement that the database refused.
    void note(std::string_view what, const PlatformError& error) override;

    [[nodiscard]] const Tally& tally(Remark remark) const { return tallies_[static_cast<std::size_t>(remark)]; }
    [[nodiscard]] std::int64_t count(Remark remark) const { return tally(remark).count; }
    [[nodiscard]] std::int64_t skipped() const;  ///< records that wrote nothing, whatever the reason
    [[nodiscard]] std::int64_t failedStatements() const { return failedStatements_; }
    [[nodiscard]] std::int64_t failed() const;  ///< damaged prices and quantities included
    /// Something in the file was not taken as it stands.
    [[nodiscard]] bool hasFaults() const;
    [[nodiscard]] const std::vector<Failure>& failures() const { return failures_; }
    /// Lines by supplier code that is not coupled; what goes beyond a hundred codes is in the tally only.
    [[nodiscard]] const std::map<std::string, std::int64_t, std::less<>>& uncoupledCodes() const { return codes_; }

  private:
    Failure& failureLike(std::string_view what, const PlatformError& error);

    RemarkListener* listener_ = nullptr;
    std::int64_t record_ = 0;
    std::string product_;
    std::array<Tally, std::size(kRemarks)> tallies_;
    std::int64_t zerosOf_ = 0;  ///< the record of `zeroSources_`
    std::vector<int> zeroSources_;
    std::int64_t failedStatements_ = 0;
    std::vector<Failure> failures_;
    std::map<std::string, std::int64_t, std::less<>> codes_;
};

}  // namespace kolmera
