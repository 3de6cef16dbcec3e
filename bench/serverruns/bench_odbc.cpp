// The FINFO job on a company of a database server, written out by hand on bare ODBC: the same reads and writes,
// prepared once, in the same transactions of 25 records.
#include <clocale>
#include <cstdio>
#include <exception>

#include "wholeruns/floor/loader.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("bench_odbc CONNECTSTRING DATADIR\n", stderr);
        return 2;
    }
    try {
        std::setlocale(LC_CTYPE, "C.UTF-8");  // by which the driver reads texts of one byte a unit
        kolmera::bench::Connection company(argv[1]);
        kolmera::bench::loadFinfo(company, argv[2]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_odbc: %s\n", error.what());
        return 1;
    }
}
