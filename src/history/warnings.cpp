#include "history/warnings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>

#include "db/productcolumns.h"
#include "history/runlist.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr const char* kProducts = "Produkt";
constexpr double kAlmostAll = 0.9;
constexpr std::int64_t kFewRecords = 3;  ///< so few say nothing of all
constexpr std::int64_t kManySuppliers = 10;

bool readAsOneLine(const RunHeader& run) {
    const nlohmann::json counts = nlohmann::json::parse(run.counts, nullptr, false);
    const auto found = counts.find("read_as_one_line");
    return found != counts.end() && *found == true;
}

void sortOut(std::vector<std::int64_t>& records) {
    std::erase(records, 0);
    std::ranges::sort(records);
    records.erase(std::unique(records.begin(), records.end()), records.end());
}

bool isLetter(unsigned char c) { return std::isalpha(c) != 0 || c >= 0x80; }

// What the letters å ä ö Å Ä Ö become when the other code page, or UTF-8, is read.
constexpr std::string_view kSwedish[] = {"å", "ä", "ö", "Å", "Ä", "Ö", "é"};
constexpr std::string_view kMisread[] = {"†", "„", "”",  "Ž",  "™",  "Õ",  "õ",  "÷", "┼",
                                         "─", "Í", "Ã¥", "Ã¤", "Ã¶", "Ã…", "Ã„", "Ã–"};

/// How often the texts have such a letter within a word.
std::int64_t within(std::string_view text, std::string_view letter) {
    std::int64_t count = 0;
    for (std::size_t at = text.find(letter); at != std::string_view::npos; at = text.find(letter, at + letter.size())) {
        const std::size_t end = at + letter.size();
        const bool before = at > 0 && isLetter(static_cast<unsigned char>(text[at - 1]));
        const bool after = end < text.size() && isLetter(static_cast<unsigned char>(text[end]));
        if (before && after) ++count;
    }
    return count;
}

bool isTenfold(double before, double after) {
    if (before == 0 || after == 0 || (before < 0) != (after < 0)) return false;
    const double power = std::abs(std::log10(after / before));
    const double nearest = std::round(power);
    constexpr double kAbout = 0.02;  // 5 per cent
    return nearest >= 1 && nearest <= 3 && std::abs(power - nearest) <= kAbout;
}

class Warner {
  public:
    Warner(const RunHeader& run, NetChanges& changes, const ChangeFigures& figures, const RunHeader* previous)
        : run_(run), changes_(changes), figures_(figures), previous_(previous) {}

    std::vector<RunWarning> run(
        const std::function<void(const std::function<bool(const RecordRemark&)>& take)>& forEachRemark) {
        lookAtFile();
        lookAtCells();
        forEachRemark([this](const RecordRemark& remark) {
            hear(remark);
            return true;
        });
        lookAtRemarks();
        std::ranges::stable_sort(warnings_, {}, &RunWarning::warning);
        return std::move(warnings_);
    }

  private:
    struct Column {
        std::int64_t remarks = 0;
        std::vector<std::int64_t> records;
        bool heading = false;  ///< the first record has a word there
    };

    void add(Warning warning, std::string detail = {}, std::vector<std::int64_t> records = {}) {
        sortOut(records);
        warnings_.push_back({warning, std::move(detail), std::move(records)});
    }
    void lookAtFile();
    void lookAtCells();
    void lookAt(const SqliteStatement& cells);
    void lookAtText(std::string_view text, std::int64_t record);
    void hear(const RecordRemark& remark);
    void lookAtRemarks();

    const RunHeader& run_;
    NetChanges& changes_;
    const ChangeFigures& figures_;
    const RunHeader* previous_;
    std::vector<RunWarning> warnings_;

    std::vector<std::int64_t> zeros_, jumps_, suppliers_, twice_, strange_;
    std::int64_t swedish_ = 0, misread_ = 0;
    std::string strangeLetters_;
    std::map<std::string, Column> columns_;
    std::int64_t unmatched_ = 0;
    std::vector<std::int64_t> unmatchedRecords_;
};

void Warner::lookAtFile() {
    if (readAsOneLine(run_)) add(Warning::OneLine);
    if (previous_ == nullptr) return;
    const RecordedFile& now = run_.priceFile;
    const RecordedFile& then = previous_->priceFile;
    std::string when = previous_->started;
    std::ranges::replace(when, 'T', ' ');
    if (!now.sha256.empty() && now.sha256 == then.sha256) {
        add(Warning::SameFile, when);
    } else if (!now.modified.empty() && now.modified < then.modified) {
        add(Warning::OlderFile, when);
    }
    const auto before = countOf(*previous_, "records");
    if (figures_.records && before && *figures_.records * 2 < *before) {
        add(Warning::FewerRecords, fmt::format("{}", *before));
    }
}

void Warner::lookAtCells() {
    SqliteStatement cells(changes_.connection(),
                          fmt::format("SELECT cell.n, before, after, cell.record, again, row.tab, row.kind FROM cell "
                                      "JOIN row ON row.n = cell.n >> {}",
                                      NetChanges::kColumnBits));
    while (cells.step()) lookAt(cells);
    if (!zeros_.empty()) add(Warning::ZeroPrices, {}, std::move(zeros_));
    if (!jumps_.empty()) add(Warning::Jumps, {}, std::move(jumps_));
    if (!twice_.empty()) add(Warning::Twice, {}, std::move(twice_));
    const PriceFigures* price = figures_.headline();
    if (price != nullptr && price->median && price->raised + price->lowered >= kFewRecords &&
        std::abs(*price->median) > kMedianPercent) {
        add(Warning::MedianChange);
    }
    const auto changed = static_cast<std::int64_t>(suppliers_.size());
    if (changed >= kManySuppliers && changed * 10 >= figures_.changedProducts) {
        add(Warning::NewSuppliers, {}, std::move(suppliers_));
    }
    if (misread_ >= kFewRecords && misread_ > swedish_) {
        add(Warning::Characters, strangeLetters_, std::move(strange_));
    }
}

void Warner::lookAt(const SqliteStatement& cells) {
    const int column = NetChanges::columnOf(cells.integer(0));
    const std::string& table = changes_.tables()[static_cast<std::size_t>(cells.integer(5))].name;
    const auto kind = static_cast<ChangeKind>(cells.integer(6));
    if (kind == ChangeKind::Removed) return;
    const std::int64_t record = cells.integer(3);
    Value before;
    Value after;
    cells.read(1, changes_.typeOf(static_cast<int>(cells.integer(5)), column), before);
    cells.read(2, changes_.typeOf(static_cast<int>(cells.integer(5)), column), after);
    if (std::holds_alternative<std::string>(after)) lookAtText(textOf(after), record);
    if (isPrice(table, column)) {
        const double* const was = std::get_if<double>(&before);
        const double* const is = std::get_if<double>(&after);
        const double from = was != nullptr ? *was : 0;
        const double to = is != nullptr ? *is : 0;
        if (from != 0 && to == 0) zeros_.push_back(record);
        if (isTenfold(from, to)) jumps_.push_back(record);
        if (!cells.isNull(4)) twice_.insert(twice_.end(), {cells.integer(4), record});
    }
    const bool supplier = table == kProducts && column == ordinal(kProdukt, "Leverantör");
    if (supplier && kind == ChangeKind::Changed && !textOf(before).empty()) suppliers_.push_back(record);
}

void Warner::lookAtText(std::string_view text, std::int64_t record) {
    if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) return;
    for (const std::string_view letter : kSwedish) swedish_ += within(text, letter);
    for (const std::string_view letter : kMisread) {
        const std::int64_t count = within(text, letter);
        if (count == 0) continue;
        misread_ += count;
        strange_.push_back(record);
        if (strangeLetters_.find(letter) == std::string::npos) {
            strangeLetters_.append(strangeLetters_.empty() ? "" : " ").append(letter);
        }
    }
}

void Warner::hear(const RecordRemark& remark) {
    if (remark.kind == "no_product") {
        ++unmatched_;
        unmatchedRecords_.push_back(remark.record);
    }
    if (remark.kind != "not_numbers") return;
    Column& column = columns_[remark.column];
    ++column.remarks;
    column.records.push_back(remark.record);
    const bool word =
        std::ranges::any_of(remark.text, [](char c) { return isLetter(static_cast<unsigned char>(c)); }) &&
        remark.text.find_first_of("0123456789") == std::string::npos;
    if (remark.record == 1 && word) column.heading = true;
}

void Warner::lookAtRemarks() {
    const auto records = static_cast<double>(figures_.records.value_or(0));
    const bool many = figures_.records && *figures_.records >= kFewRecords;
    bool heading = false;
    for (auto& [name, column] : columns_) {
        if (many && static_cast<double>(column.remarks) >= kAlmostAll * records) {
            add(Warning::NeverNumber, name, std::move(column.records));
        } else if (column.heading && column.remarks * 2 <= figures_.records.value_or(2)) {
            heading = true;
        }
    }
    if (heading) add(Warning::Heading, {}, {1});
    if (many && static_cast<double>(unmatched_) > records / 2) {
        add(Warning::MostUnmatched, {}, std::move(unmatchedRecords_));
    }
}

}  // namespace

std::vector<RunWarning> runWarnings(
    const RunHeader& run, NetChanges& changes, const ChangeFigures& figures,
    const std::function<void(const std::function<bool(const RecordRemark&)>& take)>& forEachRemark,
    const RunHeader* previous) {
    if (run.kind == RunKind::Undo) return {};
    return Warner(run, changes, figures, previous).run(forEachRemark);
}

const RunHeader* previousRun(const std::vector<RunHeader>& runs, const RunHeader& run) {
    const auto found = std::ranges::find_if(runs, [&](const RunHeader& other) {
        // Within a second IDs count on. A preview's is of another folder; the runs that it is compared with were there.
        const bool sameSecond = other.started == run.started && (run.kind == RunKind::Preview || other.id < run.id);
        return (other.started < run.started || sameSecond) && other.kind == RunKind::Run &&
               other.outcome == "completed" && other.job == run.job && equalNoCase(other.companyFile, run.companyFile);
    });
    return found == runs.end() ? nullptr : &*found;
}

}  // namespace kolmera
