// What the engine costs beside bare SQLite: the same work on the same product table, once through recordsets, once
// through prepared statements written by hand, with the same pragmas and the same physical commits. Prints the ratio of
// the times at the end.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "db/companyschema.h"
#include "platform/engine/database.h"
#include "platform/engine/sqlite/collation.h"

namespace kolmera {
namespace {

constexpr int kProducts = 20000;
constexpr int kBatch = 25;  // records between the commits of a run
constexpr auto kJoin = std::chrono::milliseconds(250);

/// The columns that a wholesaler's record gives, with what they become; only prices and dates change.
struct Columns {
    static constexpr std::array kTexts = {"Benämning", "InköpsEnhet", "Försäljenhet", "Statistikenhet",
                                          "Grupp",     "Leverantör",  "Levartikelnr"};
    static constexpr std::array kPrices = {"Inpris", "1Utpris"};
    static constexpr std::array kDates = {"Prisändrdat", "Förändringsdatum"};
};

std::string numberOf(int product) {
    std::string digits = std::to_string(1000000 + product);
    return "E" + digits;
}

std::array<std::string, 7> textsOf(int product) {
    return {"Benämning av produkt " + std::to_string(product),
            "ST",
            "ST",
            "ST",
            std::to_string(1000 + product % 90),
            "50" + std::to_string(product % 7),
            numberOf(product)};
}

std::filesystem::path folder() {
    const auto path = std::filesystem::temp_directory_path() / "kolmera-engine-bench";
    std::filesystem::create_directories(path);
    return path;
}

void addProducts(Database& database, int first, int count) {
    const auto products = database.open("Produkt", RecordsetType::Table);
    database.begin();
    for (int i = first; i < first + count; ++i) {
        const auto texts = textsOf(i);
        products->addNew();
        products->set("Nummer", numberOf(i));
        for (std::size_t k = 0; k < texts.size(); ++k) products->set(Columns::kTexts[k], texts[k]);
        for (const char* column : Columns::kPrices) products->set(column, 10.0 + i);
        for (const char* column : Columns::kDates) products->set(column, Date{45000});
        products->update();
    }
    database.commit();
}

/// A company with products, made once, and copied for every measurement.
std::filesystem::path companyCopy() {
    const auto original = folder() / "original.mdb";
    static const bool made [[maybe_unused]] = [&] {
        std::filesystem::remove(original);
        createFileDatabase(original, companySchema());
        addProducts(*openFileDatabase(original, OpenOptions()), 0, kProducts);
        return true;
    }();
    const auto copy = folder() / "copy.mdb";
    std::filesystem::copy_file(original, copy, std::filesystem::copy_options::overwrite_existing);
    return copy;
}

// ---------------------------------------------------------------------------------------------- through the engine

/// Ordinals of the columns, looked up once.
struct Ordinals {
    explicit Ordinals(Recordset& products) : number(products.ordinal("Nummer")) {
        for (const char* column : Columns::kTexts) texts.push_back(products.ordinal(column));
        for (const char* column : Columns::kPrices) prices.push_back(products.ordinal(column));
        for (const char* column : Columns::kDates) dates.push_back(products.ordinal(column));
    }
    int number;
    std::vector<int> texts, prices, dates;
};

void writeRecord(Recordset& products, const Ordinals& ordinals, int product, double price, Date date) {
    auto texts = textsOf(product);
    for (std::size_t k = 0; k < texts.size(); ++k) products.set(ordinals.texts[k], std::move(texts[k]));
    for (const int column : ordinals.prices) products.set(column, price);
    for (const int column : ordinals.dates) products.set(column, date);
    products.update();
}

void engineRun(benchmark::State& state, int first, bool adding) {
    const auto database = openFileDatabase(companyCopy(), OpenOptions());
    const auto products = database->open("Produkt", RecordsetType::Table);
    products->setIndex("Nummer");
    const Ordinals ordinals(*products);
    for (auto _ : state) {
        database->begin();
        for (int i = 0; i < kProducts; ++i) {
            const Value key = numberOf(first + i);
            products->seek("=", {&key, 1});
            if (adding != products->noMatch()) return state.SkipWithError("the seek went wrong");
            if (adding) {
                products->addNew();
                products->set(ordinals.number, key);
            } else {
                products->edit();
            }
            writeRecord(*products, ordinals, first + i, 20.0 + i, Date{46000});
            if (i % kBatch == kBatch - 1) {
                database->commitJoined();
                database->begin();
            }
        }
        database->commit();
    }
    state.SetItemsProcessed(kProducts);
}

// ----------------------------------------------------------------------------------------------- through bare SQLite

void check(int code) {
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) return;
    std::fprintf(stderr, "sqlite: %s\n", sqlite3_errstr(code));
    std::abort();
}

class Bare {
  public:
    explicit Bare(const std::filesystem::path& file) {
        check(sqlite3_open_v2(file.c_str(), &connection_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr));
        check(registerSwedishCollation(connection_));
        for (const char* pragma : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL", "PRAGMA cache_size=-65536",
                                   "PRAGMA wal_autocheckpoint=16000", "PRAGMA temp_store=MEMORY"}) {
            run(pragma);
        }
    }
    Bare(const Bare&) = delete;
    Bare& operator=(const Bare&) = delete;
    ~Bare() {
        for (sqlite3_stmt* statement : statements_) sqlite3_finalize(statement);
        sqlite3_close(connection_);
    }

    void run(const char* statement) { check(sqlite3_exec(connection_, statement, nullptr, nullptr, nullptr)); }

    sqlite3_stmt* prepare(const std::string& statement) {
        sqlite3_stmt* prepared = nullptr;
        check(sqlite3_prepare_v3(connection_, statement.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr));
        statements_.push_back(prepared);
        return prepared;
    }

  private:
    sqlite3* connection_ = nullptr;
    std::vector<sqlite3_stmt*> statements_;
};

void bindText(sqlite3_stmt* statement, int parameter, const std::string& text) {
    sqlite3_bind_text(statement, parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

/// A row as a hand-written loader would hold it.
struct BareRow {
    std::int64_t id = 0;
    std::array<std::string, 7> texts;
    std::array<double, 2> prices{};
    std::array<Date, 2> dates{};
};

std::string_view textAt(sqlite3_stmt* statement, int column) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

bool seekBare(sqlite3_stmt* select, const std::string& key, BareRow& row) {
    bindText(select, 1, key);
    const bool found = sqlite3_step(select) == SQLITE_ROW;
    if (found) {
        int column = 0;
        row.id = sqlite3_column_int64(select, column++);
        for (std::string& text : row.texts) text.assign(textAt(select, column++));
        for (double& price : row.prices) price = sqlite3_column_double(select, column++);
        for (Date& date : row.dates) date = Date::fromIso(textAt(select, column++)).value_or(Date{});
    }
    sqlite3_reset(select);
    return found;
}

std::string columnList(const char* first, bool texts) {
    std::string list = first;
    const auto add = [&](const char* column) { list += (list.empty() ? "\"" : ", \"") + std::string(column) + "\""; };
    if (texts) std::for_each(Columns::kTexts.begin(), Columns::kTexts.end(), add);
    std::for_each(Columns::kPrices.begin(), Columns::kPrices.end(), add);
    std::for_each(Columns::kDates.begin(), Columns::kDates.end(), add);
    return list;
}

void bindPricesAndDates(sqlite3_stmt* statement, int& parameter, double price, const std::string& date) {
    for (std::size_t k = 0; k < Columns::kPrices.size(); ++k) sqlite3_bind_double(statement, ++parameter, price);
    for (std::size_t k = 0; k < Columns::kDates.size(); ++k) bindText(statement, ++parameter, date);
}

void bareRun(benchmark::State& state, int first, bool adding) {
    Bare bare(companyCopy());
    sqlite3_stmt* select = bare.prepare("SELECT " + columnList("rowid", true) + " FROM Produkt WHERE Nummer = ?");
    sqlite3_stmt* update = bare.prepare(
        "UPDATE Produkt SET Inpris = ?, \"1Utpris\" = ?, Prisändrdat = ?, Förändringsdatum = ? WHERE rowid = ?");
    sqlite3_stmt* insert = bare.prepare("INSERT INTO Produkt (" + columnList("Nummer", true) +
                                        ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    BareRow row;
    for (auto _ : state) {
        bare.run("BEGIN IMMEDIATE");
        auto began = std::chrono::steady_clock::now();
        for (int i = 0; i < kProducts; ++i) {
            const std::string key = numberOf(first + i);
            if (seekBare(select, key, row) == adding) return state.SkipWithError("the seek went wrong");
            const auto texts = textsOf(first + i);
            const double price = 20.0 + i;
            const std::string date = Date{46000}.iso();
            int parameter = 0;
            sqlite3_stmt* write = adding ? insert : update;
            if (adding) {
                bindText(write, ++parameter, key);
                for (const std::string& text : texts) bindText(write, ++parameter, text);
            } else if (texts != row.texts) {
                return state.SkipWithError("the texts changed");
            }
            bindPricesAndDates(write, parameter, price, date);
            if (!adding) sqlite3_bind_int64(write, ++parameter, row.id);
            check(sqlite3_step(write));
            sqlite3_reset(write);
            if (i % kBatch == kBatch - 1 && std::chrono::steady_clock::now() - began > kJoin) {
                bare.run("COMMIT");
                bare.run("BEGIN IMMEDIATE");
                began = std::chrono::steady_clock::now();
            }
        }
        bare.run("COMMIT");
    }
    state.SetItemsProcessed(kProducts);
}

// ------------------------------------------------------------------------------------------------------- the ratios

void seekAndUpdateEngine(benchmark::State& state) { engineRun(state, 0, false); }
void seekAndUpdateBare(benchmark::State& state) { bareRun(state, 0, false); }
void seekAndAddEngine(benchmark::State& state) { engineRun(state, kProducts, true); }
void seekAndAddBare(benchmark::State& state) { bareRun(state, kProducts, true); }

/// Shows the results as usual and keeps the medians.
class RatioReporter final : public benchmark::ConsoleReporter {
  public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.aggregate_name == "median") medians_[run.run_name.function_name] = run;
        }
    }

    void printRatio(const std::string& work) {
        const Run& engine = medians_[work + "Engine"];
        const Run& bare = medians_[work + "Bare"];
        constexpr double kMicroseconds = 1000.0 / kProducts;  // a record, from milliseconds a pass
        std::printf("ratio %-14s %.3f of CPU time (engine %.2f us, bare SQLite %.2f us a record), %.3f of real time\n",
                    work.c_str(), engine.GetAdjustedCPUTime() / bare.GetAdjustedCPUTime(),
                    engine.GetAdjustedCPUTime() * kMicroseconds, bare.GetAdjustedCPUTime() * kMicroseconds,
                    engine.GetAdjustedRealTime() / bare.GetAdjustedRealTime());
    }

  private:
    std::map<std::string, Run> medians_;
};

}  // namespace
}  // namespace kolmera

int main(int argc, char** argv) {
    std::vector<char*> arguments(argv, argv + argc);
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string aggregates = "--benchmark_display_aggregates_only=true";
    arguments.insert(arguments.begin() + 1, {interleaving.data(), aggregates.data()});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    using namespace kolmera;
    const struct {
        const char* name;
        void (*function)(benchmark::State&);
    } benchmarks[] = {{"seekAndUpdateEngine", seekAndUpdateEngine},
                      {"seekAndUpdateBare", seekAndUpdateBare},
                      {"seekAndAddEngine", seekAndAddEngine},
                      {"seekAndAddBare", seekAndAddBare}};
    for (const auto& b : benchmarks) {
        benchmark::RegisterBenchmark(b.name, b.function)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Iterations(1)
            ->Repetitions(9);
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const char* work : {"seekAndUpdate", "seekAndAdd"}) reporter.printRatio(work);
    std::filesystem::remove_all(folder());
    return 0;
}
