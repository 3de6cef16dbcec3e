#include "startup/passwordfile.h"

#include <system_error>

#include "platform/attempt.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "platform/paths.h"
#include "platform/recordfolder.h"
#include "startup/scramble.h"

namespace kolmera {

namespace {

// Both fields are scrambled, padding included.
constexpr RecordField kEntry[] = {{"Databas", 0, 20}, {"Lösenord", 20, 10}};
static_assert(fillsRecord(kEntry, 30));
constexpr RecordLayout kLayout{"DVDefLog.bin", 30, kEntry, false, true};
constexpr RecordField kDatabas = field(kEntry, "Databas");
constexpr RecordField kLösenord = field(kEntry, "Lösenord");

std::string readField(const Record& record, RecordField place) {
    const std::string_view bytes(record.bytes());
    const std::string plain =
        unscramble(bytes.substr(static_cast<std::size_t>(place.offset), static_cast<std::size_t>(place.width)));
    return std::string(trimmed(toUtf8(plain, CodePage::Windows1252)));
}

std::string writeField(std::string_view text, RecordField place) {
    std::string bytes = fromUtf8(text, CodePage::Windows1252);
    bytes.resize(static_cast<std::size_t>(place.width), ' ');
    return scramble(bytes);
}

/// What a company file is known by here: 20 characters, trimmed, upper case.
std::string key(std::string_view name) {
    return upperCase(trimmed(firstCharacters(name, static_cast<std::size_t>(kDatabas.width))));
}

/// Number of the entry of that name, 0 when there is none.
int entryOf(const Records& file, std::string_view name) {
    const std::string wanted = key(name);
    for (int number = 1; number <= file.count(); ++number) {
        if (upperCase(readField(file.read(number), kDatabas)) == wanted) return number;
    }
    return 0;
}

}  // namespace

PasswordFile::PasswordFile(const std::filesystem::path& dataFolder)
    : file_(findWithoutCase(dataFolder, std::string(kLayout.file))) {}

std::string PasswordFile::find(std::string_view name) const {
    std::string password;
    std::error_code error;
    if (!std::filesystem::exists(file_, error)) return password;  // reading must not create it
    PassedOverSilently passedOver;
    attempt(passedOver, "LösenFör", [&] {
        const Records file = readRecords(file_, kLayout);
        if (const int number = entryOf(file, name)) password = readField(file.read(number), kLösenord);
    });
    return password;
}

void PasswordFile::save(std::string_view name, std::string_view password) const {
    if (characterCount(password) > static_cast<std::size_t>(kLösenord.width)) {
        throw PlatformError(errors::kTextTooLong, "A password has at most 10 characters.");
    }
    const Record record(kLayout, writeField(key(name), kDatabas) + writeField(password, kLösenord));
    RecordChange change(file_.parent_path());
    Records& file = change.file(kLayout);
    if (const int number = entryOf(file, name)) {
        file.write(number, record);
    } else {
        file.append(record);
    }
    change.commit();
}

}  // namespace kolmera
