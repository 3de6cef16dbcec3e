#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

#include "definitions/couplingfile.h"
#include "definitions/jobfile.h"
#include "definitions/maskfile.h"
#include "import/templates/templateimport.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

using test::TemporaryFolder;

/// Carries out an operation in a process of its own and kills it at a system call, counted from 1, or lets it end.
/// Whether it was killed; nothing where processes cannot be traced.
std::optional<bool> killedAt(int systemCall, const std::function<void()>& operation) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(2);
        raise(SIGSTOP);
        operation();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) return std::nullopt;
    // The process stops before each call and behind it.
    for (int stop = 0; stop < systemCall * 2 && WIFSTOPPED(status); ++stop) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    if (!WIFSTOPPED(status)) return false;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
}

struct Definitions {
    TemporaryFolder folder;
    JobFile jobs{folder.path()};
    MaskFile masks{folder.path()};
    CouplingFile couplings{folder.path()};

    void fill() {
        for (const char* name : {"A", "B", "C"}) {
            Job job;
            job.name = name;
            jobs.save(job);
            Mask mask;
            mask.Namn = name;
            masks.save(mask, {{.Källa = 1, .Mål = name[0]}, {.Källa = 2, .Mål = name[0]}});
            couplings.save({.job = "(EIO)", .code = name, .supplier = "1", .mainSupplier = name[0] == 'A'});
        }
    }
    void takeOver(const Definitions& other) const { std::filesystem::copy(other.folder.path(), folder.path()); }
    [[nodiscard]] std::string text() const {
        std::string text;
        for (const Job& job : jobs.all()) text += job.name + job.priceFile + " ";
        for (const Mask& mask : masks.all()) {
            text += "\n" + mask.Namn + ":";
            const WholeMask whole = *masks.read(mask.number);
            for (const Relation& relation : whole.relations) {
                text += fmt::format(" {}>{}", relation.Källa, relation.Mål);
            }
        }
        text += fmt::format("\n{}", JobOptionsFile(folder.path()).limits("(EIO)").zeroPrices.value_or(-1));
        for (const Coupling& each : couplings.ofJob("(EIO)")) text += "\n" + each.code + (each.mainSupplier ? "H" : "");
        return text;
    }
};

void changeJob(Definitions& definitions) {
    Job job = *definitions.jobs.read(2);
    job.priceFile = "pris.txt";
    definitions.jobs.save(job);
}

void changeMask(Definitions& definitions) {
    Mask mask = definitions.masks.read(2)->mask;
    mask.Namn = "new";
    definitions.masks.save(mask, {{.Källa = 7, .Mål = 7}, {.Källa = 8, .Mål = 8}, {.Källa = 9, .Mål = 9}});
}

void changeMainSupplier(Definitions& definitions) {
    definitions.couplings.save({.job = "(EIO)", .code = "C", .supplier = "1", .mainSupplier = true});
}

void takeTemplateIn(Definitions& definitions) {
    JobTemplate made;
    made.definition.job.name = "(EIO)";
    made.definition.job.kind = "E";
    made.definition.job.priceFile = "mall.txt";
    made.definition.mask.emplace().mask.Namn = "B";
    made.definition.mask->relations = {{.Källa = 7, .Mål = 7}};
    made.definition.couplings = {{.job = {}, .code = "D", .supplier = "1", .mainSupplier = true}};
    made.limits.zeroPrices = 0;
    TemplateImport(definitions.folder.path(), made).save();
}

TEST(Interruption, LeavesTheOldOrTheNewAtEverySystemCall) {
    const struct {
        const char* operation;
        std::function<void(Definitions&)> carryOut;
    } operations[] = {
        {"job saved", changeJob},
        {"job removed", [](Definitions& all) { all.jobs.remove({*all.jobs.read(1)}); }},
        {"mask saved", changeMask},
        {"mask removed", [](Definitions& all) { all.masks.remove({all.masks.read(1)->mask}); }},
        {"main supplier moved", changeMainSupplier},
        {"template taken in", takeTemplateIn},
    };
    for (const auto& [operation, carryOut] : operations) {
        SCOPED_TRACE(operation);
        Definitions before, after;
        before.fill();
        after.takeOver(before);
        carryOut(after);
        const std::string oldText = before.text(), newText = after.text();
        ASSERT_NE(oldText, newText);
        for (int call = 1; !HasFailure(); ++call) {
            SCOPED_TRACE(call);
            Definitions definitions;
            definitions.takeOver(before);
            const auto killed = killedAt(call, [&, &run = carryOut] { run(definitions); });
            if (!killed) GTEST_SKIP() << "processes cannot be traced here";
            const std::string text = definitions.text();
            EXPECT_TRUE(text == newText || (*killed && text == oldText)) << text;
            EXPECT_FALSE(std::filesystem::exists(definitions.folder / "KOLMERA.JNL")) << "not completed";
            if (!*killed) break;
        }
    }
}

TEST(Interruption, TwoProgramsLoseNothing) {
    constexpr int kTimes = 10;
    Definitions definitions;
    definitions.fill();
    std::vector<pid_t> programs;
    for (const char* job : {"(EIO)", "(RSK)"}) {
        programs.push_back(fork());
        if (programs.back() != 0) continue;
        for (int time = 0; time < kTimes; ++time) {
            definitions.couplings.save({.job = job, .code = std::to_string(time), .supplier = "1"});
            Mask mask;
            mask.Namn = job + std::to_string(time);
            definitions.masks.save(mask, {{.Källa = 1, .Mål = 1}});
        }
        _exit(0);
    }
    for (const pid_t program : programs) {
        int status = 0;
        waitpid(program, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(definitions.couplings.ofJob("(EIO)").size(), 3U + kTimes);
    EXPECT_EQ(definitions.couplings.ofJob("(RSK)").size(), std::size_t{kTimes});
    EXPECT_EQ(definitions.masks.all().size(), 3U + 2 * kTimes);
    EXPECT_EQ(definitions.masks.read(3 + 2 * kTimes)->relations.size(), 1U);
}

}  // namespace
}  // namespace kolmera
