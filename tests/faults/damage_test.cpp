#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <regex>
#include <set>

#include "faults/operations.h"
#include "history/runfolder.h"
#include "platform/lettercase.h"
#include "platform/tsv.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPage = 4096;

/// Damages bytes here and there, a stretch of them, or cuts them off; tells the pages that it has touched.
std::set<std::size_t> damage(const fs::path& file, std::mt19937& chance) {
    std::string bytes = readWholeFile(file);
    std::set<std::size_t> pages;
    const auto spoil = [&](std::size_t at, char byte) {
        bytes[at] = byte;
        pages.insert(at / kPage + 1);
    };
    const auto place = [&] { return chance() % std::max<std::size_t>(bytes.size(), 1); };
    const unsigned kind = chance() % 4;
    if (bytes.empty() || kind == 0) {
        const std::size_t cut = place();
        for (std::size_t at = cut; at < bytes.size(); ++at) pages.insert(at / kPage + 1);
        bytes.resize(cut);
    } else if (kind == 1) {
        const std::size_t from = place(), to = std::min(bytes.size(), from + 1 + chance() % 2000);
        for (std::size_t at = from; at < to; ++at) spoil(at, '\0');
    } else {
        for (unsigned flips = 1 + chance() % 8; flips > 0; --flips) {
            const std::size_t at = place();
            spoil(at, static_cast<char>(bytes[at] ^ (1 << chance() % 8)));
        }
    }
    std::ofstream(file, std::ios::binary) << bytes;
    return pages;
}

/// Rows of tables on each page of a sound file, and the pages that a row continues on, as SQLite itself counts them.
std::map<std::size_t, std::int64_t> rowsByPage(const fs::path& company) {
    sqlite3* connection = nullptr;
    sqlite3_open(company.c_str(), &connection);
    std::map<std::size_t, std::int64_t> rows;
    sqlite3_exec(
        connection,
        "SELECT pageno, ncell FROM dbstat WHERE pagetype = 'leaf' AND name IN "
        "(SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%')",
        [](void* found, int, char** columns, char**) {
            (*static_cast<std::map<std::size_t, std::int64_t>*>(found))[std::stoul(columns[0])] = std::stol(columns[1]);
            return 0;
        },
        &rows, nullptr);
    sqlite3_close(connection);
    return rows;
}

std::int64_t rowCount(const std::string& rows) { return std::ranges::count(rows, '\n'); }

void expectAnAnswer(const Outcome& outcome) {
    EXPECT_TRUE(outcome.ended()) << "signal " << outcome.crashSignal;
    EXPECT_EQ(outcome.told.find("THROWN"), std::string::npos) << outcome.told;
    EXPECT_TRUE(outcome.exitCode == 0 || !outcome.told.empty()) << "stopped without a word";
}

/// A damaged company works, or says that it is damaged; then repairing saves every row of the pages that are whole.
TEST(DamagedCompany, WorksOrIsRepaired) {
    const RunWorld world("tabs", 500);
    const std::map<std::size_t, std::int64_t> rows = rowsByPage(world.before().company());
    const std::int64_t all = rowCount(world.before().rows());
    ASSERT_GT(rows.size(), 10U);
    std::mt19937 chance(7);
    for (int trial = 0; trial < trials(12, 1000); ++trial) {
        SCOPED_TRACE(trial);
        const DataFolder data(world.before().path());
        std::int64_t lost = 0;
        for (const std::size_t page : damage(data.company(), chance)) {
            const auto found = rows.find(page);
            lost += found == rows.end() ? 0 : found->second;
        }
        const Outcome run = data.run(world.command(false));
        expectAnAnswer(run);
        if (run.exitCode == 0) continue;
        const Outcome repaired = data.run({"repair", "FTG1.mdb"});
        expectAnAnswer(repaired);
        ASSERT_EQ(repaired.exitCode, 3) << repaired.told;
        EXPECT_GE(rowCount(data.rows()), all - lost) << "rows of whole pages are lost";
        const Outcome again = data.run(world.command(false));
        expectAnAnswer(again);
        // Settings may be lost, which is told; without the supplier there is no run.
        EXPECT_TRUE(again.exitCode != 1 || lost > 0) << again.told;
    }
}

/// Every other file of the folder: commands work, or say what is wrong.
TEST(DamagedFile, IsReadOrRefused) {
    const Operations operations;
    const Operation& run = operations.all().at(9);
    ASSERT_EQ(run.name, std::string("run"));
    DataFolder whole(run.before->path());
    ASSERT_EQ(whole.run(operations.world().command(false)).exitCode, 0);
    ASSERT_EQ(whole.run({"limits", "Test", "--set", "largest-change=50"}).exitCode, 0);
    ASSERT_EQ(whole.run({"add-server", "A", "--connect", "DSN=a"}).exitCode, 0);
    ASSERT_EQ(whole.run({"couplings", "(EIO)", "--set", "AB=1010", "--main"}).exitCode, 0);
    const std::string record = RunFolder(whole.path()).list().front().id;
    std::vector<fs::path> files;
    for (const auto& [name, content] : whole.otherFiles()) {
        if (!content.empty()) files.emplace_back(name);
    }
    files.push_back(fs::relative(RunFolder(whole.path()).file(record), whole.path()));
    EXPECT_GT(files.size(), 7U);
    const auto commandsThatRead = [&](const fs::path& file) -> std::vector<std::vector<std::string>> {
        if (file.has_parent_path()) return {{"show", record}, {"undo", record}};
        if (equalNoCase(file.string(), "PRISLEV.TXT"))
            return {{"couplings", "(EIO)"}, {"couplings", "(EIO)", "--set", "CD=1010"}};
        if (equalNoCase(file.string(), "DVSQLSvr.ini"))
            return {{"add-server", "B", "--connect", "DSN=b"}, {"copy-company", "FTG1.mdb", "SQL;A"}};
        return {{"limits", "Test"}, operations.world().command(false)};
    };
    std::mt19937 chance(3);
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.string());
        for (int trial = 0; trial < trials(2, 1000); ++trial) {
            SCOPED_TRACE(trial);
            const DataFolder data(whole.path());
            damage(data.path() / file, chance);
            for (const auto& command : commandsThatRead(file)) expectAnAnswer(data.run(command));
            if (HasFailure()) break;
        }
    }
}

}  // namespace
}  // namespace kolmera::test
