#include "definitions/jobtable.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

const std::string& textOf(const JobRow& row, JobTable::Column column) {
    const std::array<const std::string*, JobTable::kColumns> texts{&row.job.name, &row.kindText, &row.job.priceFile,
                                                                   &row.fileState};
    return *texts.at(column);
}

}  // namespace

void JobTable::fill(std::vector<JobRow> rows, int JobbNr, std::string_view savedName) {
    rows_ = std::move(rows);
    selected_ = kNoRow;
    applyOrder();
    if (JobbNr >= 1) {
        selected_ = rowOf(JobbNr);
        return;
    }
    const auto saved = std::find_if(rows_.begin(), rows_.end(),
                                    [&](const JobRow& row) { return savedName.empty() || row.job.name == savedName; });
    if (saved != rows_.end()) selected_ = static_cast<int>(saved - rows_.begin());
}

void JobTable::sort(Column column, bool descending) {
    order_ = {column, descending};
    applyOrder();
}

void JobTable::applyOrder() {
    if (!order_) return;
    const int selectedJob = JobbNr();
    std::stable_sort(rows_.begin(), rows_.end(), [this](const JobRow& a, const JobRow& b) {
        const int order = compare(a, b, order_->column);
        return order_->descending ? order > 0 : order < 0;
    });
    selected_ = rowOf(selectedJob);
}

int JobTable::compare(const JobRow& a, const JobRow& b, Column column) const {
    if (column == kFileState) {
        const auto dayA = locale_.parseDate(a.fileState);
        const auto dayB = locale_.parseDate(b.fileState);
        if (dayA && dayB) return dayA->day - dayB->day;
        if (dayA || dayB) return dayA ? -1 : 1;
    }
    return compareSwedish(textOf(a, column), textOf(b, column));
}

const std::string& JobTable::text(int number, Column column) const { return textOf(row(number), column); }

int JobTable::rowOf(int JobbNr) const {
    const auto found =
        std::find_if(rows_.begin(), rows_.end(), [JobbNr](const JobRow& row) { return row.job.number == JobbNr; });
    return found == rows_.end() ? kNoRow : static_cast<int>(found - rows_.begin());
}

int JobTable::JobbNr() const { return selected_ == kNoRow ? 0 : row(selected_).job.number; }

std::string JobTable::jobName() const { return selected_ == kNoRow ? std::string() : row(selected_).job.name; }

std::vector<Job> JobTable::jobs() const {
    std::vector<Job> jobs;
    for (const JobRow& row : rows_) jobs.push_back(row.job);
    std::ranges::sort(jobs, {}, &Job::number);
    return jobs;
}

std::vector<Job> JobTable::namesakes() const {
    std::vector<Job> namesakes = jobs();
    std::erase_if(namesakes, [name = jobName()](const Job& job) { return job.name != name; });
    return namesakes;
}

bool JobTable::canDelete() const { return selected_ != kNoRow && !ÄrStandardFormat(row(selected_).job.name); }

}  // namespace kolmera
