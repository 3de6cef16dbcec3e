#include "startup/companyfile.h"

#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "platform/recordfolder.h"

namespace kolmera {

namespace {

// The third field belongs to other programs of the suite; ours leaves it blank.
constexpr RecordField kCompany[] = {{"Databas", 0, 20}, {"Företag", 20, 50}, {"Övrigt", 70, 50}};
static_assert(fillsRecord(kCompany, 120));
constexpr RecordLayout kLayout{"DORVIK.FTG", 120, kCompany, false};
constexpr RecordField kDatabas = field(kCompany, "Databas");
constexpr RecordField kFöretag = field(kCompany, "Företag");

std::optional<std::string> companyOf(const Records& file, std::string_view databaseFile) {
    const auto width = static_cast<std::size_t>(kDatabas.width);
    const std::string wanted = upperCase(trimmed(firstCharacters(databaseFile, width)));
    for (int number = 1; number <= file.count(); ++number) {
        const Record record = file.read(number);
        if (upperCase(record.text(kDatabas)) == wanted) return record.text(kFöretag);
    }
    return std::nullopt;
}

}  // namespace

CompanyFile::CompanyFile(const std::filesystem::path& dataFolder) : file_(dataFolder / kLayout.file) {}

void CompanyFile::create() const { static_cast<void>(readRecords(file_, kLayout)); }

std::optional<std::string> CompanyFile::find(std::string_view databaseFile) const {
    return companyOf(readRecords(file_, kLayout), databaseFile);
}

void CompanyFile::append(std::string_view databaseFile, std::string_view company) const {
    Record record(kLayout);
    record.setCutText(kDatabas, databaseFile);  // as it is looked up
    record.setCutText(kFöretag, company);
    RecordChange change(file_.parent_path());
    auto& file = change.file(kLayout);
    if (companyOf(file, databaseFile)) return;  // since it was looked for
    file.append(record);
    change.commit();
}

}  // namespace kolmera
