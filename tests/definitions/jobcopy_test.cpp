#include "definitions/jobcopy.h"

#include <gtest/gtest.h>

#include "definitions/maskfile.h"
#include "support/errorof.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

TEST(NameOfCopy, IsFreeAndFits) {
    const struct {
        const char* fault;
        std::string name;
        std::vector<std::string> taken;
        int length;
        const char* copy;
    } cases[] = {
        {"no word behind it", "Skruv", {}, 100, "Skruv (kopia)"},
        {"a name that another has in other letters", "Skruv", {"SKRUV (kopia)"}, 100, "Skruv (kopia 2)"},
        {"longer than the record's field", "Åååååååååååå", {}, 12, "Åååå (kopia)"},
        {"a blank before the end of a cut name", "Åå åååååååååå", {}, 11, "Åå (kopia)"},
    };
    for (const auto& c : cases) EXPECT_EQ(nameOfCopy(c.name, "kopia", c.taken, c.length), c.copy) << c.fault;
}

TEST(CopyJob, TakesLimitsAndMaskAlong) {
    const TemporaryFolder folder;
    JobFile jobs(folder.path());
    MaskFile masks(folder.path());
    Mask mask;
    mask.Namn = "Lista";
    mask.AntalKolumner = 4;
    masks.save(mask, {{.Källa = 1, .Mål = 2}});
    Job job;
    job.name = "Skruv";
    job.mask = "Lista";
    job.command = "gunzip x";
    Limits limits;
    limits.fewestRecords = 10;
    job.number = jobs.save(job, std::nullopt, {.limits = limits});

    const auto same = jobs.read(copyJob(folder.path(), job, false, "kopia"));
    ASSERT_TRUE(same);
    EXPECT_EQ(same->name + "|" + same->mask + "|" + same->command, "Skruv (kopia)|Lista|gunzip x");
    EXPECT_EQ(JobOptionsFile(folder.path()).limits("Skruv (kopia)"), limits);
    EXPECT_EQ(JobOptionsFile(folder.path()).limits("Skruv"), limits) << "moved away from the first job";
    EXPECT_EQ(masks.all().size(), 1U);

    const auto own = jobs.read(copyJob(folder.path(), job, true, "kopia"));
    ASSERT_TRUE(own);
    EXPECT_EQ(own->name + "|" + own->mask, "Skruv (kopia 2)|Lista (kopia)");
    EXPECT_EQ(masks.find("Lista (kopia)")->relations, masks.find("Lista")->relations);
    EXPECT_EQ(masks.find("Lista (kopia)")->mask.AntalKolumner, 4);

    job.supplier = "changed by another program";
    EXPECT_EQ(errorOf([&] { copyJob(folder.path(), job, false, "kopia"); }), errors::kChangedElsewhere);
}

}  // namespace
}  // namespace kolmera::test
