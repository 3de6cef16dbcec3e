#include "startup/inifile.h"

#include "platform/recordfile.h"

namespace kolmera {

namespace {

// IniPost, the record of DVKlient.ini and DORVIK.INI.
constexpr RecordField kIniPost[] = {{"Nyckel", 0, 20}, {"Värde", 20, 50}, {"record end", 70, 2}};
static_assert(fillsRecord(kIniPost, 72));
constexpr RecordLayout kLayout{"DORVIK.INI", 72, kIniPost, true};

}  // namespace

std::string iniValue(const std::filesystem::path& file, int number) {
    return RecordFile(file, kLayout, RecordFile::Mode::Read).read(number).text(field(kIniPost, "Värde"));
}

void writeIniValue(const std::filesystem::path& file, int number, const std::string& key, const std::string& value) {
    Record record(kLayout);
    record.setText(field(kIniPost, "Nyckel"), key);
    record.setText(field(kIniPost, "Värde"), value);
    RecordFile(file, kLayout).write(number, record);
}

}  // namespace kolmera
