#include "signin/userfile.h"

#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "platform/recordfolder.h"
#include "startup/scramble.h"

namespace kolmera {
namespace {

// DVUser.dvl: one user. What the rest of the suite keeps between is not read here.
constexpr RecordField kUser[] = {{"Signatur", 0, 3},         {"Namn", 3, 50},           {"Lösenord", 53, 5},
                                 {"reserved", 58, 84},       {"other program", 142, 1}, {"Kolmera", 143, 1},
                                 {"other programs", 144, 4}, {"Deltar ej", 148, 1},     {"reserved 2", 149, 449},
                                 {"record end", 598, 2}};
constexpr int kUserLength = 600;
static_assert(fillsRecord(kUser, kUserLength));
constexpr RecordLayout kLayout{"DVUser.dvl", kUserLength, kUser, true};

// The whole field is unscrambled: the padding is scrambled too. A field that was never written is no password.
std::string passwordOf(const Record& record) {
    constexpr RecordField kPassword = field(kUser, "Lösenord");
    const std::string bytes = record.bytes().substr(kPassword.offset, kPassword.width);
    if (trimmed(bytes).empty()) return {};
    return std::string(trimmed(toUtf8(unscramble(bytes), CodePage::Windows1252)));
}

}  // namespace

std::vector<User> readUsers(const std::filesystem::path& dataFolder) {
    const Records file = readRecords(dataFolder / kLayout.file, kLayout);
    std::vector<User> users;
    for (int number = 1; number <= file.count(); ++number) {
        const Record record = file.read(number);
        users.push_back({.sign = record.text(field(kUser, "Signatur")),
                         .name = record.text(field(kUser, "Namn")),
                         .password = passwordOf(record),
                         .denied = record.text(field(kUser, "Kolmera")) == "N",
                         .takesNoPart = record.text(field(kUser, "Deltar ej")) == "J"});
    }
    return users;
}

}  // namespace kolmera
