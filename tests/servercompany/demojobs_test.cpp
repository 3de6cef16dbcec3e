#include <gtest/gtest.h>

#include "cli/climachine.h"
#include "definitions/jobfile.h"
#include "support/companyrows.h"
#include "support/testserver.h"

namespace kolmera::test {
namespace {

/// Runs every job of the data folder in the order of the list, and puts their exit codes together.
std::string runAllJobs(CliMachine& machine) {
    std::string codes;
    JobFile jobs(machine.data());
    for (const Job& job : jobs.all()) {
        codes += job.name + " " + std::to_string(machine.run({"run", job.name, "--data", machine.data()})) + "\n";
    }
    return codes;
}

TEST(DemoJobs, LeaveTheSameRowsOnAServerAsInAFile) {
    CliMachine file;
    ASSERT_EQ(file.run({"demo", file.data()}), 0) << file.err();

    TestServer& testServer = TestServer::ofProcess();
    testServer.reset();
    CliMachine server;
    ASSERT_EQ(server.run({"demo", server.data()}), 0) << server.err();
    ASSERT_EQ(server.run({"add-server", "TEST", "--connect", testServer.connectString(), "--data", server.data()}), 0)
        << server.err();
    ASSERT_EQ(server.run({"copy-company", "FTG1.mdb", "SQL;TEST", "--data", server.data()}), 0) << server.err();
    JobFile jobs(server.data());
    for (Job job : jobs.all()) {
        job.company = "SQL;TEST";
        jobs.save(job);
    }

    EXPECT_EQ(runAllJobs(server), runAllJobs(file));
    EXPECT_EQ(firstDifference(companyRows(*file.open()), companyRows(*testServer.open())), "");
}

}  // namespace
}  // namespace kolmera::test
