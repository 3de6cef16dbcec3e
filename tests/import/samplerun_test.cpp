#include "import/masks/samplerun.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "support/world.h"

namespace kolmera {
namespace {

using test::World;
using testing::ElementsAre;
using Product = SampleValues::Product;

constexpr std::string_view kColumns = "Nummer, Benämning, Inpris, 1Utpris, Prisändrdat, Spärrarabatt";

class SampleRunTest : public testing::Test {
  protected:
    SampleRunTest() {
        world.setting("1OMomsproc", 25.0);
        world.add("Prodaltrubrik", {{"Nummer", std::int64_t{1}}, {"Rubrik", "EAN"}});
        world.add("Produkt", {{"Nummer", "A1"}, {"Benämning", "Skruv"}, {"Inpris", 7.5}, {"1Utpris", 0.0}});
        world.add("Prodaltprodnr", {{"Produktnr", "A1"}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "731"}});
        world.mask({.createNew = true,
                    .relations = {{1, "Nummer", 'S'},
                                  {2, "Benämning", 'I', 'S'},
                                  {3, "Inpris", '2'},
                                  {4, "1Utpris", 'I', '1'},
                                  {5, "Prisändrdat"},
                                  {6, "Alternativ 1"}}});
        world.priceFile(
            "A1\tMutter\t1255\t10\t260131\t999\r\n"
            "A2\tMutter\t12x\t\tx\t\r\n"
            "\tMutter\t1\t\t\t\r\n");
    }
    SampleValues read(std::int64_t record) {
        const WholeMask mask = *MaskFile(world.data()).find(world.job.mask);
        MessageBoxes boxes(world.port, {});
        CompanyRegister companies(world.state, world.texts(), boxes);
        EXPECT_TRUE(companies.ÖppnaDatabas(world.job.company));
        const SampleValues values = readSample(world.state.sql, world.texts(), world.Idag, world.job.supplier,
                                               mask.mask, mask.relations, world.data() / "pris.txt", record);
        world.state.sql.FtgDB.reset();
        return values;
    }
    static std::vector<std::string> texts(const SampleValues& values) {
        std::vector<std::string> rows;
        for (const auto& each : values.values) {
            rows.push_back(
                fmt::format("{}|{}|{}|{}", each.raw, each.unread ? "?" : each.read, each.present, each.after));
        }
        return rows;
    }

    World world;
};

TEST_F(SampleRunTest, ShowsWhatARunThenWrites) {
    const std::string before = world.rows("Produkt", kColumns) + world.rows("Prodaltprodnr", "Alternativnr");
    const SampleValues existing = read(0), added = read(1), none = read(2);
    EXPECT_EQ(world.rows("Produkt", kColumns) + world.rows("Prodaltprodnr", "Alternativnr"), before) << "written";

    EXPECT_EQ(existing.product, Product::Existing);
    EXPECT_EQ(existing.number + existing.name, "A1Skruv");
    EXPECT_THAT(texts(existing), ElementsAre("A1|A1|A1|A1", "Mutter|Mutter|Skruv|Skruv", "1255|12,55|7,5|12,55",
                                             "10|10|0|12,5", "260131|2026-01-31||2026-01-31", "999|999|731|999"));
    EXPECT_EQ(added.product, Product::New);
    EXPECT_THAT(texts(added), ElementsAre("A2|A2||A2", "Mutter|Mutter||Mutter", "12x|?||0", "|||0", "x|?||", "|||"));
    EXPECT_EQ(none.product, Product::NotRead);
    EXPECT_TRUE(read(3).values.empty()) << "a record behind the last";

    world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer, Benämning, Inpris, 1Utpris"),
              "A1 Skruv 12.55 12.5\n"
              "A2 Mutter 0 0\n");
}

TEST_F(SampleRunTest, ShowsThePricesThatSavingCouples) {
    world.setting("PAutoUppdatUtpris", true);
    world.setting("PFaktor1", 25.0);
    world.priceFile("B\tMutter\t8000\t7\t260131\t\r\n");
    EXPECT_THAT(texts(read(0)), ElementsAre("B|B||B", "Mutter|Mutter||Mutter", "8000|80||80", "7|7||100",
                                            "260131|2026-01-31||2026-11-22", "|||"));
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "A1\n") << "saved";
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Inpris, Prisändrdat, 1Utpris"), "7.5 - 0\n80 2026-11-22 100\n");
}

}  // namespace
}  // namespace kolmera
