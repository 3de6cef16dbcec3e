#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "platform/error.h"
#include "platform/recordfolder.h"
#include "platform/restrictedpath.h"
#include "support/errorof.h"
#include "support/filesizelimit.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

constexpr RecordField kFields[] = {{"Namn", 0, 6}, {"Nummer", 6, 3}, {"reserved", 9, 2}, {"record end", 11, 2}};
static_assert(fillsRecord(kFields, 13));
constexpr RecordLayout kLayout = {"PEOPLE.TXT", 13, kFields, true};
constexpr RecordField kName = field(kFields, "Namn");
constexpr RecordField kNumber = field(kFields, "Nummer");

using namespace std::string_literals;

Record person(std::string_view name, int number = 0) {
    Record record(kLayout);
    record.setText(kName, name);
    record.setNumber(kNumber, number);
    return record;
}

using test::errorOf;

TEST(Record, LaysTheBytes) {
    EXPECT_EQ(Record(kLayout).bytes(), "         \0\0\r\n"s);
    EXPECT_EQ(person("Åsa", 7).bytes(), "\xC5sa   007\0\0\r\n"s);
    EXPECT_EQ(person("A\u030Asa").text(kName), "Åsa") << "a decomposed letter";
    Record again = person("Gustav");
    again.setText(kName, "Bo");
    EXPECT_EQ(again.text(kName), "Bo") << "the old text showed behind the new one";
    EXPECT_EQ(errorOf([] { person("x", 1000); }), errors::kTextTooLong);
    EXPECT_EQ(errorOf([] { person("x", -1); }), errors::kTextTooLong);
    EXPECT_EQ(errorOf([] { person("Åsa-Karin"); }), errors::kTextTooLong);
    EXPECT_EQ(errorOf([] { person("łódź"); }), errors::kWrongType);
    again.setCutText(kName, "Åsa-łukasz");
    EXPECT_EQ(again.text(kName), "Åsa-?u") << "cut in bytes of the record";
}

TEST(Record, ReadsFieldsOfEveryWriter) {
    const struct {
        const char* fault;
        std::string bytes;
        const char* name;
        int number;
    } cases[] = {
        {"NUL is not blank", "\0Bo\0\0\0007\0\0"s, "Bo", 7},
        {"never written", std::string(13, '\0'), "", 0},
        {"text for a number", " Bo Ek7b ", "Bo Ek", 7},
        {"half of a number", "Bo    2.5", "Bo", 2},
        {"too short a record", "Bo", "Bo", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const Record record(kLayout, c.bytes);
        EXPECT_EQ(record.text(kName), c.name);
        EXPECT_EQ(record.number(kNumber), c.number);
    }
}

struct RecordFolderTest : testing::Test {
    test::TemporaryFolder folder;
    std::filesystem::path path = folder / "PEOPLE.TXT";

    void change(const std::function<void(Records&)>& statement, std::string_view name = "PEOPLE.TXT") {
        RecordChange change(folder.path());
        statement(change.file(kLayout, name));
        change.commit();
    }
    void fill(std::initializer_list<const char*> names) {
        change([&](Records& file) {
            for (const char* name : names) file.append(person(name));
        });
    }
    std::string names(std::string_view file = "PEOPLE.TXT") {
        const Records records = readRecords(folder / file, kLayout);
        std::string names;
        for (int i = 1; i <= records.count(); ++i) names += records.read(i).text(kName) + " ";
        return names;
    }
    /// The files of the folder but for the lock.
    std::size_t files() {
        const auto entries = std::filesystem::directory_iterator(folder.path());
        return static_cast<std::size_t>(
            std::ranges::count_if(entries, [](const auto& entry) { return entry.path().filename() != "KOLMERA.LCK"; }));
    }
};

TEST_F(RecordFolderTest, WritesWhereTheNumberSays) {
    fill({"Bo", "Åsa", "Eva"});
    change([](Records& file) {
        file.write(2, person("Per"));
        file.write(5, person("Ulf"));
        EXPECT_EQ(file.count(), 5);
        EXPECT_EQ(file.read(6).text(kName), "");
        EXPECT_EQ(file.read(0).text(kName), "");
        EXPECT_EQ(errorOf([&] { file.write(0, person("x")); }), errors::kNoCurrentRecord);
    });
    EXPECT_EQ(names(), "Bo Per Eva  Ulf ");
    change([](Records& file) { file.keepOnly([](int number, Record&) { return number > 1; }); });
    EXPECT_EQ(names(), "Per Eva  Ulf ");
}

TEST_F(RecordFolderTest, ALastRecordMayLackItsLineEnd) {
    fill({"Bo", "Åsa"});
    const std::string whole = folder.read("PEOPLE.TXT");
    for (std::size_t cut = 1; cut < 13; ++cut) {
        SCOPED_TRACE(cut);
        folder.write("PEOPLE.TXT", whole.substr(0, whole.size() - cut));
        const bool counts = cut <= 2;
        ASSERT_EQ(names(), counts ? "Bo Åsa " : "Bo ");
        change([](Records& file) { file.write(1, person("Ulf")); });
        ASSERT_EQ(folder.read("PEOPLE.TXT").substr(13), counts ? whole.substr(13) : whole.substr(13, 13 - cut));
        change([&](Records& file) { ASSERT_EQ(file.append(person("Eva")), counts ? 3 : 2); });
        ASSERT_EQ(names(), counts ? "Ulf Åsa Eva " : "Ulf Eva ");
    }
}

TEST_F(RecordFolderTest, OpensMissingFiles) {
    EXPECT_EQ(readRecords(folder / "NEW.TXT", kLayout).count(), 0);
    EXPECT_TRUE(std::filesystem::exists(folder / "NEW.TXT"));
    EXPECT_EQ(errorOf([&] { readRecords(folder / "none/NEW.TXT", kLayout); }), errors::kFileNotFound);
    EXPECT_EQ(errorOf([&] { readRecords(folder.path(), kLayout); }), errors::kInternal);
    fill({"Bo"});
    EXPECT_EQ(names("People.txt"), "Bo ") << "the letter case of the name counted";
}

TEST_F(RecordFolderTest, ReadsInAFolderThatCannotBeWritten) {
    fill({"Bo"});
    std::filesystem::remove(folder / "KOLMERA.LCK");
    const test::RestrictedPath readOnly(folder.path(), 0555);
    EXPECT_EQ(names() + names("NEW.TXT"), "Bo ");
    EXPECT_EQ(RecordSnapshot(folder.path()).file(kLayout).count(), 1);
    EXPECT_EQ(errorOf([&] { fill({"Eva"}); }), errors::kInternal);
    EXPECT_EQ(names(), "Bo ");
}

TEST_F(RecordFolderTest, AFolderThatCannotBeEnteredIsNotEmpty) {
    fill({"Bo"});
    const test::RestrictedPath closed(folder.path(), 0);
    EXPECT_EQ(errorOf([&] { names(); }), errors::kInternal);
}

TEST_F(RecordFolderTest, KeepsRightsAndTouchesNoOtherFile) {
    fill({"Bo"});
    folder.write("BUFFER.TXT", "another program's");
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    change([](Records& file) { file.append(person("Eva")); });
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(folder.read("BUFFER.TXT"), "another program's");
    constexpr RecordLayout kSecret = {"SECRET.BIN", 13, kFields, true, true};
    RecordChange change(folder.path());
    change.file(kSecret).append(person("Bo"));
    change.commit();
    EXPECT_EQ(std::filesystem::status(folder / "SECRET.BIN").permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(files(), 3U) << "something was left behind";
}

TEST_F(RecordFolderTest, FollowsNoLink) {
    folder.write("other", person("Bo").bytes());
    std::filesystem::create_symlink("other", path);
    EXPECT_EQ(names(), "Bo ");
    EXPECT_EQ(errorOf([&] { fill({"Eva"}); }), errors::kInvalidPath);
    EXPECT_TRUE(std::filesystem::is_symlink(path));
    EXPECT_EQ(folder.read("other"), person("Bo").bytes());
    std::filesystem::rename(path, folder / "KOLMERA.LCK");
    EXPECT_NE(errorOf([&] { fill({"Eva"}); }), 0) << "a link in the place of the lock";
}

TEST_F(RecordFolderTest, AFailedChangeLeavesEverything) {
    fill({"Bo", "Åsa", "Eva"});
    change([](Records& file) { file.append(person("Per")); }, "SECOND.TXT");
    const auto both = [&] { return names() + "| " + names("SECOND.TXT"); };
    const std::string before = both();
    {
        RecordChange given_up(folder.path());
        given_up.file(kLayout).append(person("Ulf"));
    }
    EXPECT_EQ(both(), before);

    {
        const test::FileSizeLimit limit(26);  // takes the new content of the second file, but not that of the first
        RecordChange change(folder.path());
        change.file(kLayout, "SECOND.TXT").append(person("Ulf"));
        change.file(kLayout).append(person("Ulf"));
        EXPECT_EQ(errorOf([&] { change.commit(); }), errors::kDiskFull);
    }
    EXPECT_EQ(both(), before);
    EXPECT_EQ(files(), 2U);
}

TEST_F(RecordFolderTest, WaitsForOthersButNotForEver) {
    const auto lock = [&](FolderLock::Kind kind) {
        return errorOf([&] { FolderLock(folder.path(), kind, std::chrono::milliseconds(0)); });
    };
    {
        const RecordSnapshot reader(folder.path());
        EXPECT_EQ(lock(FolderLock::Kind::Shared), 0);
        EXPECT_EQ(lock(FolderLock::Kind::Exclusive), errors::kLocked);
    }
    const RecordChange writer(folder.path());
    EXPECT_EQ(lock(FolderLock::Kind::Shared), errors::kLocked);
}

TEST_F(RecordFolderTest, RefusesAJournalThatLeadsElsewhere) {
    fill({"Bo"});
    for (const char* line :
         {"KOLMERA-0123456789abcdef.TMP ../PEOPLE.TXT\r\n", "../other.TMP PEOPLE.TXT\r\n", "x\r\n"}) {
        SCOPED_TRACE(line);
        folder.write("KOLMERA.JNL", line);
        EXPECT_EQ(errorOf([&] { names(); }), errors::kDamaged);
    }
    std::filesystem::remove(folder.path() / "KOLMERA.JNL");
    std::filesystem::create_symlink("PEOPLE.TXT", folder.path() / "KOLMERA.JNL");
    try {
        names();
        ADD_FAILURE() << "a link was followed";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.subject(), "KOLMERA.JNL") << "another file was blamed";
    }
}

}  // namespace
}  // namespace kolmera
