#include "definitions/jobfile.h"

#include "definitions/definitionfile.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

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
    const std::string_view beginning = firstCharacters(name, static_cast<std::size_t>(kCompany.width));
    record.setText(kCompany, beginning);
    record.setText(kCompanyRest, name.substr(beginning.size()));
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

}  // namespace

bool ÄrStandardFormat(std::string_view name) { return name == "(EIO)" || name == "(RSK)" || name == "(FINFO)"; }

std::vector<Job> JobFile::all() const {
    const RecordFile file(definitionFile(folder_, kLayout), kLayout, RecordFile::Mode::Read);
    std::vector<Job> jobs;
    for (int number = 1; number <= file.count(); ++number) jobs.push_back(jobOf(number, file.read(number)));
    return jobs;
}

std::optional<Job> JobFile::read(int number) const {
    const RecordFile file(definitionFile(folder_, kLayout), kLayout, RecordFile::Mode::Read);
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
    RecordFile file(definitionFile(folder_, kLayout), kLayout);
    // A number behind the end is a job that somebody else has removed meanwhile: it is appended, no gap arises.
    const bool exists = job.number >= 1 && job.number <= file.count();
    Record record = exists ? file.read(job.number) : Record(kLayout);
    write(job, record);
    if (!exists) return file.append(record);
    file.write(job.number, record);
    return job.number;
}

int JobFile::remove(std::string_view name) {
    return rewriteRecords(definitionFile(folder_, kLayout), kLayout,
                          [name](int, Record& record) { return record.text(field(kJob, "Namn")) != name; });
}

}  // namespace kolmera
