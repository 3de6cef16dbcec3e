// Whether two company files hold the same rows.
#include <cstdio>
#include <exception>

#include "wholeruns/run/compare.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("bench_compare A.mdb B.mdb\n", stderr);
        return 2;
    }
    try {
        const auto found = kolmera::bench::differences(argv[1], argv[2], 20);
        for (const std::string& line : found) std::puts(line.c_str());
        return found.empty() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_compare: %s\n", error.what());
        return 2;
    }
}
