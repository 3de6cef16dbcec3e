#include "definitions/jobtable.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

JobRow row(int number, std::string name, std::string fileState = {}) {
    JobRow made;
    made.job.number = number;
    made.job.name = std::move(name);
    made.fileState = std::move(fileState);
    return made;
}

std::vector<JobRow> jobs() {
    return {row(1, "(EIO)"), row(2, "Öberg"), row(3, "Ågren"), row(4, "Zäta"), row(5, "öberg")};
}

JobTable table(Locale::Kind locale = Locale::Kind::Swedish) { return JobTable(Locale(locale)); }

std::string numbers(const JobTable& table) {
    std::string text;
    for (int i = 0; i < table.count(); ++i) text += std::to_string(table.row(i).job.number);
    return text;
}

TEST(JobTable, SelectsTheJobOfTheNumberElseOfTheLastSession) {
    const struct {
        const char* fault;
        int number;
        const char* saved;
        int selected;
    } cases[] = {
        {"the saved job preferred to the one asked for", 4, "Öberg", 4},
        {"another job for a number that is gone", 9, "Öberg", 0},
        {"the saved job not found again", 0, "Ågren", 3},
        {"letter case passed over", 0, "öberg", 5},
        {"another job for a saved name that is gone", 0, "Ö", 0},
        {"nothing selected in a new installation", 0, "", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        JobTable jobTable = table();
        jobTable.fill(jobs(), c.number, c.saved);
        EXPECT_EQ(jobTable.JobbNr(), c.selected);
        EXPECT_EQ(jobTable.canOpen(), c.selected != 0);
        EXPECT_EQ(jobTable.canRun(), c.selected != 0);
        EXPECT_EQ(jobTable.canDelete(), c.selected > 1);
    }
}

TEST(JobTable, EmptyListAllowsNothing) {
    JobTable jobTable = table();
    jobTable.fill({}, 0, "");
    EXPECT_FALSE(jobTable.canOpen() || jobTable.canRun() || jobTable.canDelete());
    EXPECT_EQ(jobTable.jobName(), "");
}

TEST(JobTable, DeletionGoesByTheNameNotByTheKindLetter) {
    JobRow blankLetter = row(1, "(FINFO)"), otherName = row(2, "(FINFO) kopia");
    otherName.tradeFormat = true;
    JobTable jobTable = table();
    jobTable.fill({blankLetter, otherName}, 1, "");
    EXPECT_FALSE(jobTable.canDelete());
    jobTable.select(1);
    EXPECT_TRUE(jobTable.canDelete());
}

TEST(JobTable, SortsBySwedishAlphabetAndKeepsTheSelectedJob) {
    JobTable jobTable = table();
    jobTable.fill(jobs(), 3, "");
    jobTable.sort(JobTable::kName, false);
    EXPECT_EQ(numbers(jobTable), "14325") << "z å ä ö; equal names in file order";
    EXPECT_EQ(jobTable.JobbNr(), 3);
    jobTable.sort(JobTable::kName, true);
    EXPECT_EQ(numbers(jobTable), "25341");
    EXPECT_EQ(jobTable.JobbNr(), 3);
    jobTable.fill(jobs(), 4, "");
    EXPECT_EQ(numbers(jobTable), "25341") << "the order is lost when the list is read anew";
    EXPECT_EQ(jobTable.JobbNr(), 4);
}

TEST(JobTable, SortsFileDatesByTheDay) {
    JobTable jobTable = table(Locale::Kind::English);
    jobTable.fill({row(1, "a", "Missing"), row(2, "b", "02/01/2026"), row(3, "c", "12/31/2025"), row(4, "d", "CD")}, 1,
                  "");
    jobTable.sort(JobTable::kFileState, false);
    EXPECT_EQ(numbers(jobTable), "3241");
}

}  // namespace
}  // namespace kolmera
