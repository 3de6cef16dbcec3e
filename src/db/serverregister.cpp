#include "db/serverregister.h"

#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/paths.h"
#include "platform/recordfolder.h"

namespace kolmera {

namespace {

constexpr RecordField kServer[] = {
    {"Namn", 0, 50}, {"Beskrivning", 50, 50}, {"Anslutning", 100, 100}, {"reserved", 200, 198}, {"reserved2", 398, 2}};
static_assert(fillsRecord(kServer, 400));
constexpr RecordLayout kLayout{"DVSQLSvr.ini", 400, kServer, false, true};
constexpr RecordField kName = field(kServer, "Namn");
constexpr std::string_view kServerPrefix = "SQL;";

}  // namespace

std::filesystem::path serverRegisterFile(const std::filesystem::path& dataFolder) {
    return findWithoutCase(dataFolder, std::string(kLayout.file));
}

std::vector<ServerCompany> registeredServers(const std::filesystem::path& dataFolder) {
    const Records file = readRecords(dataFolder / kLayout.file, kLayout);
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
    if (server.connectString.find_first_not_of(' ') == std::string::npos) {
        throw PlatformError(errors::kWrongType, "a company on a server needs a connect string").about("Anslutning");
    }
    Record record(kLayout);
    record.setText(kName, server.name);
    record.setText(field(kServer, "Beskrivning"), server.description);
    record.setText(field(kServer, "Anslutning"), server.connectString);
    RecordChange change(dataFolder);
    Records& file = change.file(kLayout);
    int number = 1;
    while (number <= file.count() && !equalNoCase(file.read(number).text(kName), server.name)) ++number;
    file.write(number, record);
    change.commit();
}

}  // namespace kolmera
