#include <gtest/gtest.h>

#include <functional>

#include "definitions/couplingfile.h"
#include "definitions/jobfile.h"
#include "definitions/maskfile.h"
#include "platform/error.h"
#include "support/errorof.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

using test::TemporaryFolder;

std::string blanks(std::size_t count) { return std::string(count, ' '); }
std::string padded(const std::string& text, std::size_t width) { return text + blanks(width - text.size()); }
std::string nuls(std::size_t count) { return std::string(count, '\0'); }

// Jobs.

Job finfoJob() {
    return {.number = 0,
            .name = "(FINFO)",
            .priceFile = "C:\\Priser\\PRISLISTA.TXT",
            .mask = "",
            .company = "FTG1.MDB",
            .supplier = "7",
            .command = "UNZIP P.ZIP",
            .kind = "F",
            .fromGroup = "1000",
            .toGroup = "1999",
            .heading1 = 3,
            .heading2 = 42};
}

Job named(const char* name, int number = 0) {
    Job job;
    job.number = number;
    job.name = name;
    return job;
}

std::string names(const JobFile& jobs) {
    std::string names;
    for (const Job& job : jobs.all()) names += std::to_string(job.number) + job.name + " ";
    return names;
}

TEST(JobFile, WritesTheRecordThatTheSuiteReads) {
    const TemporaryFolder folder;
    JobFile jobs(folder.path());
    EXPECT_EQ(jobs.save(finfoJob()), 1);
    EXPECT_EQ(folder.read("KOLMERA.TXT"), padded("(FINFO)", 100) + padded("C:\\Priser\\PRISLISTA.TXT", 100) +
                                              blanks(100) + padded("FTG1.MDB", 12) + padded("7", 20) +
                                              padded("UNZIP P.ZIP", 100) + "F" + padded("1000", 8) + padded("1999", 8) +
                                              "3 " + "42" + blanks(48) + nuls(31) + "\r\n");
}

TEST(JobFile, ReadsBackWhatItWrote) {
    const struct {
        const char* fault;
        std::string Job::*field;
        std::string written;
    } cases[] = {
        {"company cut at its first field", &Job::company, "FTG12345678901234567890.MDB"},
        {"blank lost between the two fields of the company", &Job::company, "FTG12345678 90.MDB"},
        {"company split in the middle of a character", &Job::company, "FTGÅÄÖÅÄÖÅÄÖÅÄÖ.MDB"},
        {"letters not in the suite's code page", &Job::priceFile, "C:\\Räksmörgås.txt"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const TemporaryFolder folder;
        JobFile jobs(folder.path());
        Job job = finfoJob();
        job.*c.field = c.written;
        job.number = jobs.save(job);
        EXPECT_EQ(jobs.read(job.number), job);
    }
}

TEST(JobFile, KeepsWhatItDoesNotKnow) {
    const TemporaryFolder folder;
    JobFile jobs(folder.path());
    jobs.save(finfoJob());
    std::string bytes = folder.read("KOLMERA.TXT");
    bytes.replace(501, 31, std::string(31, '#'));
    bytes.replace(449, 2, "  ");  // a heading that was never chosen
    folder.write("KOLMERA.TXT", bytes);

    Job job = jobs.read(1).value();
    EXPECT_EQ(job.heading1, 0);
    job.name = "Annan";
    EXPECT_EQ(jobs.save(job), 1);
    EXPECT_EQ(folder.read("KOLMERA.TXT"), bytes.replace(0, 100, padded("Annan", 100)));
}

TEST(JobFile, SavesBehindTheLastJobAndRemovesWhatWasShown) {
    const TemporaryFolder folder;
    JobFile jobs(folder.path());
    for (const char* name : {"A", "B", "A", "a"}) jobs.save(named(name));
    EXPECT_EQ(jobs.save(named("removed elsewhere", 9)), 5);
    EXPECT_FALSE(jobs.read(0) || jobs.read(6));
    jobs.remove({*jobs.read(1), *jobs.read(3)});
    EXPECT_EQ(names(jobs), "1B 2a 3removed elsewhere ");
}

TEST(JobFile, IsMadeWithTheTradeFormats) {
    const TemporaryFolder folder;
    EXPECT_EQ(names(JobFile(folder.path())), "1(EIO) 2(RSK) 3(FINFO) ");
    folder.write("KOLMERA.TXT", "");
    EXPECT_EQ(names(JobFile(folder.path())), "") << "made anew though it was there";
    JobFile(folder.path()).save(named("(RSK)"));
    JobFile(folder.path()).addTradeJobs("FTG2.MDB");
    EXPECT_EQ(names(JobFile(folder.path())), "1(RSK) 2(EIO) 3(FINFO) ");
    EXPECT_EQ(JobFile(folder.path()).read(2)->kind + JobFile(folder.path()).read(2)->company, "EFTG2.MDB");
}

// Masks.

Mask mask(const char* name, int number = 0) {
    Mask mask;
    mask.number = number;
    mask.Namn = name;
    return mask;
}

std::string text(const std::vector<Relation>& relations) {
    std::string text;
    for (const Relation& each : relations) {
        text += std::to_string(each.Källa) + ">" + std::to_string(each.Mål) + each.TypKod + each.Division + " ";
    }
    return text;
}

std::string text(const MaskFile& masks) {
    std::string all;
    for (const Mask& each : masks.all()) all += each.Namn + ": " + text(masks.read(each.number)->relations) + "\n";
    return all;
}

TEST(MaskFile, WritesTheRecordsThatTheSuiteReads) {
    const TemporaryFolder folder;
    MaskFile masks(folder.path());
    EXPECT_EQ(masks.save({.Namn = "Rör",
                          .FilTyp = 'T',
                          .Tecken = 'J',
                          .SkapaNya = 'J',
                          .UppdatLev = 'N',
                          .AntalRader = "10",
                          .Postlängd = "100",
                          .AntalKolumner = 7},
                         {{.Källa = 2, .Mål = 21, .FrånPos = 5, .Längd = 8, .TypKod = 'U', .Division = '2'}}),
              1);
    EXPECT_EQ(folder.read("PRISMASK.TXT"), padded("R\xF6r", 100) + "TJJN10  100 7   " + nuls(496) + "\r\n");
    EXPECT_EQ(folder.read("PRISMPOS.TXT"), "00100202100050008U21" + nuls(9) + "\r\n");
}

TEST(MaskFile, ReadsRecordsOfOtherWriters) {
    const TemporaryFolder folder;
    folder.write("prismask.txt", padded("A", 100) + "F" + nuls(3) + " 12 " + nuls(8) + nuls(496) + "\r\n" + "half");
    folder.write("PRISMPOS.TXT", "1    24  0001  8 UI1" + nuls(9) + "\r\n" +      // blanks for zeros
                                     "xyz00300500010001UI1" + nuls(9) + "\r\n");  // no number
    const MaskFile masks(folder.path());
    const auto found = masks.find("A");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->mask.Tecken, ' ');
    EXPECT_EQ(found->mask.AntalRader, "12");
    EXPECT_EQ(found->mask.AntalKolumner, 0);
    EXPECT_EQ(text(found->relations), "2>4UI ");
    EXPECT_EQ(found->relations.front().Längd, 8);
    EXPECT_FALSE(masks.find("a") || masks.read(2));
}

TEST(MaskFile, SavingReplacesTheRelationsOfThatMaskOnly) {
    const TemporaryFolder folder;
    MaskFile masks(folder.path());
    masks.save(mask("A"), {{.Källa = 1, .Mål = 1}, {.Källa = 2, .Mål = 4}});
    masks.save(mask("B"), {{.Källa = 3, .Mål = 3}});
    for (int time = 1; time <= 2; ++time) {
        masks.save(mask("A", 1), {{.Källa = 9, .Mål = 21}, {.Källa = 8, .Mål = 1}});
    }
    EXPECT_EQ(text(masks), "A: 9>21II 8>1II \nB: 3>3II \n");
}

TEST(MaskFile, FixedLengthSourcesFollowTheList) {
    const TemporaryFolder folder;
    MaskFile masks(folder.path());
    Mask fixed = mask("P");
    fixed.FilTyp = 'P';
    masks.save(fixed, {{.Källa = 3, .Mål = 1}, {.Källa = 1, .Mål = 21}});
    EXPECT_EQ(text(masks), "P: 1>1II 2>21II \n");
}

TEST(MaskFile, RemovingRenumbersTheRelations) {
    const struct {
        const char* fault;
        std::vector<int> numbers;
        const char* left;
    } cases[] = {
        {"relations of later masks not lowered", {2}, "A: 1>1II \nC: 3>3II \nA: 4>4II \nD: 5>5II \n"},
        {"second mask keeps or loses wrong relations", {1, 4}, "B: 2>2II \nC: 3>3II \nD: 5>5II \n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const TemporaryFolder folder;
        MaskFile masks(folder.path());
        int place = 0;
        for (const char* name : {"A", "B", "C", "A", "D"}) {
            ++place;
            masks.save(mask(name), {{.Källa = place, .Mål = place}});
        }
        std::vector<Mask> shown;
        for (const int number : c.numbers) shown.push_back(masks.read(number)->mask);
        masks.remove(shown);
        EXPECT_EQ(text(masks), c.left);
    }
}

TEST(MaskFile, NumbersThatDoNotFitBecomeTheNearest) {
    const TemporaryFolder folder;
    MaskFile masks(folder.path());
    masks.save(mask("A"), {{.Källa = 1, .Mål = -1, .FrånPos = 12345, .Längd = 9999}});
    const Relation relation = masks.read(1)->relations.at(0);
    EXPECT_EQ(relation.Mål, 0);
    EXPECT_EQ(relation.FrånPos, 9999);
    EXPECT_EQ(relation.Längd, 9999);
}

TEST(MaskFile, RefusesWhatTheFileCannotHold) {
    const TemporaryFolder folder;
    MaskFile masks(folder.path());
    EXPECT_THROW(masks.save(mask("A"), std::vector<Relation>(101)), PlatformError);
    EXPECT_EQ(masks.all().size(), 0U);
    masks.save(mask("A"), std::vector<Relation>(100));
    EXPECT_EQ(masks.read(1)->relations.size(), 100U);

    folder.write("PRISMASK.TXT", blanks(std::size_t{999} * 614));
    EXPECT_THROW(masks.save(mask("thousandth"), {}), PlatformError);
    EXPECT_EQ(masks.save(mask("last", 999), {}), 999);
}

// Couplings.

std::string text(const std::vector<Coupling>& couplings) {
    std::string text;
    for (const Coupling& each : couplings) {
        text += std::to_string(each.number) + each.code + "=" + each.supplier + (each.mainSupplier ? "H " : " ");
    }
    return text;
}

TEST(CouplingFile, WritesTheRecordThatTheSuiteReads) {
    const TemporaryFolder folder;
    CouplingFile couplings(folder.path());
    EXPECT_EQ(couplings.save({.job = "(EIO)", .code = " AB ", .supplier = "7", .mainSupplier = true}), 1);
    EXPECT_EQ(folder.read("PRISLEV.TXT"),
              padded("(EIO)", 100) + padded("AB", 20) + padded("7", 20) + "H" + nuls(99) + "\r\n");
}

TEST(CouplingFile, SavesByJobAndCode) {
    const TemporaryFolder folder;
    CouplingFile couplings(folder.path());
    couplings.save({.job = "(EIO)", .code = "AB", .supplier = "1", .mainSupplier = true});
    couplings.save({.job = "(RSK)", .code = "AB", .supplier = "2", .mainSupplier = true});
    couplings.save({.job = "(EIO)", .code = "CD", .supplier = "3"});
    EXPECT_EQ(couplings.save({.job = "(EIO)", .code = "", .supplier = "4"}), 0);

    EXPECT_EQ(couplings.save({.job = "(EIO)", .code = "cd", .supplier = "5", .mainSupplier = true}), 3);
    EXPECT_EQ(text(couplings.ofJob("(EIO)")), "1AB=1 3cd=5H ");
    EXPECT_EQ(text(couplings.ofJob("(RSK)")), "2AB=2H ");

    couplings.remove(couplings.ofJob("(EIO)").front(), couplings.ofJob("(EIO)"));
    EXPECT_EQ(text(couplings.ofJob("(EIO)")), "2cd=5H ");
    EXPECT_EQ(text(couplings.ofJob("(RSK)")), "1AB=2H ");
}

// Two programs.

TEST(DefinitionFiles, RefuseAStaleChange) {
    const TemporaryFolder folder;
    JobFile jobs(folder.path());
    MaskFile masks(folder.path());
    CouplingFile couplings(folder.path());
    for (const char* name : {"A", "B", "C"}) {
        jobs.save(named(name));
        masks.save(mask(name), {{.Källa = 1, .Mål = 1}});
        couplings.save({.job = "(EIO)", .code = name, .supplier = "1"});
    }
    const Job job = *jobs.read(2);
    const WholeMask whole = *masks.read(2);
    const std::vector<Coupling> shown = couplings.ofJob("(EIO)");
    EXPECT_EQ(test::errorOf([&] { jobs.save(named("c"), std::nullopt); }), errors::kDuplicateKey);
    EXPECT_EQ(test::errorOf([&] { masks.save(mask("b"), {}, std::nullopt); }), errors::kDuplicateKey);
    EXPECT_EQ(test::errorOf([&] { jobs.save(job, job); }), 0) << "a name is not its own double";

    jobs.remove({*jobs.read(1)});
    masks.save(whole.mask, {});
    couplings.remove(shown[0], shown);
    const struct {
        const char* fault;
        std::function<void()> change;
    } cases[] = {
        {"a job saved over another", [&] { jobs.save(job, job); }},
        {"a job removed for another", [&] { jobs.remove({job}); }},
        {"a removed last job appended", [&] { jobs.save(named("C", 3), named("C", 3)); }},
        {"a mask's new relations lost", [&] { masks.save(whole.mask, whole.relations, whole); }},
        {"a coupling saved over another", [&] { couplings.save(shown[1], shown); }},
        {"a coupling removed for another", [&] { couplings.remove(shown[1], shown); }},
    };
    for (const auto& c : cases) EXPECT_EQ(test::errorOf(c.change), errors::kChangedElsewhere) << c.fault;
    masks.remove({masks.read(1)->mask});
    EXPECT_EQ(test::errorOf([&] { masks.remove({whole.mask}); }), errors::kChangedElsewhere);
    EXPECT_EQ(names(jobs) + text(masks) + text(couplings.ofJob("(EIO)")), "1B 2C B: \nC: 1>1II \n1B=1 2C=1 ");
}

}  // namespace
}  // namespace kolmera
