// Reading a price file of a million records and cutting it into texts, without a database.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <span>
#include <string>

#include "import/masks/loadedmask.h"
#include "import/masks/recordreader.h"
#include "import/tradeformats/eio.h"
#include "import/tradeformats/finfo.h"
#include "import/tradeformats/rsk.h"
#include "platform/pricefile.h"
#include "wholeruns/data/jobs.h"
#include "wholeruns/data/pricefiles.h"

namespace kolmera::bench {

namespace {

constexpr std::uint64_t kRecords = 1'000'000;

/// The price file of a format, gone with its benchmark.
class PriceFileFolder {
  public:
    explicit PriceFileFolder(Format format)
        : folder_(std::filesystem::temp_directory_path() / ("kolmera-reading-" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(folder_);
        writePriceFile(folder_, format, placesInOrder(kRecords, false));
    }
    PriceFileFolder(const PriceFileFolder&) = delete;
    PriceFileFolder& operator=(const PriceFileFolder&) = delete;
    ~PriceFileFolder() { std::filesystem::remove_all(folder_); }

    [[nodiscard]] std::filesystem::path file() const { return folder_ / kPriceFile; }

  private:
    std::filesystem::path folder_;
};

void maskFile(benchmark::State& state, const FormatName& format) {
    const PriceFileFolder folder(format.format);
    const LoadedMask mask(maskOf(format), relationsOf(format.format));
    std::int64_t records = 0;
    for ([[maybe_unused]] auto run : state) {
        PriceFile file(folder.file());
        MaskRecordReader reader(file, mask);
        while (reader.next()) benchmark::DoNotOptimize(reader.entries().text(mask.key));
        records += reader.count();
    }
    state.SetItemsProcessed(records);
}

struct TradeFile {
    const char* name;
    Format format;
    CodePage page;
    std::span<const Columns> article, price;  ///< of lines of type 1 and 2; FINFO has one type
};
constexpr TradeFile kTradeFiles[] = {{"EIO", Format::Eio, CodePage::Windows1252, kEioArticle, kEioPrice},
                                     {"RSK", Format::Rsk, CodePage::Oem850, kRskArticle, kRskPrice},
                                     {"FINFO", Format::Finfo, CodePage::Oem850, kFinfo, kFinfo}};

void tradeFile(benchmark::State& state, const TradeFile& trade) {
    const PriceFileFolder folder(trade.format);
    std::string text;
    std::int64_t lines = 0;
    for ([[maybe_unused]] auto run : state) {
        PriceFile file(folder.file());
        for (; !file.atEnd(); ++lines) {
            const std::string_view line = file.line();
            for (const Columns& columns : line.starts_with('2') ? trade.price : trade.article) {
                toUtf8(cut(line, columns), trade.page, text);
                benchmark::DoNotOptimize(text.data());
            }
        }
    }
    state.SetItemsProcessed(lines);
}

}  // namespace

}  // namespace kolmera::bench

int main(int argc, char** argv) {
    using namespace kolmera::bench;
    for (const char* name : {"T", "F", "P"}) {
        benchmark::RegisterBenchmark(name, maskFile, formatNamed(name).value())->Unit(benchmark::kMillisecond);
    }
    for (const TradeFile& trade : kTradeFiles) {
        benchmark::RegisterBenchmark(trade.name, tradeFile, trade)->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
