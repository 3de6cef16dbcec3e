#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "import/masks/masklook.h"
#include "import/tradeformats/tradelook.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

using namespace std::string_literals;

std::string repeated(int times, std::string_view text) {
    std::string result;
    for (int time = 0; time < times; ++time) result += text;
    return result;
}

std::string withZeros(std::string_view text) {
    std::string result;
    for (const char c : text) result += {c, '\0'};
    return result;
}

LoadedMask maskOf(char FilTyp, int size, std::vector<Relation> relations) {
    Mask mask;
    mask.FilTyp = FilTyp;
    mask.AntalRader = mask.Postlängd = std::to_string(size);
    mask.AntalKolumner = size;
    return {mask, std::move(relations)};
}

/// Number, name, price.
LoadedMask tabs() {
    return maskOf('T', 3,
                  {{.Källa = 1, .Mål = 1, .TypKod = 'U', .Division = 'S'},
                   {.Källa = 2, .Mål = 11, .TypKod = 'U'},
                   {.Källa = 3, .Mål = 21, .TypKod = 'U'}});
}
LoadedMask numberAndPrice() {
    return maskOf('T', 3, {{.Källa = 1, .Mål = 1, .Division = 'S'}, {.Källa = 3, .Mål = 21, .TypKod = 'U'}});
}
LoadedMask lines() {
    return maskOf('F', 2, {{.Källa = 1, .Mål = 1, .Division = 'S'}, {.Källa = 2, .Mål = 11, .TypKod = 'U'}});
}
LoadedMask fixed(int length) {
    return maskOf('P', length,
                  {{.Källa = 1, .Mål = 1, .FrånPos = 1, .Längd = 2, .Division = 'S'},
                   {.Källa = 2, .Mål = 21, .FrånPos = 3, .Längd = 4, .TypKod = 'U'}});
}

class Written {
  public:
    explicit Written(std::string_view bytes) { std::ofstream(path, std::ios::binary) << bytes; }

  private:
    TemporaryFolder folder_;

  public:
    const std::filesystem::path path = folder_ / "pris.txt";
};

/// What the facts are; those that make garbage behind an exclamation mark.
std::string shown(const FileFacts& facts) {
    static constexpr const char* kNames[] = {
        "Empty",  "Zip",    "Compound", "Pdf",    "Packed",  "WebPage",     "Utf16",     "Utf8Mark", "Utf8",     "LF",
        "SomeLF", "NoTabs", "Drifts",   "NoKeys", "Numbers", "NotOfFormat", "Uncoupled", "Groups",   "NoNumbers"};
    std::string text;
    for (const FileFact& fact : facts) {
        text.append(text.empty() ? "" : " ")
            .append(fact.garbage ? "!" : "")
            .append(kNames[static_cast<int>(fact.look)]);
    }
    return text;
}

TEST(PriceFileLook, ThroughAMask) {
    const std::string sound = "A1\tSpik\t12,50\r\nA2\tL\xE5s\t1 250,00\r\nA3\tSkruv\t7\r\n";
    const std::string big = repeated(220'000, "A1\tSpik\t12,50\r\n");
    const struct {
        const char* fault;
        LoadedMask mask;
        std::string file;
        const char* expected;
        Locale::Kind locale = Locale::Kind::Swedish;
    } cases[] = {
        {"a sound file", tabs(), sound, ""},
        {"a large sound file", tabs(), big, ""},
        {"only an end mark", tabs(), "\x1A", "Empty"},
        {"a workbook", tabs(), "PK\3\4\x14", "!Zip"},
        {"an old workbook", tabs(), "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", "!Compound"},
        {"a page of the supplier's site", tabs(), "\r\n <!doctype html>\r\n", "!WebPage"},
        {"UTF-16 with a mark", tabs(), "\xFF\xFE" + withZeros(sound), "!Utf16"},
        {"UTF-16 without", tabs(), withZeros("A1\tSpik\t12,50\r\n"), "!Utf16"},
        {"padding taken for UTF-16", tabs(), "A1\tSpik" + std::string(20, '\0') + "\t12,50\r\n", ""},
        {"a mark before the key", tabs(),
         "\xEF\xBB\xBF"
         "A1\tSpik\t12,50\r\n",
         "!Utf8Mark"},
        {"UTF-8", tabs(), "A1\tL\xC3\xA5s\t12,50\r\nA2\tR\xC3\xB6r\t1\r\n", "!Utf8"},
        {"a single letter may be chance", tabs(), "A1\tL\xC3\xA5s\t12,50\r\n", "Utf8"},
        {"UTF-8 that is not read", numberAndPrice(), "A1\tL\xC3\xA5s\t12,50\r\nA2\tR\xC3\xB6r\t1\r\n", ""},
        {"Windows letters in pairs that UTF-8 has too", tabs(), repeated(3, "A1\tCAF\xC9\xAE\t12,50\r\n"), ""},
        {"one letter of Windows", tabs(), "A1\tL\xC3\xA5s\t1\r\nA2\tR\xC3\xB6r\t1\r\nA3\tl\xE5s\t1\r\n", ""},
        {"a letter of Windows in a column that is not read", numberAndPrice(), repeated(2, "A\xC3\xA5\tR\xF6r\t1\r\n"),
         ""},
        {"line feeds", tabs(), "A1\tSpik\t12,50\nA2\tSpik\t1\n", "!LF"},
        {"one record with a line feed", tabs(), "A1\tSpik\t12,50\n", "!LF"},
        {"line feeds with CR LF at the end", tabs(), "A1\tSpik\t12,50\nA2\tSpik\t1\r\n", "!LF"},
        {"a mask made against line feeds", maskOf('T', 7, tabs().relations), repeated(3, "A1\tSpik\t1\n"), "!LF"},
        {"some line feeds", tabs(), sound + "A4\tSpik\t1\nA5\tSpik\t1\r\n", "SomeLF"},
        {"line feeds in the middle of a large file", tabs(), big + "A1\tSpik\t1\nA2\tSpik\t1\r\n" + big, "SomeLF"},
        {"line feeds at the end of a large file", tabs(), big + "A1\tSpik\t1\nA2\tSpik\t1\r\n", "SomeLF"},
        {"a line feed at the end of a piece of a large file", tabs(),
         repeated(69'904, "A1\tSpik\t12,50\r\n") + "A1\tSpik\t12,50\n" + big, "SomeLF"},
        {"UTF-8 in a large file, a letter cut by a piece's end", tabs(), repeated(250'000, "A1\t\xC3\xA5l\t12,50\r\n"),
         "!Utf8"},
        {"a long text in the only line", tabs(), "A1\tSpik\nl\xE5ng\nblank\t12,50", ""},
        {"long texts", tabs(), repeated(3, "A1\t\"Spik\nl\xE5ng\"\t12,50\r\n"), ""},
        {"lines: line feeds", lines(), "A1\nSpik\nA2\nSkruv\n", "!LF"},
        {"lines: long texts", lines(), "A1\r\nSpik\nl\xE5ng\nblank\nrak\r\nA2\r\nSkruv\nlite", ""},
        {"semicolons", tabs(), "A1;Spik;12,50\r\nA2;Spik;1\r\n", "!NoTabs"},
        {"one column is read, and there is one", maskOf('T', 3, {{.Källa = 3, .Mål = 1, .Division = 'S'}}), "A1\r\n",
         ""},
        {"records that drift", fixed(6), "A1 125\r\nA2 126\r\nA3 127\r\n", "!Drifts"},
        {"records with CR LF counted", fixed(7), "A1 125\r\nA2 126\r\nA3 127\r\n", ""},
        {"records with a line feed", fixed(6), "A1 125\nA2 126\nA3 127", ""},
        {"records without lines", fixed(6), "A1 125A2 126A3 127", ""},
        {"records in two lines", fixed(7), "A1\r\n125\nA2\r\n126\n", ""},
        {"records of their own separator with a line feed within", fixed(6), "A1\n125;A2\n126;A3\n127", ""},
        {"no keys", tabs(), "\tSpik\t1\r\n\tSpik\t2\r\n", "NoKeys"},
        {"Swedish numbers read as English", tabs(), sound, "!Numbers", Locale::Kind::English},
        {"English numbers read as Swedish", tabs(), "A1\tSpik\t1,250.00\r\nA2\tSpik\t950.00\r\n", "!Numbers"},
        {"one slip among whole numbers", tabs(), repeated(50, "A1\tSpik\t5\r\n") + "A2\tSpik\t1,250.00\r\n", "Numbers"},
        {"a currency behind each price", tabs(), repeated(10, "A1\tSpik\t12,50 kr\r\n"), "!NoNumbers"},
        {"a currency behind half of the prices", tabs(), repeated(10, "A1\tSpik\t12,50 kr\r\nA2\tSpik\t1\r\n"), ""},
        {"one slip among Swedish numbers", tabs(), sound + "A4\tSpik\t1,250.00\r\n", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const Written file(c.file);
        const std::vector<Source> numbers = {{c.mask.layout == LoadedMask::Layout::Tabs ? 3 : 0, 'I', 'U'}};
        EXPECT_EQ(shown(lookThroughMask(file.path, c.mask, numbers, Locale(c.locale))), c.expected);
    }
}

TEST(PriceFileLook, LeavesPipesAlone) {
    const Written file("");
    const std::filesystem::path pipe = file.path.parent_path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(lookThroughMask(pipe, tabs(), {}, Locale()).empty());
}

TEST(PriceFileLook, AtTradeFiles) {
    const std::string eio = "0header\r\n101000001Artikel\r\n2AB00010000\r\n";
    const std::string finfo = "CD" + std::string(26, ' ') + "15001\r\n";
    Job groups;
    groups.fromGroup = "15000";
    groups.toGroup = "15999";
    const struct {
        const char* fault;
        const TradeLook& format;
        std::string file;
        const char* expected;
    } cases[] = {
        {"a sound file", kEioLook, eio, ""},
        {"line feeds", kEioLook, "101000001Artikel\n2AB00010000\n", "!LF"},
        {"not of the format", kEioLook, "A1\tSpik\t12,50\r\n", "NotOfFormat"},
        {"articles without prices", kEioLook, "101000001Artikel\r\n", "NotOfFormat"},
        {"damaged prices only", kEioLook, "101000001Artikel\r\n2AB0001O000\r\n", "NotOfFormat"},
        {"codes of nobody", kEioLook, "101000001Artikel\r\n2XX00010000\r\n", "Uncoupled"},
        {"UTF-8", kRskLook, "1 1000001R\xC3\xB6r\r\n1 1000001R\xC3\xB6r\r\n2AB00010000\r\n", "!Utf8"},
        {"UTF-8 in a header that is not stored", kEioLook, "0\xC3\xA5\xC3\xA4\r\n" + eio, ""},
        {"a mark before a header that is not read", kEioLook, "\xEF\xBB\xBF" + eio, ""},
        {"a mark before the date of prices", kRskLook, "\xEF\xBB\xBF" + eio, "!Utf8Mark"},
        {"a group that is read", kFinfoLook, finfo, ""},
        {"no group that is read", kFinfoLook, "CD" + std::string(26, ' ') + "16001\r\n", "Groups"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const Written file(c.file);
        SupplierLookup suppliers({{"AB", "1010", true, ""}, {"CD", "1020", false, ""}}, c.format.page);
        EXPECT_EQ(shown(lookAtTradeFile(file.path, c.format, suppliers, groups)), c.expected);
    }
    const Written file(eio);
    std::ofstream(file.path.parent_path() / "rkod.dat") << "0001Grupp\n0002Grupp\n";
    const FileFacts facts = lookAtGroups(file.path);
    EXPECT_EQ(shown(facts), "!LF");
    EXPECT_EQ(facts.at(0).file, "rkod.dat");
}

}  // namespace
}  // namespace kolmera::test
