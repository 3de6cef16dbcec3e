// A price file through a hand-written loader on bare SQLite: the lowest cost that leaves the same tables as the job.
#include <cstdio>
#include <exception>

#include "wholeruns/floor/loader.h"

int main(int argc, char** argv) {
    using namespace kolmera::bench;
    const auto format = argc == 3 ? formatNamed(argv[1]) : std::nullopt;
    if (!format) {
        std::fputs("bench_floor T|F|P|EIO|RSK|FINFO DATADIR\n", stderr);
        return 2;
    }
    try {
        const std::filesystem::path folder = argv[2];
        sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
        Connection company(folder / kCompanyFile);
        company.execute(
            "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA cache_size = -65536; "
            "PRAGMA wal_autocheckpoint = 16000");
        switch (format->format) {
            case Format::Eio:
            case Format::Rsk:
                loadEioRsk(company, folder, format->format);
                break;
            case Format::Finfo:
                loadFinfo(company, folder);
                break;
            default:
                loadMask(company, folder, format->format);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_floor: %s\n", error.what());
        return 1;
    }
}
