#include "history/runlist.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <utility>

#include "history/changetable.h"
#include "lang/keys/runs.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr ModuleKey kHeadings[RunList::kColumns] = {
    text::runs::kStarted, text::runs::kKind, text::runs::kJob,     text::runs::kCompany, text::runs::kPriceFile,
    text::runs::kRecords, text::runs::kNew,  text::runs::kChanged, text::runs::kOutcome, text::runs::kUser};
constexpr ModuleKey kKinds[] = {text::runs::kRun, text::runs::kPreview, text::runs::kUndo};

constexpr struct {
    std::string_view outcome;
    ModuleKey text;
} kOutcomes[] = {{"completed", text::runs::kCompleted},
                 {"done", text::runs::kCompleted},
                 {"done_with_remarks", text::runs::kWithRemarks},
                 {"cancelled", text::runs::kCancelled},
                 {"stopped", text::runs::kStopped}};

}  // namespace

std::optional<std::int64_t> countOf(const RunHeader& run, const char* name) {
    const nlohmann::json counts = nlohmann::json::parse(run.counts, nullptr, false);
    const auto found = counts.find(name);
    if (found == counts.end() || !found->is_number_integer()) return std::nullopt;
    return found->get<std::int64_t>();
}

std::string outcomeText(LanguageTexts& texts, const RunHeader& run) {
    if (run.underWay) return texts.ModulText(text::runs::kUnderWay);
    if (run.ended.empty()) return texts.ModulText(text::runs::kNotEnded);
    for (const auto& known : kOutcomes) {
        if (known.outcome == run.outcome) return texts.ModulText(known.text);
    }
    return run.outcome;
}

std::string RunList::companyOf(const RunHeader& run) {
    return run.companyName.empty() ? run.companyFile : run.companyName;
}

void RunList::fill(std::vector<RunHeader> runs) {
    runs_ = std::move(runs);
    std::ranges::stable_sort(runs_, std::greater(), &RunHeader::started);
    companies_.clear();
    for (const RunHeader& run : runs_) {
        if (std::ranges::find(companies_, companyOf(run)) == companies_.end()) companies_.push_back(companyOf(run));
    }
    std::ranges::sort(companies_, [](const std::string& a, const std::string& b) { return compareSwedish(a, b) < 0; });
    choose(std::ranges::find(companies_, company_) == companies_.end() ? std::string() : company_);
}

void RunList::choose(const std::string& company) {
    company_ = company;
    shown_.clear();
    for (std::size_t place = 0; place < runs_.size(); ++place) {
        if (company.empty() || companyOf(runs_[place]) == company) shown_.push_back(place);
    }
}

RunList::Cells RunList::headings() const {
    Cells cells;
    for (std::size_t column = 0; column < cells.size(); ++column) cells[column] = texts_.ModulText(kHeadings[column]);
    return cells;
}

RunList::Cells RunList::cells(int row) const {
    const RunHeader& run = this->run(row);
    const auto count = [&](const char* name) {
        const auto number = countOf(run, name);
        return number ? grouped(*number, locale_) : std::string();
    };
    std::string started = run.started;
    std::ranges::replace(started, 'T', ' ');
    return {started,
            texts_.ModulText(kKinds[static_cast<std::size_t>(run.kind)]),
            run.job,
            companyOf(run),
            std::filesystem::path(run.priceFile.path).filename().string(),
            count("records"),
            count("new"),
            count("changed"),
            outcomeOf(run),
            run.user};
}

std::string RunList::outcomeOf(const RunHeader& run) const {
    std::string outcome = outcomeText(texts_, run);
    if (run.kind != RunKind::Undo || run.ended.empty()) return outcome;
    std::int64_t back = 0;
    for (const char* name : {"changed_back", "removed", "brought_back"}) back += countOf(run, name).value_or(0);
    outcome += ", " + texts_.ModulTextMed(text::runs::kRowsBack, grouped(back, locale_));
    const std::int64_t kept = countOf(run, "kept").value_or(0);
    if (kept > 0) outcome += ", " + texts_.ModulTextMed(text::runs::kRowsKept, grouped(kept, locale_));
    return outcome;
}

bool RunList::canUndo(int row) const {
    return row >= 0 && row < count() && run(row).kind != RunKind::Preview && !run(row).underWay;
}

bool RunList::canRemove(int row) const { return row >= 0 && row < count() && !run(row).underWay; }

bool RunList::canCompare(int row) const {
    return row >= 0 && row < count() && run(row).kind == RunKind::Run && run(row).outcome == "completed";
}

}  // namespace kolmera
