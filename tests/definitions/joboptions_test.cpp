#include "definitions/joboptions.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "definitions/jobfile.h"
#include "platform/error.h"
#include "support/errorof.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

Job saved(JobFile& jobs, const std::string& name) {
    Job job;
    job.name = name;
    job.number = jobs.save(job, std::nullopt);
    return job;
}

TEST(JobOptions, FollowTheirJobAndKeepWhatTheyDoNotKnow) {
    const TemporaryFolder folder;
    folder.write("kolmera.json", R"({"version": 7, "jobs": {"Skruv": {"source": "ftp"}, "Färg": {}}})");
    JobFile jobs(folder.path());
    JobOptionsFile options(folder.path());
    Job job;
    job.name = "Skruv";
    job.number = jobs.save(job);  // not as a new one, whose name would be free of options
    options.setLimits("Skruv", {.largestChange = 50, .fewestRecords = 10});

    Job renamed = job;
    renamed.name = "Bult";
    jobs.save(renamed, job);
    EXPECT_EQ(options.limits("Skruv"), Limits{});
    EXPECT_EQ(options.limits("Bult"), (Limits{.largestChange = 50, .fewestRecords = 10}));
    const std::string content = folder.read("kolmera.json");
    EXPECT_NE(content.find("\"source\": \"ftp\""), std::string::npos) << content;
    EXPECT_NE(content.find("\"version\": 7"), std::string::npos) << content;

    jobs.remove({renamed});
    EXPECT_EQ(folder.read("kolmera.json").find("Bult"), std::string::npos);
    EXPECT_NE(folder.read("kolmera.json").find("Färg"), std::string::npos);
}

TEST(JobOptions, StayWithANamesakeAndDoNotPassToANewJob) {
    const TemporaryFolder folder;
    JobFile jobs(folder.path());
    JobOptionsFile options(folder.path());
    Job first;
    first.name = "Skruv";
    first.number = jobs.save(first);
    Job second = first;
    second.number = 0;
    second.number = jobs.save(second);
    options.setLimits("Skruv", {.zeroPrices = 0});
    Job renamed = second;
    renamed.name = "Bult";
    jobs.save(renamed, second);
    EXPECT_EQ(options.limits("Skruv"), (Limits{.zeroPrices = 0}));
    EXPECT_EQ(options.limits("Bult"), (Limits{.zeroPrices = 0}));

    options.setLimits("Mutter", {.zeroPrices = 3});  // of a job that the suite has removed
    saved(jobs, "Mutter");
    EXPECT_EQ(options.limits("Mutter"), Limits{});
}

TEST(JobOptions, WhatCannotBeUnderstoodIsLeftAlone) {
    for (const char* content :
         {"{", "[]", R"({"jobs": []})", R"({"jobs": {"Skruv": 1}})", R"({"jobs": {"Skruv": {"limits": 1}}})",
          R"({"jobs": {"Skruv": {"limits": {"zero-prices": "many"}}}})",
          R"({"jobs": {"Skruv": {"limits": {"zero-prices": -1}}}})"}) {
        SCOPED_TRACE(content);
        const TemporaryFolder folder;
        JobFile jobs(folder.path());
        Job job;
        job.name = "Skruv";
        job.number = jobs.save(job);
        folder.write("KOLMERA.JSON", content);
        EXPECT_EQ(errorOf([&] { static_cast<void>(JobOptionsFile(folder.path()).limits("Skruv")); }), errors::kDamaged);
        Job other = job;
        other.supplier.assign(1, '1');
        jobs.save(other, job);
        EXPECT_EQ(folder.read("KOLMERA.JSON"), content);
    }
}

TEST(JobOptions, AreSavedWithTheirJobOrNotAtAll) {
    const TemporaryFolder folder;
    JobFile jobs(folder.path());
    Job job;
    job.name = "Skruv";
    const Limits limits{.zeroPrices = 3};
    folder.write("KOLMERA.JSON", "{");
    EXPECT_EQ(errorOf([&] { jobs.save(job, std::nullopt, limits); }), errors::kDamaged);
    EXPECT_EQ(jobs.find("Skruv"), std::nullopt) << "saved without its limits";
    folder.write("KOLMERA.JSON", "");
    jobs.save(job, std::nullopt, limits);
    EXPECT_EQ(JobOptionsFile(folder.path()).limits("Skruv"), limits);
}

TEST(JobOptions, AreNotWrittenThroughALink) {
    const TemporaryFolder folder;
    folder.write("elsewhere", "{}");
    std::filesystem::create_symlink(folder / "elsewhere", folder / "KOLMERA.JSON");
    JobOptionsFile options(folder.path());
    EXPECT_EQ(errorOf([&] { options.setLimits("Skruv", {.zeroPrices = 0}); }), errors::kInvalidPath);
    EXPECT_EQ(folder.read("elsewhere"), "{}");
}

}  // namespace
}  // namespace kolmera::test
