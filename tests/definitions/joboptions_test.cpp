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
        EXPECT_EQ(errorOf([&] { static_cast<void>(JobOptionsFile(folder.path()).limits("Skruv")); }),
                  errors::kUnreadableOptions);
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
    SourceSettings source;
    source.format.delimiter = '|';
    const JobOptionsChange both{.limits = limits, .source = source};
    folder.write("KOLMERA.JSON", "{");
    EXPECT_EQ(errorOf([&] { jobs.save(job, std::nullopt, both); }), errors::kUnreadableOptions);
    EXPECT_EQ(jobs.find("Skruv"), std::nullopt) << "saved without its limits";
    folder.write("KOLMERA.JSON", "");
    job.number = jobs.save(job, std::nullopt, both);
    const JobOptionsFile options(folder.path());
    EXPECT_EQ(options.limits("Skruv"), limits);
    EXPECT_EQ(options.source("Skruv"), source);
    jobs.save(job, job, {.source = std::optional<SourceSettings>()});
    EXPECT_EQ(options.limits("Skruv"), limits) << "limits go with the source";
    EXPECT_EQ(options.source("Skruv"), std::nullopt);
}

TEST(JobOptions, NoJobLosesItsSourceWithTheFile) {
    const struct {
        const char* fault;
        const char* content;
        int error;
    } cases[] = {
        {"a job that is not in it stops", R"({"jobs": {"Bult" {"source": {}}}})", 0},
        {"a job that is in it runs", R"({"jobs": {"Bult" {}, "Skruv": {"source": {}}}})", errors::kUnreadableOptions},
        {"what was cut off is not missed", R"({"jobs": {"Bult": {"limits": {}})", errors::kUnreadableOptions},
        {"cut within a text", R"({"jobs": {"Bult": {}, "Skr)", errors::kUnreadableOptions},
        {"another spelling", R"({"jobs": {"Bult" {}, "Skruv": {"source": {}}}})", errors::kUnreadableOptions},
        {"another job's member has no sense", R"({"jobs": {"Bult": 1}})", 0},
    };
    for (const auto& c : cases) {
        const TemporaryFolder folder;
        folder.write("KOLMERA.JSON", c.content);
        const JobOptionsFile options(folder.path());
        EXPECT_EQ(errorOf([&] { EXPECT_EQ(options.source("Skruv"), std::nullopt); }), c.error) << c.fault;
    }
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
