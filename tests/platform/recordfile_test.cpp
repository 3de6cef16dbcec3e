#include "platform/recordfile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <functional>

#include "platform/error.h"
#include "platform/restrictedpath.h"
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

int errorOf(const auto& statement) {
    try {
        statement();
    } catch (const PlatformError& error) {
        return error.number();
    }
    return 0;
}

TEST(Record, LaysTheBytes) {
    EXPECT_EQ(Record(kLayout).bytes(), "         \0\0\r\n"s);
    EXPECT_EQ(person("Åsa", 7).bytes(), "\xC5sa   007\0\0\r\n"s);
    EXPECT_EQ(person("Åsa-Karin").text(kName), "Åsa-Ka") << "cut in bytes of the record";
    Record again = person("Gustav");
    again.setText(kName, "Bo");
    EXPECT_EQ(again.text(kName), "Bo") << "the old text showed behind the new one";
    EXPECT_EQ(errorOf([] { person("x", 1000); }), errors::kTextTooLong);
    EXPECT_EQ(errorOf([] { person("x", -1); }), errors::kTextTooLong);
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

struct RecordFileTest : testing::Test {
    test::TemporaryFolder folder;
    std::filesystem::path path = folder / "PEOPLE.TXT";

    void fill(std::initializer_list<const char*> names) {
        RecordFile file(path, kLayout);
        for (const char* name : names) file.append(person(name));
    }
    std::string names() {
        const RecordFile file(path, kLayout, RecordFile::Mode::Read);
        std::string names;
        for (int i = 1; i <= file.count(); ++i) names += file.read(i).text(kName) + " ";
        return names;
    }
};

TEST_F(RecordFileTest, WritesWhereTheNumberSays) {
    fill({"Bo", "Åsa", "Eva"});
    {
        RecordFile file(path, kLayout);
        file.write(2, person("Per"));
        file.write(5, person("Ulf"));
        EXPECT_EQ(file.count(), 5);
        EXPECT_EQ(file.read(6).text(kName), "");
        EXPECT_EQ(file.read(0).text(kName), "");
        EXPECT_EQ(errorOf([&] { file.write(0, person("x")); }), errors::kNoCurrentRecord);
    }
    EXPECT_EQ(names(), "Bo Per Eva  Ulf ");
}

TEST_F(RecordFileTest, KeepsItsGridBehindAPartialRecord) {
    fill({"Bo", "Åsa"});
    const std::string whole = folder.read("PEOPLE.TXT");
    for (std::size_t cut = 1; cut < 13; ++cut) {
        folder.write("PEOPLE.TXT", whole.substr(0, whole.size() - cut));
        RecordFile file(path, kLayout);
        ASSERT_EQ(file.count(), 1);
        ASSERT_EQ(file.read(2).text(kName), "") << "a part of a record was read";
        file.write(1, person("Ulf"));
        ASSERT_EQ(folder.read("PEOPLE.TXT").substr(13), whole.substr(13, 13 - cut));
        ASSERT_EQ(file.append(person("Eva")), 2);
        ASSERT_EQ(names(), "Ulf Eva ");
    }
}

TEST_F(RecordFileTest, OpensMissingFiles) {
    EXPECT_EQ(RecordFile(folder / "NEW.TXT", kLayout, RecordFile::Mode::Read).count(), 0);
    EXPECT_TRUE(std::filesystem::exists(folder / "NEW.TXT"));
    EXPECT_EQ(errorOf([&] { RecordFile(folder / "none/NEW.TXT", kLayout, RecordFile::Mode::Read); }),
              errors::kFileNotFound);
    EXPECT_EQ(errorOf([&] { RecordFile(folder.path(), kLayout, RecordFile::Mode::Read); }), errors::kInternal);
    fill({"Bo"});
    EXPECT_EQ(RecordFile(folder / "People.txt", kLayout).count(), 1) << "the letter case of the name counted";
}

TEST_F(RecordFileTest, ReadsInAFolderThatCannotBeWritten) {
    fill({"Bo"});
    const test::RestrictedPath readOnly(folder.path(), 0555);
    const std::filesystem::path missing = folder / "NEW.TXT";
    EXPECT_EQ(names(), "Bo ");
    EXPECT_EQ(RecordFile(missing, kLayout, RecordFile::Mode::Read).count(), 0);
    EXPECT_EQ(RecordFile(missing, kLayout, RecordFile::Mode::Read).read(1).text(kName), "");
    EXPECT_EQ(errorOf([&] { RecordFile(missing, kLayout); }), errors::kInternal);
    EXPECT_EQ(errorOf([&] { rewriteRecords(path, kLayout, [](int, Record&) { return false; }); }), errors::kInternal);
    EXPECT_EQ(names(), "Bo ");
}

TEST_F(RecordFileTest, AFolderThatCannotBeEnteredIsNotEmpty) {
    fill({"Bo"});
    const test::RestrictedPath closed(folder.path(), 0);
    EXPECT_EQ(errorOf([&] { RecordFile(path, kLayout, RecordFile::Mode::Read); }), errors::kInternal);
}

TEST_F(RecordFileTest, ErrorsNameTheFile) {
    fill({"Bo"});
    std::filesystem::create_directory(folder / "folder");
    std::filesystem::create_directory(folder / "BUFFER.TXT");
    const struct {
        const char* fault;
        std::function<void()> statement;
        const char* file;
    } cases[] = {
        {"read", [&] { RecordFile(folder / "folder", kLayout, RecordFile::Mode::Read); }, "PEOPLE.TXT: "},
        {"changed", [&] { RecordFile(folder / "folder", kLayout); }, "PEOPLE.TXT: "},
        {"rewritten", [&] { rewriteRecords(folder / "folder", kLayout, {}); }, "PEOPLE.TXT: "},
        {"buffered", [&] { rewriteRecords(path, kLayout, {}); }, "BUFFER.TXT: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        std::string description;
        try {
            c.statement();
        } catch (const PlatformError& error) {
            description = error.description();
        }
        EXPECT_TRUE(description.starts_with(c.file)) << description;
    }
}

TEST_F(RecordFileTest, RewriteDropsAndChanges) {
    fill({"Bo", "Åsa", "Eva"});
    folder.write("Buffer.txt", std::string(200, 'x'));
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    const int removed = rewriteRecords(path, kLayout, [](int number, Record& record) {
        if (number == 3) record.setText(kName, "Ulf");
        return number != 2;
    });
    EXPECT_EQ(removed, 1);
    EXPECT_EQ(names(), "Bo Ulf ");
    EXPECT_EQ(std::filesystem::file_size(path), 26U) << "an old buffer showed behind the records";
    EXPECT_FALSE(std::filesystem::exists(folder / "Buffer.txt"));
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
}

TEST_F(RecordFileTest, RewriteKeepsAPartialRecord) {
    fill({"Bo", "Åsa"});
    const std::string whole = folder.read("PEOPLE.TXT");
    folder.write("PEOPLE.TXT", whole + "Eva");
    rewriteRecords(path, kLayout, [](int number, Record&) { return number == 2; });
    EXPECT_EQ(folder.read("PEOPLE.TXT"), whole.substr(13) + "Eva");
}

TEST_F(RecordFileTest, AFailedRewriteLeavesTheFile) {
    fill({"Bo", "Åsa", "Eva"});
    const std::string before = folder.read("PEOPLE.TXT");
    const auto dropFirst = [](int number, Record&) { return number > 1; };

    EXPECT_THROW(rewriteRecords(path, kLayout,
                                [](int number, Record&) {
                                    if (number == 3) throw PlatformError(errors::kInternal, "failed");
                                    return false;
                                }),
                 PlatformError);
    EXPECT_EQ(folder.read("PEOPLE.TXT"), before);
    EXPECT_FALSE(std::filesystem::exists(folder / "BUFFER.TXT"));

    // The disk takes one record and no more.
    signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit oneRecord = {20, unlimited.rlim_max};
    setrlimit(RLIMIT_FSIZE, &oneRecord);
    const int error = errorOf([&] { rewriteRecords(path, kLayout, dropFirst); });
    setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(error, errors::kDiskFull);
    EXPECT_EQ(folder.read("PEOPLE.TXT"), before);

    std::filesystem::create_directory(folder / "BUFFER.TXT");
    EXPECT_EQ(errorOf([&] { rewriteRecords(path, kLayout, dropFirst); }), errors::kInternal);
    EXPECT_EQ(folder.read("PEOPLE.TXT"), before);
}

}  // namespace
}  // namespace kolmera
