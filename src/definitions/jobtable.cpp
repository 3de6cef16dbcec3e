#include "definitions/jobtable.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/lettercase.h"

namespace kolmera {

const std::string& JobTable::textOf(const JobRow& row, Column column) const {
    static const std::string never;
    const auto lastRun = lastRuns_.find(row.job.name);
    const std::array<const std::string*, kColumns> texts{&row.job.name, &row.kindText, &row.job.priceFile,
                                                         &row.fileState,
                                                         lastRun == lastRuns_.end() ? &never : &lastRun->second};
    return *texts.at(column);
}

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

std::string JobTable::hiddenText(int number) const {
    const Job& job = row(number).job;
    std::string text = std::to_string(job.number);
    for (const std::string* each : {&job.mask, &job.company, &job.supplier, &job.command})
        text.append("\t").append(*each);
    const auto company = suppliers_.find(upperCase(job.company));
    if (company == suppliers_.end()) return text;
    const auto name = company->second.find(upperCase(job.supplier));
    return name == company->second.end() ? text : text.append("\t").append(name->second);
}

bool JobTable::has(std::vector<JobRow> rows) const {
    std::vector<JobRow> own = rows_;
    const auto numberOf = [](const JobRow& row) { return row.job.number; };
    std::ranges::sort(rows, {}, numberOf);
    std::ranges::sort(own, {}, numberOf);
    return own == rows;
}

int JobTable::selectedAmong(const std::vector<JobRow>& rows) const {
    const std::string name = jobName();
    const int number = JobbNr();
    int first = 0;
    for (const JobRow& row : rows) {
        if (number == 0 || row.job.name != name) continue;
        if (row.job.number == number) return number;
        if (first == 0) first = row.job.number;
    }
    return first;
}

std::vector<std::string> JobTable::companies() const {
    std::vector<std::string> companies;
    for (const JobRow& row : rows_) {
        if (!row.job.company.empty()) companies.push_back(upperCase(row.job.company));
    }
    std::ranges::sort(companies);
    companies.erase(std::unique(companies.begin(), companies.end()), companies.end());
    return companies;
}

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
