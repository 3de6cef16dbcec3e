#include "platform/pricefile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/error.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

constexpr std::size_t kBlock = 262'144;

std::string text(std::string_view bytes) { return std::string(bytes); }

struct PriceFileTest : testing::Test {
    test::TemporaryFolder folder;

    PriceFile open(std::string_view content) {
        folder.write("prices.txt", content);
        return PriceFile(folder / "prices.txt");
    }
    std::vector<std::string> lines(std::string_view content) {
        PriceFile file = open(content);
        std::vector<std::string> lines;
        while (!file.atEnd()) lines.push_back(text(file.line()));
        EXPECT_EQ(file.position(), content.size());
        EXPECT_EQ(file.line(), "");
        return lines;
    }
};

TEST_F(PriceFileTest, CutsLines) {
    using Lines = std::vector<std::string>;
    const struct {
        const char* fault;
        std::string content;
        Lines expected;
    } cases[] = {
        {"an empty file has a line", "", {}},
        {"CR LF, CR and no end at all", "a\r\nb\rc", {"a", "b", "c"}},
        {"a line feed ends a line", "a\nb\n", {"a\nb\n"}},
        {"LF CR taken for an end", "a\n\rb", {"a\n", "b"}},
        {"empty lines dropped", "\r\n\r\r\n", {"", "", ""}},
        {"NUL ends the text", std::string("a\0b\r", 4), {std::string("a\0b", 3)}},
        {"the end mark is a line", "a\r\n\x1A", {"a"}},
        {"the end mark of the last line", "a\x1A", {"a"}},
        {"all end marks dropped", "a\x1A\x1A", {"a\x1A"}},
        {"an end mark inside",
         "a\x1A"
         "b\r\n\x1A"
         "c",
         {"a\x1A"
          "b",
          "\x1A"
          "c"}},
        {"only an end mark", "\x1A", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(lines(c.content), c.expected);
    }
}

TEST_F(PriceFileTest, KnowsNoBlocks) {
    // Line ends, an end mark and the end of the file at and around the border of the first block.
    for (std::size_t length = kBlock - 3; length <= kBlock + 2; ++length) {
        const std::string longLine(length, 'x');
        SCOPED_TRACE(length);
        EXPECT_EQ(lines(longLine + "\r\nb\r\n"), (std::vector<std::string>{longLine, "b"}));
        EXPECT_EQ(lines(longLine + "\rb"), (std::vector<std::string>{longLine, "b"}));
        EXPECT_EQ(lines(longLine + "\r\x1A"), std::vector<std::string>{longLine});
        EXPECT_EQ(lines(longLine + "\x1A"), std::vector<std::string>{longLine});
        EXPECT_EQ(lines(longLine + "\r"), std::vector<std::string>{longLine});
    }
}

TEST_F(PriceFileTest, CutsWhatIsNoLine) {
    constexpr std::size_t kLongest = 16'777'216;
    const std::string cut(kLongest, 'x');
    for (const std::size_t more : {std::size_t{0}, kLongest + 1}) {
        SCOPED_TRACE(more);
        const std::string longLine(kLongest + more, 'x');
        EXPECT_TRUE(lines(longLine + "\r\nb\rc") == (std::vector<std::string>{cut, "b", "c"}));
        EXPECT_TRUE(lines(longLine) == std::vector<std::string>{cut});
    }
}

TEST_F(PriceFileTest, GivesBytesAndTheirPosition) {
    PriceFile file = open("abcde\r\nf\x1A");
    EXPECT_EQ(file.bytes(3), "abc");
    EXPECT_EQ(file.position(), 3U);
    EXPECT_EQ(file.bytes(4), "de\r\n");
    EXPECT_FALSE(file.atEnd());
    EXPECT_EQ(file.bytes(4), "f");
    EXPECT_TRUE(file.atEnd());
    EXPECT_EQ(file.bytes(1), "");
}

TEST_F(PriceFileTest, DropsTheEndMarkBehindAnExactRecord) {
    PriceFile file = open("abcd\x1A");
    EXPECT_EQ(file.bytes(4), "abcd");
    EXPECT_TRUE(file.atEnd());
    PriceFile marked = open("abc\x1A");
    EXPECT_EQ(marked.bytes(4), "abc") << "the mark was handed out before the end was seen";
}

TEST_F(PriceFileTest, RefusesWhatIsNoFileWithTheSystemsText) {
    const auto failure = [](const std::filesystem::path& path) {
        try {
            const PriceFile file(path);
        } catch (const PlatformError& error) {
            return std::to_string(error.number()) + " " + error.description();
        }
        return std::string("none");
    };
    EXPECT_EQ(failure(folder.path()), "3000 Is a directory");
    EXPECT_EQ(failure(folder / "missing.txt"), "3024 No such file or directory");
}

TEST_F(PriceFileTest, CancelIsHeardWhereThereIsNothingToRead) {
    const auto pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    bool cancelled = false;
    PriceFile file(pipe, [&] { return cancelled; });  // without a writer
    const Descriptor writer(pipe, O_RDWR);
    writer.write("a\r\nb");
    EXPECT_EQ(file.line(), "a");
    cancelled = true;
    EXPECT_THROW(file.line(), ReadingCancelled);

    PriceFile endless("/dev/zero", [&] { return cancelled; });
    EXPECT_THROW(endless.line(), ReadingCancelled);
}

}  // namespace
}  // namespace kolmera
