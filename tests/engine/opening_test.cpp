#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "engine/enginetest.h"

namespace kolmera::test {
namespace {

class Opening : public EngineTest {
  protected:
    /// Runs a statement on a file with nothing of the engine between.
    void raw(const char* name, const char* statement) const {
        sqlite3* connection = nullptr;
        ASSERT_EQ(sqlite3_open((folder / name).c_str(), &connection), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(connection, statement, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(connection);
    }

    static OpenOptions onNetwork(bool network) {
        OpenOptions options;
        options.onNetwork = [network](const std::filesystem::path& /*folder*/) { return network; };
        return options;
    }

    /// "journal synchronous"
    static std::string pragmas(Database& database) {
        return select(database, "SELECT * FROM pragma_journal_mode, pragma_synchronous");
    }
};

TEST_F(Opening, AFileThatIsNoCompanysHasItsNumber) {
    folder.write("text.mdb", std::string(5000, 'x'));
    folder.write("empty.mdb", "");
    std::filesystem::create_directory(folder / "folder.mdb");
    std::filesystem::copy_file(file, folder / "newer.mdb");
    raw("newer.mdb", "PRAGMA user_version = 2");
    raw("other.mdb", "PRAGMA application_id = 77; CREATE TABLE T (A)");
    const struct {
        const char *fault, *name;
        int number;
    } cases[] = {
        {"a missing file made", "missing.mdb", errors::kFileNotFound},
        {"a folder opened", "folder.mdb", errors::kFileNotFound},
        {"an empty file taken for a new company", "empty.mdb", errors::kNotADatabase},
        {"a text file", "text.mdb", errors::kNotADatabase},
        {"another program's database", "other.mdb", errors::kNotADatabase},
        {"a layout that this version does not know", "newer.mdb", errors::kNotADatabase},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(errorOf([&] { (void)openFileDatabase(folder / c.name, OpenOptions()); }), c.number);
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "missing.mdb"));
}

TEST_F(Opening, OnlyTheRightPasswordOpensAFileThatHasOne) {
    createFileDatabase(folder / "locked.mdb", {&artikel, 1}, "åäö 123");
    const struct {
        const char *fault, *name, *password;
        int number;
    } cases[] = {
        {"the right one refused", "locked.mdb", "åäö 123", 0},
        {"letter case ignored", "locked.mdb", "ÅÄÖ 123", errors::kWrongPassword},
        {"the empty one taken", "locked.mdb", "", errors::kWrongPassword},
        {"a file without password asks for one", "FTG1.mdb", "any", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        OpenOptions options;
        options.password = c.password;
        EXPECT_EQ(errorOf([&] { (void)openFileDatabase(folder / c.name, options); }), c.number);
    }
    EXPECT_EQ(folder.read("locked.mdb").find("åäö 123"), std::string::npos) << "the password stands in the file";
    OpenOptions options;
    options.password = "åäö 123";
    const auto database = openFileDatabase(folder / "locked.mdb", options);
    EXPECT_EQ(database->tableNames(), std::vector<std::string>{"Artikel"});
}

TEST_F(Opening, AnExistingFileIsNeverMadeAnew) {
    add(*open(), "A");
    EXPECT_EQ(errorOf([&] { createFileDatabase(file, {&artikel, 1}); }), errors::kInternal);
    EXPECT_EQ(selectElsewhere("SELECT Nummer FROM Artikel"), "'A'");
}

TEST_F(Opening, TheHeaderTellsWhoseFileItIs) {
    EXPECT_EQ(select(*open(), "SELECT * FROM pragma_application_id, pragma_user_version"), "1263488077 1");
}

TEST_F(Opening, TheJournalFollowsTheFileSystem) {
    EXPECT_EQ(pragmas(*open(onNetwork(false))), "'wal' 2");
    add(*open(onNetwork(false)), "A");
    {
        const auto shared = open(onNetwork(true));
        EXPECT_EQ(pragmas(*shared), "'delete' 2");
        add(*shared, "B");
        EXPECT_EQ(selectElsewhere("SELECT count(*) FROM Artikel"), "2") << "the file stayed locked";
    }
    const auto local = open(onNetwork(false));
    EXPECT_EQ(pragmas(*local), "'wal' 2");
    EXPECT_EQ(std::abs(errorOf([&] {
                  OpenOptions options = onNetwork(true);
                  options.wait = [] { return false; };
                  (void)open(options);
              })),
              errors::kLocked)
        << "a log in use was shared over the network";
}

TEST_F(Opening, ReadingOverTheNetworkLeavesNothingBehind) {
    add(*open(onNetwork(false)), "A");
    OpenOptions options = onNetwork(true);
    options.readOnly = true;
    const auto database = open(options);
    EXPECT_EQ(select(*database, "SELECT Nummer FROM Artikel"), "'A'");
    EXPECT_FALSE(std::filesystem::exists(folder / "FTG1.mdb-shm")) << "shared memory on a network drive";
}

TEST_F(Opening, ClosingLeavesOneFile) {
    {
        const auto database = open();
        add(*database, "A");
        EXPECT_TRUE(std::filesystem::exists(folder / "FTG1.mdb-wal"));
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        EXPECT_EQ(entry.path().filename(), "FTG1.mdb");
    }
}

/// Runs in a child process that has no rights but everybody's; false when it failed.
bool asNobody(const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(Opening, AFileInAReadOnlyFolderCanBeRead) {
    namespace fs = std::filesystem;
    add(*open(), "A");
    OpenOptions options;
    options.readOnly = true;
    EXPECT_EQ(select(*open(options), "SELECT Nummer FROM Artikel"), "'A'");
    EXPECT_EQ(errorOf([&] { add(*open(options), "B"); }), errors::kInternal);
    const auto readable = [&] { return select(*open(options), "SELECT Nummer FROM Artikel") == "'A'"; };
    fs::permissions(file, fs::perms(0444));
    fs::permissions(folder.path(), fs::perms(0555));
    EXPECT_TRUE(asNobody(readable));
    // As installed: nobody has ever opened the file there, so not even an empty log lies beside it.
    for (const char* suffix : {"-wal", "-shm"}) fs::remove(file.string() + suffix);
    EXPECT_TRUE(asNobody(readable));
    fs::permissions(folder.path(), fs::perms(0755));
}

TEST_F(Opening, ALockIsWaitedForUntilTheUserGivesUp) {
    const auto holder = open();
    holder->begin();
    OpenOptions options;
    int asked = 0;
    int patience = 3;
    options.wait = [&] {
        ++asked;
        if (asked == 2 && patience == 99) holder->commit();
        return asked < patience;
    };
    const auto waiting = open(options);
    EXPECT_EQ(errorOf([&] { waiting->begin(); }), -errors::kLocked) << "a lock was passed over";
    EXPECT_EQ(asked, 3);
    EXPECT_FALSE(waiting->inTransaction());
    EXPECT_EQ(errorOf([&] { add(*waiting, "A"); }), -errors::kLocked);
    asked = 0;
    patience = 99;
    add(*waiting, "A");
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(selectElsewhere("SELECT Nummer FROM Artikel"), "'A'");
}

TEST_F(Opening, AnExclusiveSessionIsAlone) {
    OpenOptions impatient;
    impatient.wait = [] { return false; };
    OpenOptions exclusive = impatient;
    exclusive.exclusive = true;
    {
        const auto alone = open(exclusive);
        EXPECT_EQ(std::abs(errorOf([&] { (void)open(impatient); })), errors::kLocked);
    }
    const auto other = open(impatient);
    EXPECT_EQ(std::abs(errorOf([&] { (void)open(exclusive); })), errors::kLocked);
}

}  // namespace
}  // namespace kolmera::test
