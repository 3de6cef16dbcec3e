// Whole runs of kolmera-cli beside hand-written loaders on bare SQLite, or beside themselves without a record, or
// previews or the taking back of runs beside runs, on the same data, in turns.
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "wholeruns/formats.h"
#include "wholeruns/run/compare.h"
#include "wholeruns/run/process.h"

namespace kolmera::bench {

namespace {

namespace fs = std::filesystem;

struct Options {
    std::vector<std::string> formats = {"T", "F", "P", "EIO", "RSK", "FINFO"};
    std::vector<std::uint64_t> records = {100'000};
    std::vector<std::string> orders = {"ordered", "shuffled"};
    int pairs = 5;
    fs::path work;
    fs::path programs;  ///< the folder of the built programs
    bool keep = false;
    bool unrecorded = false;  ///< the other of a pair is the same run without a record
    bool preview = false;     ///< previews, and the other of a pair is the run
    bool list = false;        ///< of a preview the list of all changes is saved, too
    bool undo = false;        ///< the taking back of a run, and the other of a pair is the run
    bool empty = false;       ///< the runs remove all products first
};

struct Case {
    FormatName format;
    std::uint64_t products;
    std::uint64_t records;
    bool shuffled;
};

double median(std::vector<double> values) {
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// Runs one case: both programs in turns, each on a fresh copy of the case's data folder.
class CaseRunner {
  public:
    CaseRunner(const Options& options, const Case& measured)
        : options_(options), case_(measured), master_(options.work / "master") {
        std::vector<std::string> command = {program("bench_data"),
                                            std::string(case_.format.name),
                                            master_.string(),
                                            "--products",
                                            std::to_string(case_.products),
                                            "--records",
                                            std::to_string(case_.records)};
        if (case_.shuffled) command.emplace_back("--shuffled");
        fs::remove_all(master_);
        expectSuccess("bench_data", runProcess(command));
    }

    ProcessCost job() {
        if (options_.preview) return previewIn(freshCopy("job"));
        const fs::path folder = freshCopy("job");
        const ProcessCost run = jobIn(folder);
        return options_.undo ? undoIn(folder) : run;
    }

    /// What the run is compared with.
    ProcessCost floor() {
        const fs::path folder = freshCopy("floor");
        if (options_.preview || options_.undo) return jobIn(folder);
        if (options_.unrecorded) {
            std::ofstream(folder / "Körningar") << "no folder: no record can be made\n";
            return jobIn(folder);
        }
        const ProcessCost cost = runProcess({program("bench_floor"), std::string(case_.format.name), folder.string()});
        expectSuccess("bench_floor", cost);
        return cost;
    }

    ProcessCost jobIn(const fs::path& folder) {
        const fs::path summary = options_.work / "summary.json";
        std::vector<std::string> command = {
            program("kolmera-cli"), "run", std::string(case_.format.job), "--data", folder.string(), "--summary",
            summary.string()};
        if (options_.empty) command.emplace_back("--empty");
        const ProcessCost cost = runProcess(command);
        // A price file without records is a remark.
        expectEnd("kolmera-cli", cost, case_.records == 0 ? 3 : 0);
        summary_ = nlohmann::json::parse(std::ifstream(summary));
        return cost;
    }

    ProcessCost previewIn(const fs::path& folder) {
        std::vector<std::string> command = {program("kolmera-cli"), "preview", std::string(case_.format.job), "--data",
                                            folder.string()};
        if (options_.empty) command.emplace_back("--empty");
        if (options_.list) {
            command.emplace_back("--save");
            command.push_back((options_.work / "changes.txt").string());
        }
        const ProcessCost cost = runProcess(command);
        expectSuccess("kolmera-cli", cost);
        return cost;
    }

    ProcessCost undoIn(const fs::path& folder) {
        const ProcessCost cost = runProcess({program("kolmera-cli"), "undo", "last", "--data", folder.string()});
        expectSuccess("kolmera-cli", cost);
        return cost;
    }

    [[nodiscard]] std::vector<std::string> differencesOfTables() const {
        if (options_.preview || options_.undo)
            return differences(options_.work / "job" / kCompanyFile, master_ / kCompanyFile, 5);
        return differences(options_.work / "job" / kCompanyFile, options_.work / "floor" / kCompanyFile, 5);
    }
    [[nodiscard]] const nlohmann::json& summary() const { return summary_; }

  private:
    [[nodiscard]] std::string program(const char* name) const { return (options_.programs / name).string(); }

    [[nodiscard]] fs::path freshCopy(const char* name) const {
        fs::path folder = options_.work / name;
        fs::remove_all(folder);
        fs::copy(master_, folder, fs::copy_options::recursive);
        ::sync();
        return folder;
    }

    static void expectSuccess(const char* name, const ProcessCost& cost) { expectEnd(name, cost, 0); }
    static void expectEnd(const char* name, const ProcessCost& cost, int exitCode) {
        if (cost.exitCode != exitCode) throw std::runtime_error(fmt::format("{} ended with {}", name, cost.exitCode));
    }

    const Options& options_;
    Case case_;
    fs::path master_;
    nlohmann::json summary_;
};

struct Pairs {
    std::vector<ProcessCost> job;
    std::vector<ProcessCost> floor;

    [[nodiscard]] double medianRatio(double ProcessCost::*what) const {
        std::vector<double> ratios;
        ratios.reserve(job.size());
        for (std::size_t pair = 0; pair < job.size(); ++pair) ratios.push_back(job[pair].*what / (floor[pair].*what));
        return median(ratios);
    }
    static double medianOf(const std::vector<ProcessCost>& costs, double ProcessCost::*what) {
        std::vector<double> values;
        values.reserve(costs.size());
        for (const ProcessCost& cost : costs) values.push_back(cost.*what);
        return median(values);
    }
};

/// Microseconds of the job for one record.
double measureCase(const Options& options, const Case& measured) {
    CaseRunner runner(options, measured);
    runner.job();  // a pair to warm up
    runner.floor();
    Pairs pairs;
    for (int pair = 0; pair < options.pairs; ++pair) {
        const bool jobFirst = pair % 2 == 0;
        if (jobFirst) pairs.job.push_back(runner.job());
        pairs.floor.push_back(runner.floor());
        if (!jobFirst) pairs.job.push_back(runner.job());
    }
    const std::vector<std::string> found = runner.differencesOfTables();
    const double seconds = Pairs::medianOf(pairs.job, &ProcessCost::seconds);
    const auto records = static_cast<double>(measured.records);
    fmt::print("{:6} {:>9} {:9} {:>9.0f} {:>9.0f} {:>6.2f} {:>6.2f} {:>8.1f} {:>8.1f}  {}\n", measured.format.name,
               measured.records, measured.shuffled ? "shuffled" : "ordered", records / seconds,
               records / Pairs::medianOf(pairs.floor, &ProcessCost::seconds), pairs.medianRatio(&ProcessCost::seconds),
               pairs.medianRatio(&ProcessCost::cpuSeconds), Pairs::medianOf(pairs.job, &ProcessCost::peakMegabytes),
               Pairs::medianOf(pairs.floor, &ProcessCost::peakMegabytes), found.empty() ? "equal" : "DIFFERENT");
    for (const std::string& line : found) fmt::print("    {}\n", line);
    if (const auto passedOver = runner.summary().value("passed_over", 0); passedOver != 0) {
        fmt::print("    statements passed over: {}\n", passedOver);
    }
    std::fflush(stdout);
    return seconds / records * 1e6;
}

void measureEmptyFiles(const Options& options) {
    fmt::print("\nAn empty price file into a company of 100000 products, milliseconds (median of {})\n", options.pairs);
    for (const std::string& name : options.formats) {
        CaseRunner runner(options, {formatNamed(name).value(), 100'000, 0, false});
        runner.job();
        std::vector<double> times;
        times.reserve(static_cast<std::size_t>(options.pairs));
        for (int run = 0; run < options.pairs; ++run) times.push_back(runner.job().seconds * 1000);
        fmt::print("{:6} {:>6.1f}\n", name, median(times));
        std::fflush(stdout);
    }
}

using CostOfCase = std::map<std::pair<std::string, std::string>, std::map<std::uint64_t, double>>;

/// What a record costs in the largest case against the smallest.
void printGrowth(const CostOfCase& costs) {
    for (const auto& [key, bySize] : costs) {
        if (bySize.size() < 2) continue;
        const auto& small = *bySize.begin();
        const auto& large = *bySize.rbegin();
        fmt::print("{:6} {:9} a record costs {:.2f} us at {}, {:.2f} us at {}: {:.2f} times\n", key.first, key.second,
                   small.second, small.first, large.second, large.first, large.second / small.second);
    }
}

void measure(const Options& options) {
    fmt::print("{:6} {:>9} {:9} {:>9} {:>9} {:>6} {:>6} {:>8} {:>8}  {}\n", "format", "records", "order", "run rec/s",
               "floor r/s", "ratio", "cpu", "run MB", "floor MB", "tables");
    CostOfCase costs;
    for (const std::uint64_t records : options.records) {
        for (const std::string& name : options.formats) {
            for (const std::string& order : options.orders) {
                costs[{name, order}][records] =
                    measureCase(options, {formatNamed(name).value(), records, records, order == "shuffled"});
            }
        }
    }
    printGrowth(costs);
    if (!options.unrecorded && !options.preview && !options.undo) measureEmptyFiles(options);
}

}  // namespace

}  // namespace kolmera::bench

int main(int argc, char** argv) {
    using namespace kolmera::bench;
    CLI::App app("Whole runs beside hand-written loaders on bare SQLite");
    Options options;
    options.programs = std::filesystem::canonical("/proc/self/exe").parent_path();
    options.work = std::filesystem::temp_directory_path() / ("kolmera-bench-" + std::to_string(::getpid()));
    app.add_option("--formats", options.formats, "of T, F, P, EIO, RSK, FINFO")
        ->delimiter(',')
        ->check(CLI::IsMember({"T", "F", "P", "EIO", "RSK", "FINFO"}));
    app.add_option("--records", options.records, "sizes, as 100000,1000000")->delimiter(',');
    app.add_option("--orders", options.orders, "ordered, shuffled")
        ->delimiter(',')
        ->check(CLI::IsMember({"ordered", "shuffled"}));
    app.add_option("--pairs", options.pairs, "measured pairs of a case")->check(CLI::Range(1, 1000));
    app.add_option("--work", options.work, "folder for the data, on the disk that is measured");
    app.add_flag("--unrecorded", options.unrecorded, "compare with the same run without a record, not with a loader");
    app.add_flag("--preview", options.preview, "measure previews beside runs");
    app.add_flag("--list", options.list, "previews that save the list of all changes");
    app.add_flag("--undo", options.undo, "measure the taking back of runs beside the runs");
    app.add_flag("--empty", options.empty, "runs that remove all products first");
    app.add_flag("--keep", options.keep, "leave the last case's data in the folder");
    CLI11_PARSE(app, argc, argv);
    try {
        std::filesystem::create_directories(options.work);
        // The user's own settings and language stay out of the measurement.
        ::setenv("XDG_CONFIG_HOME", options.work.c_str(), 1);
        ::setenv("LC_ALL", "sv_SE.UTF-8", 1);
        measure(options);
        if (!options.keep) std::filesystem::remove_all(options.work);
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "bench_wholeruns: {}\n", error.what());
        return 1;
    }
}
