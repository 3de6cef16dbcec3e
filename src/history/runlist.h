#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "history/recordreader.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// A count of the run's summary; nothing where its record has none.
std::optional<std::int64_t> countOf(const RunHeader& run, const char* name);

/// How a run ended, or that it did not.
std::string outcomeText(LanguageTexts& texts, const RunHeader& run);

/// The past runs as a list that users read: the newest first, of one company or of all. Knows no window.
class RunList {
  public:
    enum Column { kStarted, kKind, kJob, kCompany, kPriceFile, kRecords, kNew, kChanged, kOutcome, kUser, kColumns };
    using Cells = std::array<std::string, kColumns>;

    RunList(LanguageTexts& texts, const Locale& locale) : texts_(texts), locale_(locale) {}

    /// Takes the heads of the records. The company that was chosen stays chosen while it has runs.
    void fill(std::vector<RunHeader> runs);
    /// The companies that have runs, by the alphabet.
    [[nodiscard]] const std::vector<std::string>& companies() const { return companies_; }
    /// Shows the runs of that company only; empty: of all.
    void choose(const std::string& company);
    [[nodiscard]] const std::string& chosen() const { return company_; }

    [[nodiscard]] int count() const { return static_cast<int>(shown_.size()); }
    [[nodiscard]] const RunHeader& run(int row) const { return runs_[shown_.at(static_cast<std::size_t>(row))]; }
    [[nodiscard]] Cells headings() const;
    [[nodiscard]] Cells cells(int row) const;
    /// Of a run whose record says what it changed; a run that was ended from outside, too, but none that is under way.
    [[nodiscard]] bool canUndo(int row) const;
    /// Of a run that no program is writing.
    [[nodiscard]] bool canRemove(int row) const;
    /// Of a run that read its price file to the end.
    [[nodiscard]] bool canCompare(int row) const;
    /// Of all companies, the newest first.
    [[nodiscard]] const std::vector<RunHeader>& all() const { return runs_; }

  private:
    [[nodiscard]] static std::string companyOf(const RunHeader& run);
    [[nodiscard]] std::string outcomeOf(const RunHeader& run) const;

    LanguageTexts& texts_;
    Locale locale_;
    std::vector<RunHeader> runs_;
    std::vector<std::string> companies_;
    std::string company_;
    std::vector<std::size_t> shown_;
};

}  // namespace kolmera
