#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

TEST(Documents, ByRule) {
    const std::string longPath(210, 'd');
    const struct {
        const char* fault;
        char rule;
        const char* stored;  // nullptr: no row
        std::string cell;
        std::string expected;  // Dokument, Förändringsdatum
        int written;
    } cases[] = {
        {"U adds none", 'U', nullptr, "ny.pdf", "ny.pdf 2026-11-22\n", 1},
        {"S adds none", 'S', nullptr, "ny.pdf", "ny.pdf 2026-11-22\n", 1},
        {"I adds", 'I', nullptr, "ny.pdf", "", 0},
        {"U does not change", 'U', "g.pdf", "ny.pdf", "ny.pdf 2026-11-22\n", 1},
        {"S changes or dates a stored document", 'S', "g.pdf", "ny.pdf", "g.pdf -\n", 0},
        {"S does not fill an empty one", 'S', "", "ny.pdf", "ny.pdf 2026-11-22\n", 1},
        {"an empty cell does not delete under U", 'U', "g.pdf", "", "", 0},
        {"an empty cell deletes under S", 'S', "g.pdf", "", "g.pdf -\n", 0},
        {"200 characters are not the most", 'U', nullptr, longPath, longPath.substr(0, 200) + " 2026-11-22\n", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.add("Proddokument", {{"Produktnr", "B"}, {"Nummer", std::int64_t{1}}, {"Dokument", "b.pdf"}});
        world.add("Proddokument", {{"Produktnr", "A"}, {"Nummer", std::int64_t{2}}, {"Dokument", "tva.pdf"}});
        if (c.stored) {
            world.add("Proddokument",
                      {{"Produktnr", "A"}, {"Nummer", std::int64_t{1}}, {"Dokument", std::string(c.stored)}});
        }
        world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Dokument", 'I', c.rule}}});
        world.priceFile("A\t" + c.cell + "\r\n");
        const RunSummary summary = world.run();
        EXPECT_EQ(world.rows("Proddokument", "Dokument, Förändringsdatum"), "b.pdf -\ntva.pdf -\n" + c.expected);
        EXPECT_EQ(summary.documents, c.written);
    }
}

}  // namespace
}  // namespace kolmera::test
