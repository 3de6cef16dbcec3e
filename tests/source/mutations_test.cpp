#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/error.h"
#include "source/detection/detection.h"
#include "spreadsheet/workbookparts.h"
#include "support/errorof.h"
#include "support/sourcerows.h"

namespace kolmera::test {
namespace {

/// The bytes with a few of them changed, taken out, doubled or cut off; the same every time.
std::string mutated(std::string bytes, std::mt19937& random) {
    const auto below = [&](std::size_t count) { return count == 0 ? 0 : random() % count; };
    for (std::size_t changes = 1 + below(4); changes > 0 && !bytes.empty(); --changes) {
        const std::size_t at = below(bytes.size());
        const std::size_t length = below(std::min<std::size_t>(bytes.size() - at, 40));
        switch (random() % 6) {
            case 0:
                bytes.resize(at);
                break;
            case 1:
                bytes.erase(at, length);
                break;
            case 2:
                bytes.insert(at, bytes.substr(at, length));
                break;
            case 3:
                bytes.insert(at, length, "\"\n\0;\xFF<"[random() % 6]);
                break;
            default:
                bytes[at] = static_cast<char>(random());
        }
    }
    return bytes;
}

TEST(MutatedFiles, AreReadOrRefused) {
    const TemporaryFolder folder;
    const std::string sheet = R"(<row r="1"><c t="s"><v>0</v></c><c><v>1.5</v></c></row>)"
                              R"(<row r="2"><c t="inlineStr"><is><t>x</t></is></c><c s="1"><v>45000</v></c></row>)";
    writeZip(folder / "xlsx", workbookOf(sheet));
    writeZip(folder / "zip", {{"a.csv", "Nr;Pris\n1;1,50\n2;2,50\n"}, {"b.txt", "x"}});
    const std::string bases[] = {
        "Artikelnr;\"Benämning\";Pris\r\n1;\"3/4\"\" rör\";1.250,00\r\n2;\"a\nb\";2,50\r\n",
        std::string("N\0r\0;\0P\0\n\0001\0;\0002\0\n\0", 20),
        "4711  Rör   12,50\n4712  Böj    8,00\n4713  Lås    9,00\n",
        "<?xml version=\"1.0\"?><l><a n=\"1\"><p>1</p></a><a n=\"2\"><p>2</p></a></l>",
        folder.read("xlsx"),
        folder.read("zip"),
        savedBytes("letter.xls"),
    };
    SourceLimits limits;
    limits.rowBytes = 100'000;
    limits.unpackedBytes = 1'000'000;
    std::mt19937 random(1);
    for (const std::string& base : bases) {
        int read = 0;
        int refused = 0;
        for (int i = 0; i < 100; ++i) {
            folder.write("file", mutated(base, random));
            try {
                const Detection found = detectSource(folder / "file", {}, limits);
                const auto reader = openRows(folder / "file", found.format, limits);
                rowsOf(*reader);
                ++read;
            } catch (const PlatformError&) {
                ++refused;
            }
        }
        EXPECT_GT(read, 0) << base.substr(0, 20) << ": nothing is read any more";
        EXPECT_EQ(read + refused, 100);
    }
}

TEST(PackedFiles, DoNotUnpackWithoutAnEnd) {
    std::string lines;
    while (lines.size() < 3'000'000) lines += "1;2;3\n";
    const TemporaryFolder folder;
    writeZip(folder / "trap.zip", {{"a.csv", lines}});
    writeZip(folder / "outer.zip", {{"inner.zip", folder.read("trap.zip")}});
    SourceLimits limits;
    limits.unpackedBytes = 1'000'000;
    EXPECT_EQ(errorOf([&] { rowsOf(*openRows(folder / "trap.zip", {}, limits)); }), errors::kUnpacksTooLarge);
    EXPECT_EQ(errorOf([&] { detectSource(folder / "outer.zip"); }), errors::kUnknownSource) << "a zip in a zip";
}

}  // namespace
}  // namespace kolmera::test
