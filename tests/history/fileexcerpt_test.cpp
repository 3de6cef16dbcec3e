#include "history/fileexcerpt.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

TEST(FileExcerpt, IsTheTextAroundARecord) {
    const test::TemporaryFolder folder;
    const auto show = [&](const std::string& bytes, std::int64_t offset, std::int64_t length, CodePage codePage) {
        const std::filesystem::path file = folder / "prices";
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
        RecordedPriceFile recorded({.path = file.string(), .size = 0, .modified = {}, .sha256 = {}}, codePage);
        return recorded.excerpt({.record = 1, .offset = offset, .length = length});
    };
    const std::string filler(1990, 'x');
    const struct {
        const char* fault;
        std::string bytes;
        std::int64_t offset, length;
        FileExcerpt::File file;
        std::string before, record, after;
        CodePage codePage = CodePage::Windows1252;
    } cases[] = {
        {"letters of the old code page unreadable", "1;\xE5\r\n2;\xC4\r\n3\r\n", 5, 5, FileExcerpt::File::Changed,
         "1;å\n", "2;Ä\n", "3\n"},
        {"the mask's characters left aside", "1\n2;\x86\n", 2, 4, FileExcerpt::File::Changed, "1\n", "2;å\n", "",
         CodePage::Oem850},
        {"a line end of one sign lost", "1\r2\r3\r", 2, 2, FileExcerpt::File::Changed, "1\n", "2\n", "3\n"},
        {"half a line before it", "half-line-here\n" + filler + "\n2\n", 2006, 2, FileExcerpt::File::Changed,
         filler + "\n", "2\n", ""},
        {"control characters shown", std::string("a\0\x1B", 3), 0, 3, FileExcerpt::File::Changed, "", "a..", ""},
        {"a file that became shorter read", "1\r\n", 3, 2, FileExcerpt::File::Shorter, "", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const FileExcerpt excerpt = show(c.bytes, c.offset, c.length, c.codePage);
        EXPECT_EQ(excerpt.file, c.file);
        EXPECT_EQ(excerpt.before, c.before);
        EXPECT_EQ(excerpt.after, c.after);
        EXPECT_EQ(excerpt.record, c.record);
    }
    RecordedPriceFile none({.path = (folder / "none").string(), .size = 0, .modified = {}, .sha256 = {}},
                           CodePage::Windows1252);
    EXPECT_EQ(none.excerpt({}).file, FileExcerpt::File::Missing);
}

TEST(FileExcerpt, OfASourceIsItsRows) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder / "prices";
    std::ofstream(file, std::ios::binary) << "Nr;Pris\r\n1;\"5\n6\"\r\n2;7\r\n";
    RecordedPriceFile recorded({.path = file.string(), .size = 0, .modified = {}, .sha256 = {}}, CodePage::Windows1252,
                               SourceFormat{});
    const FileExcerpt excerpt = recorded.excerpt({.record = 2});
    EXPECT_EQ(excerpt.before + "|" + excerpt.record + "|" + excerpt.after, "Nr\tPris\n|1\t5 6\n|2\t7\n");
    EXPECT_EQ(recorded.excerpt({.record = 9}).file, FileExcerpt::File::Shorter);
}

TEST(FileExcerpt, KnowsTheFileByItsBytes) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder / "prices";
    const auto write = [&](const char* bytes) { std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes; };
    const char* const digestOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    RecordedPriceFile recorded({.path = file.string(), .size = 3, .modified = "1999-01-01", .sha256 = digestOfAbc},
                               CodePage::Windows1252);
    write("abc");
    const auto touched = std::filesystem::last_write_time(file);
    EXPECT_EQ(recorded.excerpt({.length = 1}).file, FileExcerpt::File::Same) << "copied, and so taken for another";
    write("abd");
    std::filesystem::last_write_time(file, touched);
    EXPECT_EQ(recorded.excerpt({.length = 1}).file, FileExcerpt::File::Changed) << "looked at only once";
}

}  // namespace
}  // namespace kolmera
