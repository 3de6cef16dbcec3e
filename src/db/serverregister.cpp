#include "db/serverregister.h"

#include "platform/paths.h"
#include "platform/recordfile.h"

namespace kolmera {

namespace {

constexpr RecordField kServer[] = {
    {"Namn", 0, 50}, {"Beskrivning", 50, 50}, {"Anslutning", 100, 100}, {"reserved", 200, 198}, {"reserved2", 398, 2}};
static_assert(fillsRecord(kServer, 400));
constexpr RecordLayout kLayout{"DVSQLSvr.ini", 400, kServer, false};

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

}  // namespace kolmera
