#include "history/fileexcerpt.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

TEST(FileExcerpt, IsTheTextAroundARecord) {
    const test::TemporaryFolder folder;
    const auto show = [&](const std::string& bytes, std::int64_t offset, std::int64_t length) {
        const std::filesystem::path file = folder / "prices";
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
        const RecordedFile recorded{.path = file.string(), .size = 0, .modified = {}, .sha256 = {}};
        return excerptOf(recorded, {.record = 1, .offset = offset, .length = length});
    };
    const std::string filler(1990, 'x');
    const struct {
        const char* fault;
        std::string bytes;
        std::int64_t offset, length;
        FileExcerpt::File file;
        std::string before, record, after;
    } cases[] = {
        {"letters of the old code page unreadable", "1;\xE5\r\n2;\xC4\r\n3\r\n", 5, 5, FileExcerpt::File::Changed,
         "1;å\n", "2;Ä\n", "3\n"},
        {"UTF-8 read as the old code page", "1\n2;\xC3\xA5\n", 2, 5, FileExcerpt::File::Changed, "1\n", "2;å\n", ""},
        {"a line end of one sign lost", "1\r2\r3\r", 2, 2, FileExcerpt::File::Changed, "1\n", "2\n", "3\n"},
        {"half a line before it", "half-line-here\n" + filler + "\n2\n", 2006, 2, FileExcerpt::File::Changed,
         filler + "\n", "2\n", ""},
        {"control characters shown", std::string("a\0\x1B", 3), 0, 3, FileExcerpt::File::Changed, "", "a..", ""},
        {"a file that became shorter read", "1\r\n", 3, 2, FileExcerpt::File::Shorter, "", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const FileExcerpt excerpt = show(c.bytes, c.offset, c.length);
        EXPECT_EQ(excerpt.file, c.file);
        EXPECT_EQ(excerpt.before, c.before);
        EXPECT_EQ(excerpt.after, c.after);
        EXPECT_EQ(excerpt.record, c.record);
    }
    EXPECT_EQ(excerptOf({.path = (folder / "none").string(), .size = 0, .modified = {}, .sha256 = {}}, {}).file,
              FileExcerpt::File::Missing);
}

}  // namespace
}  // namespace kolmera
