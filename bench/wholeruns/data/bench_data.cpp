// Makes the data folder of one case: a company, the job of a format and its price file. The same every time.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "definitions/datafolder.h"
#include "startup/newcompany.h"
#include "wholeruns/data/company.h"
#include "wholeruns/data/jobs.h"
#include "wholeruns/data/pricefiles.h"

int main(int argc, char** argv) {
    using namespace kolmera::bench;
    CLI::App app("Makes the data folder of one benchmark case");
    std::string name;
    std::filesystem::path folder;
    std::uint64_t products = 100'000;
    std::int64_t records = -1;
    bool shuffled = false;
    app.add_option("format", name, "T, F, P, EIO, RSK or FINFO")->required();
    app.add_option("folder", folder, "the data folder, new or empty")->required();
    app.add_option("--products", products, "articles, of which the company knows 99 in 100");
    app.add_option("--records", records, "articles in the price file (all of them)");
    app.add_flag("--shuffled", shuffled, "price file not in product-number order");
    CLI11_PARSE(app, argc, argv);

    const auto format = formatNamed(name);
    if (!format) {
        std::fprintf(stderr, "bench_data: no format %s\n", name.c_str());
        return 2;
    }
    try {
        kolmera::createDataFolder(folder);
        kolmera::createCompany(folder, kCompanyFile, "Bänkbolaget AB");
        {
            Connection company(folder / kCompanyFile);
            company.execute("PRAGMA cache_size = -262144");
            fillCompany(company, format->format, products);
        }
        writeJob(folder, *format);
        writePriceFile(folder, format->format,
                       placesInOrder(records < 0 ? products : static_cast<std::uint64_t>(records), shuffled));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_data: %s\n", error.what());
        return 1;
    }
}
