#include <fmt/format.h>
#include <gtest/gtest.h>

#include <random>
#include <span>

#include "cli/climachine.h"
#include "cli/jobsession.h"
#include "history/runfolder.h"
#include "preview/previewedchanges.h"
#include "support/testserver.h"
#include "support/worlds.h"
#include "tradeformats/tradeworld.h"

// A preview tells, cell by cell, what the run that follows it changes.

namespace kolmera::test {
namespace {

class Random {
  public:
    explicit Random(unsigned seed) : numbers_(seed) {}
    int below(int limit) { return static_cast<int>(numbers_() % static_cast<unsigned>(limit)); }
    bool oneOf(int many) { return below(many) == 0; }
    template <typename T>
    T pick(std::initializer_list<T> values) {
        return values.begin()[below(static_cast<int>(values.size()))];
    }

  private:
    std::mt19937 numbers_;
};

/// Products of which some are in the file, which has new ones too, and texts that are no numbers and no dates.
class RandomWorld : public TradeWorld {
  public:
    RandomWorld(Random& random, const std::string& name) : TradeWorld(name), random_(random) {
        for (int i = 0; i < 12; ++i) addProduct(numberOf(i));
        keeping = RecordKeeping{.folder = RunFolder(data()).path(), .user = {}};
        job.fromGroup = "0";
        job.toGroup = "9";
        if (name == "Test") makeMask();
    }

    void file() {
        std::string lines;
        for (int i = 0; i < 40; ++i) lines += job.name == "Test" ? maskLine() : tradeLines();
        priceFile(lines, job.name == "(FINFO)" ? CodePage::Oem850 : CodePage::Windows1252);
    }

  private:
    static std::string numberOf(int i) { return std::to_string(1000000 + i * 7); }
    /// Letter case does not count.
    std::string number() {
        if (random_.oneOf(15)) return {};
        return numberOf(random_.below(18)) + random_.pick({"", "", "", "x", "X"});
    }
    std::string price() {
        if (random_.oneOf(12)) return "0012O500";
        return random_.oneOf(12) ? "        " : fmt::format("{:08}", random_.below(1000000));
    }

    void addProduct(const std::string& number) {
        add("Produkt",
            {{"Nummer", number},
             {"Söknamn", random_.oneOf(2) ? numberOf(random_.below(18)) : ""},
             {"Levartikelnr", random_.oneOf(2) ? numberOf(random_.below(6)) + "x" : numberOf(random_.below(18))},
             {"Leverantör", random_.pick({"1010", "1020", ""})},
             {"Inpris", random_.below(1000) / 4.0},
             {"1Utpris", random_.below(1000) / 8.0},
             {"1Pålägg", random_.below(3) * 12.5},
             {"3Pålägg", random_.below(2) * 20.0}});
        if (random_.oneOf(2)) add("Levprislista", {{"Produktnr", number}, {"Leverantör", "1010"}, {"Inpris", 1.25}});
        if (random_.oneOf(2))
            add("Prodaltprodnr", {{"Produktnr", number}, {"Nummer", std::int64_t{1}}, {"Alternativnr", number + "A"}});
        if (random_.oneOf(3))
            add("Prodaltprodnr", {{"Produktnr", number}, {"Nummer", std::int64_t{2}}, {"Alternativnr", ""}});
    }

    void makeMask() {
        job.mask = "Testmask";
        job.supplier = "1010";
        const auto rule = [this] { return random_.pick({'U', 'U', 'S', 'I', 'D'}); };
        mask({.createNew = !random_.oneOf(4),
              .supplierPrices = random_.oneOf(2),
              .relations = {{1, random_.pick({"Nummer", "Nummer", "Söknamn", "Levartikelnr", "Alternativ 1"}), 'S'},
                            {2, "Benämning", 'I', rule()},
                            {3, random_.pick({"Inpris", "2Utpris"}), random_.pick({'I', '2'}), rule()},
                            {4, random_.pick({"1Utpris", "1Pålägg", "Vikt", "Sortering"}), 'I', rule()},
                            {5, random_.pick({"Alternativ 1", "Alternativ 3", "Söknamn", "Levartikelnr"}), 'I', rule()},
                            {6, random_.pick({"Prisändrdat", "Leveranstid", "Prislista"}), 'I', rule()}}});
    }
    std::string maskLine() {
        return fmt::format("{}\tNy {}\t{}\t{}\t{}\t{}\r\n", number(), random_.below(5),
                           random_.pick({"12,50", "7", "1O", "", "0"}), random_.pick({"3,25", "44", "x", ""}),
                           random_.pick({"A1", "A2", ""}), random_.pick({"2026-01-05", "5 dagar", "31", ""}));
    }
    std::string tradeLines() {
        const std::string code = random_.pick({"AB", "CD", "XX"});
        const std::string date = random_.pick({"20260105", "20261399"});
        if (job.name == "(FINFO)") {
            return line({{1, code},
                         {11, "ART" + number()},
                         {29, number()},
                         {71, random_.oneOf(2) ? "7310865004703" : ""},
                         {116, "Ny"},
                         {246, price()},
                         {254, "ST"},
                         {264, date},
                         {296, random_.pick({"00001000000", "00010000000", "0000A"})},
                         {329, price()}});
        }
        return line({{1, "1"}, {2, number()}, {9, "Ny"}, {34, date}}) + line({{1, "2" + code + price()}});
    }

    Random& random_;
};

TEST(PreviewAndRun, ChangeTheSameInRandomWorlds) {
    for (unsigned seed = 0; seed < worlds(16, 4); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        RandomWorld world(random, random.pick({"Test", "Test", "Test", "Test", "(EIO)", "(RSK)", "(FINFO)"}));
        for (int round = 0; round < 2; ++round) {  // the second one finds what the first has made
            SCOPED_TRACE(round);
            const bool emptyTables = random.oneOf(5);
            world.port.confirmation.emptyTables = emptyTables;
            world.file();
            const CompanyState before = stateOf(world.session());
            const Preview preview = world.preview({.emptyTables = emptyTables});
            ASSERT_NE(preview.record, nullptr);
            EXPECT_EQ(differenceOf(before, stateOf(world.session())), "") << "the preview has changed the company";
            const RunSummary run = world.run();
            const CompanyState after = stateOf(world.session());
            EXPECT_EQ(differenceOf(changed(before, *preview.record), after), "");
            const RecordReader record(RunFolder(world.data()).file(world.keeping->id));
            EXPECT_EQ(differenceOf(changed(before, record), after), "") << "by the run's own record";
            EXPECT_EQ(fmt::format("{} {} {} {} {}", run.records, run.newProducts, run.changed, run.skipped,
                                  run.report.failed()),
                      fmt::format("{} {} {} {} {}", preview.summary.records, preview.summary.newProducts,
                                  preview.summary.changed, preview.summary.skipped, preview.summary.report.failed()));
        }
    }
}

/// The demo in a file or, where there is one, on the test server.
class Demo : public DemoMachine {
  public:
    Demo() {
        if (!TestServer::named()) return;
        TestServer& server = TestServer::ofProcess();
        server.reset();
        EXPECT_EQ(run({"add-server", "TEST", "--connect", server.connectString(), "--data", data()}), 0) << err();
        EXPECT_EQ(run({"copy-company", "FTG1.mdb", "SQL;TEST", "--data", data()}), 0) << err();
        JobFile jobs(data());
        for (Job job : jobs.all()) {
            job.company = "SQL;TEST";
            jobs.save(job);
        }
    }
    [[nodiscard]] CompanyState state() const {
        return stateOf(TestServer::named() ? TestServer::ofProcess().session(Locale()) : *open());
    }
    Preview preview(const Job& job) {
        std::ostringstream out, err;
        const cli::Surroundings surroundings{.out = out,
                                             .err = err,
                                             .programFolder = programFolder,
                                             .settingsFile = file("settings.ini"),
                                             .locale = Locale(Locale::Kind::Swedish),
                                             .cancel = cancel};
        const cli::JobArguments arguments{.job = job.name, .dataFolder = data(), .locale = {}};
        Preview preview;
        cli::JobSession(arguments, surroundings).carryOut(job, [&](ImportContext& context) {
            preview = previewRun(context, job.name, {});
            return preview.summary;
        });
        return preview;
    }
};

TEST(PreviewAndRun, ChangeTheSameInTheDemo) {
    Demo demo;
    CompanyState state = demo.state();
    const std::vector<Job> jobs = JobFile(demo.data()).all();
    for (const Job& job : std::span(jobs).first(worlds(static_cast<unsigned>(jobs.size()), 3))) {
        SCOPED_TRACE(job.name);
        const Preview preview = demo.preview(job);
        ASSERT_NE(preview.record, nullptr);
        demo.runJob(job.name, {"--force"});  // one of them has limits
        const CompanyState previewed = changed(std::move(state), *preview.record);
        state = demo.state();
        EXPECT_EQ(differenceOf(previewed, state), "");
    }
}

}  // namespace
}  // namespace kolmera::test
