#include "faults/runworld.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "cli/commandline.h"
#include "definitions/joboptions.h"
#include "platform/engine/database.h"
#include "platform/tsv.h"
#include "support/companyrows.h"
#include "tradeformats/tradeworld.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

constexpr int kBatch = 25;

std::string numberOf(int product) { return std::to_string(1000100 + product * 7); }

std::string recordOf(const std::string& format, const std::string& number) {
    const std::string price = number.substr(3);
    if (format == "(EIO)") {
        return line({{1, "1"}, {2, "0" + number}, {10, "Ny"}, {35, "20260105"}}) + line({{1, "2AB0000" + price}});
    }
    if (format == "(RSK)") {
        return line({{1, "1"}, {3, number}, {10, "Ny"}, {37, "ST"}, {41, "0432"}}) +
               line({{1, "2AB0000" + price + " R12345"}});
    }
    if (format == "(FINFO)") {
        return line({{1, "AB"},
                     {11, "ART" + number},
                     {29, number},
                     {116, "Ny"},
                     {246, "0000" + price},
                     {254, "ST"},
                     {264, "20260105"},
                     {329, "0000" + price}});
    }
    if (format == "lines") return fmt::format("{}\r\nNy {}\r\n{}\r\nA{}\r\n", number, number, price, number);
    if (format == "pieces") return fmt::format("{:<10}{:<10}{:<10}{:<10}\r\n", number, "Ny", price, "A" + number);
    const char separator = format == "tabs" ? '\t' : ';';
    return fmt::format("{0}{1}Ny {0}{1}{2}{1}A{0}\r\n", number, separator, price);
}

void fill(TradeWorld& world, const std::string& format, int records) {
    for (int product = 0; product < records; product += 3) {
        const std::string number = numberOf(product);
        world.add("Produkt", {{"Nummer", number}, {"Benämning", "Gammal"}, {"Leverantör", "1010"}, {"Inpris", 1.25}});
        world.add("Levprislista", {{"Produktnr", number}, {"Leverantör", "1010"}, {"Inpris", 1.25}});
        world.add("Prodaltprodnr",
                  {{"Produktnr", number}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "B" + number}});
    }
    std::string file = format == "(RSK)" ? "0260105\r\n" : "";
    for (int product = 0; product < records; ++product) file += recordOf(format, numberOf(product));
    world.job.fromGroup = "0";
    world.job.toGroup = "9";
    if (format.starts_with('(')) {
        world.priceFile(file, format == "(EIO)" ? CodePage::Windows1252 : CodePage::Oem850);
        return;
    }
    world.job.mask = "Testmask";
    world.job.supplier = "1010";
    const char structure = format == "lines" ? 'F' : format == "pieces" ? 'P' : 'T';
    world.mask({.structure = structure,
                .lines = 4,
                .length = 41,
                .columns = 4,
                .supplierPrices = true,
                .relations = {{1, "Nummer", 'S', 'U', 1, 10},
                              {2, "Benämning", 'I', 'U', 11, 10},
                              {3, "Inpris", 'I', 'U', 21, 10},
                              {4, "Alternativ 1", 'I', 'U', 31, 10}}});
    world.priceFile(file);
    if (format != "delimited") return;
    SourceSettings source;
    source.format.kind = SourceKind::Delimited;
    for (int column = 1; column <= 4; ++column) source.columns.push_back({.column = column, .from = {"", column}});
    JobOptionsFile(world.data()).setSource(world.job.name, source);
}

/// The rows of each product, by its number.
std::map<std::string, std::string> byProduct(const std::string& rows) {
    std::map<std::string, std::string> products;
    std::istringstream lines(rows);
    constexpr std::size_t kDigits = 7;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t at = line.find(" \"1");
        if (at == std::string::npos || line.size() < at + kDigits + 3 || line[at + kDigits + 2] != '"') continue;
        products[line.substr(at + 2, kDigits)] += line + "\n";
    }
    return products;
}

}  // namespace

std::vector<int> spread(int calls, int trials) {
    std::set<int> places;
    for (int trial = 0; trial < trials; ++trial) places.insert(1 + (calls - 1) * trial / std::max(trials - 1, 1));
    return {places.begin(), places.end()};
}

DataFolder::DataFolder(const fs::path& like) { fs::copy(like, path(), fs::copy_options::recursive); }

std::function<int(std::ostream& told)> DataFolder::command(const std::vector<std::string>& arguments) const {
    const fs::path programs = programFolder.empty() ? fs::path(KOLMERA_BIN_DIR) : programFolder;
    return [arguments, programs, data = path().string(), settings = folder_ / "settings.ini"](std::ostream& told) {
        std::vector<std::string> all = arguments;
        all.insert(all.end(), {"--data", data});
        std::ostringstream out;
        const std::atomic<bool> cancel{false};
        return cli::runCommandLine(all, {.out = out,
                                         .err = told,
                                         .programFolder = programs,
                                         .settingsFile = settings,
                                         .locale = Locale(Locale::Kind::Swedish),
                                         .cancel = cancel});
    };
}

Outcome DataFolder::run(const std::vector<std::string>& arguments, CallPlan plan) const {
    plan.folder = folder_.path();
    return inChild(plan, command(arguments));
}

std::string DataFolder::rows() const { return companyRows(*openFileDatabase(company(), OpenOptions())); }

std::map<std::string, std::string> DataFolder::otherFiles() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(path())) {
        const std::string name = entry.path().filename().string();
        if (entry.is_regular_file() && !name.starts_with("FTG1.mdb")) files[name] = readWholeFile(entry.path());
    }
    return files;
}

RunWorld::RunWorld(const std::string& format, int records) : records_(records) {
    TradeWorld world(format.starts_with('(') ? format : "Test");
    fill(world, format, records);
    const std::optional<Job> there = JobFile(world.data()).find(world.job.name);
    world.job.number = there ? there->number : 0;
    JobFile(world.data()).save(world.job);
    job_ = world.job.name;
    // The session above is still open; looking at the copy closes its log.
    fs::copy(world.data(), before_.path(), fs::copy_options::recursive);
    beforeRows_ = before_.rows();
}

std::vector<std::string> RunWorld::command(bool emptied) const {
    std::vector<std::string> arguments = {"run", job_};
    if (emptied) arguments.emplace_back("--empty");
    return arguments;
}

int RunWorld::batches(const std::string& rows, const std::string& after, bool emptied) const {
    const auto now = byProduct(rows), then = byProduct(after), old = byProduct(beforeRows_);
    const auto of = [](const auto& products, const std::string& number) {
        const auto found = products.find(number);
        return found == products.end() ? std::string() : found->second;
    };
    int done = 0;
    while (done < records_ && of(now, numberOf(done)) == of(then, numberOf(done))) ++done;
    if (done == records_) return records_ / kBatch + 1;
    for (int product = done; product < records_; ++product) {
        const std::string left = of(now, numberOf(product)), was = of(old, numberOf(product));
        const bool goes = emptied && (left.empty() || (done == 0 && was.find(left) != std::string::npos));
        if (left != was && !goes) return -1;
    }
    return done % kBatch == 0 ? done / kBatch : -1;
}

}  // namespace kolmera::test
