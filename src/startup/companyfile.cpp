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

}  // namespace

CompanyFile::CompanyFile(const std::filesystem::path& dataFolder) : file_(dataFolder / kLayout.file) {}

void CompanyFile::create() const { static_cast<void>(readRecords(file_, kLayout)); }

std::optional<std::string> CompanyFile::find(std::string_view databaseFile) const {
    const auto width = static_cast<std::size_t>(kDatabas.width);
    const std::string wanted = upperCase(trimmed(firstCharacters(databaseFile, width)));
    const Records file = readRecords(file_, kLayout);
    for (int number = 1; number <= file.count(); ++number) {
        const Record record = file.read(number);
        if (upperCase(record.text(kDatabas)) == wanted) return record.text(kFöretag);
    }
    return std::nullopt;
}

void CompanyFile::append(std::string_view databaseFile, std::string_view company) const {
    Record record(kLayout);
    record.setCutText(kDatabas, databaseFile);  // as it is looked up
    record.setCutText(kFöretag, company);
    RecordChange change(file_.parent_path());
    change.file(kLayout).append(record);
    change.commit();
}

}  // namespace kolmera
