#include "db/serverregister.h"

#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/paths.h"
#include "platform/recordfile.h"

namespace kolmera {

namespace {

constexpr RecordField kServer[] = {
    {"Namn", 0, 50}, {"Beskrivning", 50, 50}, {"Anslutning", 100, 100}, {"reserved", 200, 198}, {"reserved2", 398, 2}};
static_assert(fillsRecord(kServer, 400));
constexpr RecordLayout kLayout{"DVSQLSvr.ini", 400, kServer, false};
constexpr RecordField kName = field(kServer, "Namn");
constexpr std::string_view kServerPrefix = "SQL;";

/// A cut name or connect string would register something else.
void setWhole(Record& record, RecordField recordField, const std::string& text) {
    record.setText(recordField, text);
    if (record.text(recordField) == text) return;
    throw PlatformError(errors::kTextTooLong, "\"" + text + "\" does not fit its " + std::to_string(recordField.width) +
                                                  " characters of Windows-1252");
}

}  // namespace

std::filesystem::path serverRegisterFile(const std::filesystem::path& dataFolder) {
    return findWithoutCase(dataFolder, std::string(kLayout.file));
}

std::vector<ServerCompany> registeredServers(const std::filesystem::path& dataFolder) {
    const RecordFile file(serverRegisterFile(dataFolder), kLayout, RecordFile::Mode::Read);
    std::vector<ServerCompany> servers;
    for (int number = 1; number <= file.count(); ++number) {
        const Record record = file.read(number);
        servers.push_back({record.text(field(kServer, "Namn")), record.text(field(kServer, "Beskrivning")),
                           record.text(field(kServer, "Anslutning"))});
    }
    return servers;
}

void registerServer(const std::filesystem::path& dataFolder, const ServerCompany& server) {
    if (!startsWithNoCase(server.name, kServerPrefix) || server.name.size() == kServerPrefix.size()) {
        throw PlatformError(errors::kWrongType, "\"" + server.name + "\" is no name of a server company (SQL;Name)");
    }
    Record record(kLayout);
    setWhole(record, kName, server.name);
    setWhole(record, field(kServer, "Beskrivning"), server.description);
    setWhole(record, field(kServer, "Anslutning"), server.connectString);
    RecordFile file(serverRegisterFile(dataFolder), kLayout);
    for (int number = 1; number <= file.count(); ++number) {
        if (equalNoCase(file.read(number).text(kName), server.name)) return file.write(number, record);
    }
    file.append(record);
}

}  // namespace kolmera
