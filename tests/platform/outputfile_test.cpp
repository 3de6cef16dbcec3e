#include "platform/outputfile.h"

#include <gtest/gtest.h>

#include "platform/error.h"
#include "platform/restrictedpath.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

namespace fs = std::filesystem;

void writeWhole(const fs::path& file, const std::string& content) {
    OutputFile output(file);
    output.write(content);
    output.finish();
}

std::ptrdiff_t filesIn(const test::TemporaryFolder& folder) {
    return std::distance(fs::directory_iterator(folder.path()), {});
}

TEST(OutputFile, ReplacesWholeOrNotAtAll) {
    const test::TemporaryFolder folder;
    folder.write("letter.txt", "old");
    const std::string large(1'000'000, 'x');
    {
        OutputFile unfinished(folder / "letter.txt");
        unfinished.write(large);
    }
    EXPECT_EQ(folder.read("letter.txt"), "old");
    EXPECT_EQ(filesIn(folder), 1) << "the file beside it stays";
    fs::permissions(folder / "letter.txt", fs::perms::owner_read | fs::perms::owner_write);
    writeWhole(folder / "letter.txt", large + "y");
    EXPECT_EQ(folder.read("letter.txt"), large + "y");
    EXPECT_EQ(fs::status(folder / "letter.txt").permissions(), fs::perms::owner_read | fs::perms::owner_write)
        << "others may read it now";
    writeWhole(folder / "new.txt", "");
    EXPECT_TRUE(fs::exists(folder / "new.txt"));
}

TEST(OutputFile, RefusesWhatCannotBeWritten) {
    const test::TemporaryFolder folder;
    folder.write("letter.txt", "old");
    EXPECT_THROW(writeWhole(folder.path(), "new"), PlatformError) << "a folder";
    EXPECT_THROW(writeWhole(folder / "none/letter.txt", "new"), PlatformError) << "no such folder";
    fs::permissions(folder.path(), fs::perms::all);
    {
        const test::RestrictedPath readOnly(folder / "letter.txt", 0444);
        EXPECT_THROW(writeWhole(folder / "letter.txt", "new"), PlatformError) << "replaced a file that is read-only";
    }
    EXPECT_EQ(folder.read("letter.txt"), "old");
}

TEST(OutputFile, WritesToADeviceDirectly) {
    writeWhole("/dev/null", "new");
    EXPECT_TRUE(fs::is_character_file("/dev/null")) << "a file has taken its place";
    OutputFile full("/dev/full");
    full.write("new");
    try {
        full.finish();
        FAIL() << "a full disk goes unnoticed";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.number(), errors::kDiskFull);
    }
}

}  // namespace
}  // namespace kolmera
