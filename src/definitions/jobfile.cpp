#include "definitions/jobfile.h"

#include <algorithm>

#include "definitions/definitionfile.h"
#include "definitions/joboptions.h"
#include "platform/attempt.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "platform/paths.h"

namespace kolmera {
namespace {

/// KOLMERA.TXT: one import job. The company's name is longer than its first field and goes on in the second.
constexpr RecordField kJob[] = {{"Namn", 0, 100},      {"FilNamn", 100, 100},   {"Mask", 200, 100},
                                {"Företag", 300, 12},  {"Leverantör", 312, 20}, {"KompFilNamn", 332, 100},
                                {"Sort", 432, 1},      {"FromGrp", 433, 8},     {"TomGrp", 441, 8},
                                {"Rubrik1", 449, 2},   {"Rubrik2", 451, 2},     {"Företag2", 453, 48},
                                {"reserved", 501, 31}, {"record end", 532, 2}};
constexpr int kJobLength = 534;
static_assert(fillsRecord(kJob, kJobLength));
constexpr RecordLayout kLayout{"KOLMERA.TXT", kJobLength, kJob, true};

struct TextField {
    RecordField field;
    std::string Job::*text;
};

constexpr TextField kTexts[] = {
    {field(kJob, "Namn"), &Job::name},           {field(kJob, "FilNamn"), &Job::priceFile},
    {field(kJob, "Mask"), &Job::mask},           {field(kJob, "Leverantör"), &Job::supplier},
    {field(kJob, "KompFilNamn"), &Job::command}, {field(kJob, "Sort"), &Job::kind},
    {field(kJob, "FromGrp"), &Job::fromGroup},   {field(kJob, "TomGrp"), &Job::toGroup},
};

struct HeadingField {
    RecordField field;
    int Job::*heading;
};

constexpr HeadingField kHeadings[] = {{field(kJob, "Rubrik1"), &Job::heading1},
                                      {field(kJob, "Rubrik2"), &Job::heading2}};

constexpr RecordField kCompany = field(kJob, "Företag");
constexpr RecordField kCompanyRest = field(kJob, "Företag2");

std::string untrimmed(const Record& record, RecordField field) {
    return record.bytes().substr(static_cast<std::size_t>(field.offset), static_cast<std::size_t>(field.width));
}

// The two fields are joined before trimming: the twelfth character may be a blank.
std::string company(const Record& record) {
    const std::string joined =
        toUtf8(untrimmed(record, kCompany) + untrimmed(record, kCompanyRest), CodePage::Windows1252);
    return std::string(trimmed(joined));
}

void setCompany(Record& record, std::string_view name) {
    const std::string composedName = composed(name);
    const std::string_view beginning = firstCharacters(composedName, static_cast<std::size_t>(kCompany.width));
    record.setText(kCompany, beginning);
    record.setText(kCompanyRest, composedName.substr(beginning.size()));
}

Job jobOf(int number, const Record& record) {
    Job job;
    job.number = number;
    for (const TextField& row : kTexts) job.*row.text = record.text(row.field);
    for (const HeadingField& row : kHeadings) job.*row.heading = record.number(row.field);
    job.company = company(record);
    return job;
}

void write(const Job& job, Record& record) {
    for (const TextField& row : kTexts) record.setText(row.field, job.*row.text);
    for (const HeadingField& row : kHeadings) {
        // A heading that was never chosen stays blank: the window of a mask job does not know the field.
        if (record.number(row.field) == job.*row.heading) continue;
        record.setText(row.field, std::to_string(fitting(row.field, job.*row.heading)));
    }
    setCompany(record, job.company);
}

struct TradeJob {
    std::string_view name, kind;
};
constexpr TradeJob kTradeJobs[] = {{"(EIO)", "E"}, {"(RSK)", "R"}, {"(FINFO)", "F"}};

std::vector<Job> jobsOf(const Records& file) {
    std::vector<Job> jobs;
    for (int number = 1; number <= file.count(); ++number) jobs.push_back(jobOf(number, file.read(number)));
    return jobs;
}

/// The number of the record written.
int put(Records& file, const Job& job) {
    // A number behind the end is a job that somebody else has removed meanwhile: it is appended, no gap arises.
    const bool exists = job.number >= 1 && job.number <= file.count();
    Record record = exists ? file.read(job.number) : Record(kLayout);
    write(job, record);
    if (!exists) return file.append(record);
    file.write(job.number, record);
    return job.number;
}

void refuseTakenName(const Records& file, const Job& job) {
    const std::string name = composed(trimmed(job.name));
    for (const Job& other : jobsOf(file)) {
        if (other.number != job.number && equalNoCase(other.name, name)) {
            throw PlatformError(errors::kDuplicateKey, "there is another job of that name").about(name);
        }
    }
}

}  // namespace

bool ÄrStandardFormat(std::string_view name) {
    return std::ranges::find(kTradeJobs, name, &TradeJob::name) != std::end(kTradeJobs);
}

std::vector<std::string> missingTradeJobs(const std::vector<Job>& jobs) {
    std::vector<std::string> missing;
    for (const TradeJob& trade : kTradeJobs) {
        if (std::ranges::find(jobs, trade.name, &Job::name) == jobs.end()) missing.emplace_back(trade.name);
    }
    return missing;
}

Records JobFile::records() const {
    const std::filesystem::path file = findWithoutCase(folder_, std::string(kLayout.file));
    std::error_code unreadable;
    if (!std::filesystem::exists(std::filesystem::symlink_status(file, unreadable))) {
        PassedOverSilently passedOver;  // reading tells what is wrong with the folder
        attempt(passedOver, kLayout.file, [this] { JobFile(folder_).addTradeJobs({}); });
    }
    return readRecords(file, kLayout);
}

std::vector<Job> JobFile::all() const { return jobsOf(records()); }

std::optional<Job> JobFile::read(int number) const {
    const Records file = records();
    if (number < 1 || number > file.count()) return std::nullopt;
    return jobOf(number, file.read(number));
}

std::optional<Job> JobFile::find(std::string_view name) const {
    for (Job& job : all()) {
        if (job.name == name) return std::move(job);
    }
    return std::nullopt;
}

int JobFile::save(const Job& job) {
    RecordChange change(folder_);
    const int number = put(change.file(kLayout), job);
    change.commit();
    return number;
}

void JobFile::addTradeJobs(std::string_view company) {
    RecordChange change(folder_);
    Records& file = change.file(kLayout);
    const std::vector<std::string> missing = missingTradeJobs(jobsOf(file));
    for (const TradeJob& trade : kTradeJobs) {
        if (std::ranges::find(missing, trade.name) == missing.end()) continue;
        Job job;
        job.name = trade.name;
        job.kind = trade.kind;
        job.company = company;
        put(file, job);
    }
    change.commit();
}

int JobFile::save(const Job& job, const std::optional<Job>& shown, const JobOptionsChange& options) {
    RecordChange change(folder_);
    Records& file = change.file(kLayout);
    if (shown) expectUnchanged(jobOf(shown->number, file.read(shown->number)), *shown, kLayout);
    if (!shown || shown->name != job.name) refuseTakenName(file, job);
    const int number = put(file, job);
    const std::string name = file.read(number).text(field(kJob, "Namn"));
    if (shown && shown->name != name) {
        const bool stays = std::ranges::count(jobsOf(file), shown->name, &Job::name) > 0;
        renameJobOptions(change.text(kJobOptionsFile), shown->name, name, stays);
    } else if (!shown) {
        removeJobOptions(change.text(kJobOptionsFile), name);  // of a job that another program has removed
    }
    if (options.limits || options.source) putOptions(change.text(kJobOptionsFile), name, options);
    change.commit();
    return number;
}

int putJob(RecordChange& change, Job job, const std::optional<Job>& shown) {
    Records& file = change.file(kLayout);
    const std::vector<Job> jobs = jobsOf(file);
    const auto same = std::ranges::find(jobs, job.name, &Job::name);
    expectUnchanged(same == jobs.end() ? std::nullopt : std::optional(*same), shown, kLayout);
    job.number = same == jobs.end() ? 0 : same->number;
    return put(file, job);
}

int JobFile::copy(const Job& shown, const std::string& name, const std::string& mask) {
    RecordChange change(folder_);
    Records& file = change.file(kLayout);
    expectUnchanged(jobOf(shown.number, file.read(shown.number)), shown, kLayout);
    Job made = shown;
    made.number = 0;
    made.name = name;
    made.mask = mask;
    refuseTakenName(file, made);
    const int number = put(file, made);
    const std::string stored = file.read(number).text(field(kJob, "Namn"));
    std::string& options = change.text(kJobOptionsFile);
    removeJobOptions(options, stored);  // of a job that another program has removed
    renameJobOptions(options, shown.name, stored, true);
    change.commit();
    return number;
}

void JobFile::remove(const std::vector<Job>& shown) {
    if (shown.empty()) return;
    RecordChange change(folder_);
    Records& file = change.file(kLayout);
    std::vector<Job> stored = jobsOf(file);
    std::erase_if(stored, [&](const Job& job) { return job.name != shown.front().name; });
    expectUnchanged(stored, shown, kLayout);
    file.keepOnly([&](int, Record& record) { return record.text(field(kJob, "Namn")) != shown.front().name; });
    removeJobOptions(change.text(kJobOptionsFile), shown.front().name);
    change.commit();
}

}  // namespace kolmera
