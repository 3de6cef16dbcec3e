#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <fstream>
#include <thread>

#include "definitions/jobfile.h"
#include "faults/runworld.h"
#include "history/runfolder.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/error.h"
#include "platform/tsv.h"
#include "support/companyrows.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

/// kolmera-cli as it is started by a user or a schedule. The command ends by itself, or is waited for.
class Program {
  public:
    Program(const DataFolder& data, std::vector<std::string> arguments)
        : told_(data.file(fmt::format("told{}", ++started))) {
        arguments.insert(arguments.begin(), KOLMERA_BIN_DIR "/kolmera-cli");
        arguments.insert(arguments.end(), {"--data", data.path().string()});
        std::vector<char*> words;
        for (std::string& argument : arguments) words.push_back(argument.data());
        words.push_back(nullptr);
        std::string settings = "XDG_CONFIG_HOME=" + data.root().string(), locale = "LC_ALL=C.UTF-8";
        char* const environment[] = {settings.data(), locale.data(), nullptr};
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, 1, told_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_adddup2(&files, 1, 2);
        const int failed = posix_spawn(&process_, words.front(), &files, nullptr, words.data(), environment);
        posix_spawn_file_actions_destroy(&files);
        if (failed != 0) throw std::runtime_error("kolmera-cli cannot be started");
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() { wait(); }

    /// The exit code, -1 for an end by a signal.
    int wait() {
        int status = 0;
        if (process_ > 0 && waitpid(std::exchange(process_, 0), &status, 0) > 0) {
            code_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
        return code_;
    }
    [[nodiscard]] std::string told() const { return readWholeFile(told_); }

  private:
    static inline int started = 0;

    fs::path told_;
    pid_t process_ = 0;
    int code_ = -1;
};

/// Another program on the company, until the test lets it end: it counts in a product that no price file has, or reads
/// the same rows twice in one transaction, again and again.
class Neighbour {
  public:
    enum class Does { Write, Read };

    Neighbour(const fs::path& company, Does does)
        : thread_([this, company, does] {
              try {
                  SqliteConnection connection(company, {});
                  connection.prepareForWork();
                  while (!end_) does == Does::Write ? write(connection) : read(connection);
              } catch (const PlatformError& error) {
                  failed_ = error.what();
              }
          }) {}
    Neighbour(const Neighbour&) = delete;
    Neighbour& operator=(const Neighbour&) = delete;
    ~Neighbour() { end(); }

    void end() {
        end_ = true;
        if (thread_.joinable()) thread_.join();
        EXPECT_EQ(failed_, "");
    }
    /// How often it has written, or read.
    [[nodiscard]] int turns() const { return turns_; }

    static std::string counted(int turns) { return fmt::format("{:08}", turns); }

  private:
    static constexpr auto kPause = std::chrono::milliseconds(2);

    void write(SqliteConnection& connection) {
        connection.run(fmt::format("UPDATE Produkt SET Benämning = '{}' WHERE Nummer = 'N'", counted(turns_ + 1)));
        ++turns_;
        std::this_thread::sleep_for(kPause);
    }
    void read(SqliteConnection& connection) {
        connection.run("BEGIN");
        const auto sum = [&] { return connection.number("SELECT SUM(Inpris * 100) + COUNT(*) FROM Produkt"); };
        const std::int64_t first = sum();
        std::this_thread::sleep_for(5 * kPause);
        EXPECT_EQ(sum(), first) << "rows change under a reader";
        connection.run("COMMIT");
        ++turns_;
    }

    std::atomic<bool> end_ = false;
    int turns_ = 0;
    std::string failed_;
    std::thread thread_;
};

/// A world with a product of the neighbour's.
DataFolder& prepared(DataFolder& data) {
    SqliteConnection connection(data.company(), {});
    connection.run(fmt::format("INSERT INTO Produkt (Nummer, Benämning) VALUES ('N', '{}')", Neighbour::counted(0)));
    return data;
}

void expectGood(Program& program, const char* what) { EXPECT_EQ(program.wait(), 0) << what << ": " << program.told(); }

/// The neighbour's count as it was at the beginning.
std::string withoutCount(std::string rows, int turns) {
    const std::size_t at = rows.find(Neighbour::counted(turns));
    EXPECT_NE(at, std::string::npos) << "a neighbour's change is lost";
    if (at != std::string::npos) rows.replace(at, Neighbour::counted(0).size(), Neighbour::counted(0));
    return rows;
}

TEST(ManyPrograms, OnOneCompanyLoseNothing) {
    const RunWorld world("tabs");
    DataFolder data(world.before().path());
    (void)prepared(data);
    const DataFolder alone(data.path());
    ASSERT_EQ(alone.run(world.command(false)).exitCode, 0);
    constexpr std::string_view kLetter = "A\t1\t\t\t\t\r\nN1\t2\t\t\t\t\r\n";
    std::ofstream(data.file("letter.txt"), std::ios::binary) << kLetter;
    const std::vector<std::string> letter = {"discounts", "import", "1020", data.file("letter.txt").string()};
    ASSERT_EQ(alone.run(letter).exitCode, 0);

    Neighbour writer(data.company(), Neighbour::Does::Write), reader(data.company(), Neighbour::Does::Read);
    std::deque<Program> programs;
    for (int i = 0; i < trials(3, 8); ++i) programs.emplace_back(data, world.command(false));
    for (int i = 0; i < 2; ++i) programs.emplace_back(data, letter);
    for (Program& program : programs) expectGood(program, "beside the others");
    Program history(data, {"history", "--json"});
    expectGood(history, "history");
    writer.end();
    reader.end();
    EXPECT_GT(writer.turns(), 1);
    EXPECT_GT(reader.turns(), 1);
    EXPECT_EQ(firstDifference(withoutCount(data.rows(), writer.turns()), alone.rows()), "");

    // Each has its record; what all of them say together is what has happened.
    std::int64_t unreadable = 0;
    const std::vector<RunHeader> runs = RunFolder(data.path()).list(&unreadable);
    EXPECT_EQ(unreadable, 0);
    EXPECT_EQ(std::ranges::count(runs, "completed", &RunHeader::outcome), trials(3, 8));
    for (const RunHeader& run : runs) {
        Program undo(data, {"undo", run.id});
        expectGood(undo, "undo");
    }
    Program back(data, {"discounts", "export", "1020", data.file("back.txt").string()});
    expectGood(back, "export");
    EXPECT_EQ(readWholeFile(data.file("back.txt")), kLetter);
    const std::string undone = withoutCount(data.rows(), writer.turns());
    Program again(data, world.command(false));
    expectGood(again, "run again");
    EXPECT_NE(firstDifference(undone, alone.rows()), "");
    EXPECT_EQ(firstDifference(withoutCount(data.rows(), writer.turns()), alone.rows()), "");
}

TEST(ManyPrograms, TakeBackBesideOthers) {
    const RunWorld world("(EIO)");
    DataFolder data(world.before().path());
    const std::string before = prepared(data).rows();
    ASSERT_EQ(data.run(world.command(true)).exitCode, 0);
    Neighbour reader(data.company(), Neighbour::Does::Read);
    Program first(data, {"undo", "last"}), second(data, {"undo", "last"});
    int done = 0;
    for (Program* undo : {&first, &second}) {
        const int code = undo->wait();
        done += code == 0 ? 1 : 0;
        EXPECT_TRUE(code == 0 || (code == 1 && undo->told().find("låst") != std::string::npos)) << undo->told();
    }
    reader.end();
    EXPECT_GE(done, 1);
    EXPECT_EQ(firstDifference(data.rows(), before), "");
}

/// Two windows that each save a job of their own, beside runs, which read the list.
TEST(ManyPrograms, SaveDefinitionsSideBySide) {
    const RunWorld world("lines");
    const DataFolder data(world.before().path());
    constexpr int kTimes = 25;
    JobFile jobs(data.path());
    for (const char* name : {"A", "B"}) {
        Job job;
        job.name = name;
        jobs.save(job, std::nullopt);
    }
    const auto window = [&](const char* name, std::string& failed) {
        return std::thread([&data, name, &failed] {
            try {
                JobFile own(data.path());
                for (int time = 1; time <= kTimes; ++time) {
                    const std::optional<Job> shown = own.find(name);
                    Job job = shown.value();
                    job.priceFile = fmt::format("{}{}.txt", name, time);
                    own.save(job, shown);
                }
            } catch (const std::exception& error) {
                failed = error.what();
            }
        });
    };
    std::string failed[2];
    std::thread first = window("A", failed[0]), second = window("B", failed[1]);
    Program run(data, world.command(false));
    Program listing(data, {"jobs"});
    expectGood(run, "run");
    expectGood(listing, "jobs");
    first.join();
    second.join();
    EXPECT_EQ(failed[0] + failed[1], "");
    EXPECT_EQ(jobs.find("A")->priceFile, fmt::format("A{}.txt", kTimes));
    EXPECT_EQ(jobs.find("B")->priceFile, fmt::format("B{}.txt", kTimes));
}

}  // namespace
}  // namespace kolmera::test
