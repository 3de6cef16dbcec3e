#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/changefigures.h"
#include "history/changelist.h"
#include "history/recordreader.h"

namespace kolmera {

/// Where a report has the record of a run from.
struct RecordSource {
    RunHeader header;
    std::function<void(const std::function<bool(const RowChange&)>& take)> forEachChange;
    std::function<void(const std::function<bool(const RecordRemark&)>& take)> forEachRemark;
};

/// Something to look at first: a warning, or what the run passed over or took as another value than the file has.
struct Notice {
    bool warning = false;
    std::string name;  ///< in JSON
    std::string text;
    std::vector<std::int64_t> records;  ///< of the price file
};

/// What a window, or paper, says about the record of a run or of a preview: figures, notices, and the list of changes.
/// Order: `read`, then the rest. Knows no window.
class ChangeReport {
  public:
    struct Figure {
        std::string caption, value;
    };
    /// `remarkText` is the text of a remark by its name in the record.
    ChangeReport(RecordSource source, LanguageTexts& texts, const Locale& locale,
                 std::function<std::string(std::string_view remark)> remarkText);

    /// Reads the record. `keepOn` is asked now and then, with the number of changes read; false stops it, and this
    /// answers false. Throws PlatformError.
    bool read(const std::function<bool(std::int64_t changes)>& keepOn);
    /// The changes themselves, to be named: see NetChanges::nameRows, nameProducts.
    [[nodiscard]] NetChanges& net() { return changes_; }
    /// Looks what there is to warn of; see `runWarnings`.
    void warn(const RunHeader* previous);
    /// Puts warnings before the notices that the record itself gives.
    void warn(std::vector<Notice> warnings);

    [[nodiscard]] const RunHeader& header() const { return source_.header; }
    [[nodiscard]] const ChangeFigures& changes() const { return figures_; }
    [[nodiscard]] ChangeList& list() { return *list_; }

    [[nodiscard]] std::string title() const;
    /// When, by whom, of which price file and into which company.
    [[nodiscard]] std::string origin() const;
    [[nodiscard]] std::vector<Figure> figures() const;
    [[nodiscard]] const std::vector<Notice>& notices() const { return notices_; }
    /// A notice as a line of a list.
    [[nodiscard]] std::string lineOf(const Notice& notice) const;

    /// Of the headline price; empty without one.
    [[nodiscard]] std::string histogramCaption() const;
    [[nodiscard]] std::string barCaption(std::size_t bar) const;
    /// The bars in words.
    [[nodiscard]] std::string histogramText() const;

  private:
    void readNotices();
    [[nodiscard]] std::string extreme(const std::optional<PriceFigures::Extreme>& extreme) const;

    RecordSource source_;
    LanguageTexts& texts_;
    Locale locale_;
    std::function<std::string(std::string_view)> remarkText_;
    NetChanges changes_;
    ChangeFigures figures_;
    std::optional<ChangeList> list_;
    std::vector<Notice> notices_;
};

}  // namespace kolmera
