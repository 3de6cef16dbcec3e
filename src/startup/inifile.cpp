#include "startup/inifile.h"

#include "platform/recordfolder.h"

namespace kolmera {

namespace {

// IniPost, the record of DVKlient.ini and DORVIK.INI.
constexpr RecordField kIniPost[] = {{"Nyckel", 0, 20}, {"Värde", 20, 50}, {"record end", 70, 2}};
static_assert(fillsRecord(kIniPost, 72));
constexpr RecordLayout kLayout{"DORVIK.INI", 72, kIniPost, true};

}  // namespace

std::string iniValue(const std::filesystem::path& file, int number) {
    return readRecords(file, kLayout).read(number).text(field(kIniPost, "Värde"));
}

void writeIniValues(const std::filesystem::path& file, int first, std::span<const IniLine> lines) {
    RecordChange change(file.parent_path());
    Records& records = change.file(kLayout, file.filename().string());
    for (const IniLine& line : lines) {
        Record record(kLayout);
        record.setText(field(kIniPost, "Nyckel"), line.key);
        record.setText(field(kIniPost, "Värde"), line.value);
        records.write(first++, record);
    }
    change.commit();
}

}  // namespace kolmera
