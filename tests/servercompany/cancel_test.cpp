#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "cli/climachine.h"
#include "definitions/jobfile.h"
#include "support/serverline.h"
#include "support/testserver.h"

namespace kolmera::test {
namespace {

/// Nothing limits how long the server may be silent.
constexpr auto kForEver = ";LoginTimeout=0;QueryTimeout=0";

/// The demo company on the server, behind a line that can fall silent, with a run that can be taken back.
class CancelledCommand : public testing::Test {
  protected:
    void SetUp() override {
        TestServer& server = TestServer::ofProcess();
        server.reset();
        run({"demo", machine.data()});
        run({"add-server", "TEST", "--connect", server.connectString() + line.words() + kForEver, "--data",
             machine.data()});
        command({"copy-company", "FTG1.mdb", "SQL;TEST"});
        JobFile jobs(machine.data());
        for (Job job : jobs.all()) {
            job.company = "SQL;TEST";
            jobs.save(job);
        }
    }
    int command(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data", machine.data()});
        return machine.run(arguments);
    }
    void run(const std::vector<std::string>& arguments) { ASSERT_EQ(machine.run(arguments), 0) << machine.err(); }

    ServerLine line;
    CliMachine machine;
};

TEST_F(CancelledCommand, EndsWhileTheServerIsSilent) {
    using Words = std::vector<std::string>;
    const std::string number(
        textOf(TestServer::ofProcess().open()->open("SELECT Nummer FROM Produkt", RecordsetType::Snapshot)->value(0)));
    const struct {
        const char* fault;
        Words words;
    } cases[] = {{"copying to a server hangs", {"copy-company", "FTG1.mdb", "SQL;TEST"}},
                 {"a run hangs", {"run", "(FINFO)"}},
                 {"a preview hangs", {"preview", "(FINFO)"}},
                 {"taking back hangs", {"undo", "last"}},
                 {"copying from a server hangs", {"copy-company", "SQL;TEST", "FTG2.mdb"}},
                 {"a register hangs", {"register", "suppliers", "list", "--company", "SQL;TEST"}},
                 {"the look at a product hangs", {"product", number, "--company", "SQL;TEST"}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const int before = line.pieces();
        const int code = command(c.words);
        ASSERT_TRUE(code == 0 || code == 3) << machine.err();
        std::filesystem::remove(std::filesystem::path(machine.data()) / "FTG2.mdb");
        const int all = line.pieces() - before;
        for (const int silentAt : {1, std::min(all / 2, 60)}) {
            SCOPED_TRACE(silentAt);
            line.fallSilent(silentAt, [&] { machine.cancel = true; });
            EXPECT_EQ(command(c.words), 130) << machine.err();
            machine.cancel = false;
            line.speakAnew();
            std::filesystem::remove(std::filesystem::path(machine.data()) / "FTG2.mdb");
        }
    }
}

/// Over a long line everything takes its time, though the server answers.
TEST_F(CancelledCommand, EndsBeforeItHasLearnedAllTables) {
    line.fallSilent(40, [&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1100));
        machine.cancel = true;
        line.speak();
    });
    const int before = line.pieces();
    EXPECT_EQ(command({"run", "(FINFO)"}), 130) << machine.err();
    EXPECT_LT(line.pieces() - before, 60);
}

}  // namespace
}  // namespace kolmera::test
