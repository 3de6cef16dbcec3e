#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::IsEmpty;

/// Two suppliers with one article number, and a row of every table that a run writes.
struct RichWorld : World {
    RichWorld() {
        setting("PAutoUppdatUtpris", true);
        add("Leverantör", {{"Nummer", "L1"}});
        add("Syvaluta", {{"Kod", "EUR"}, {"Levreskontra", 10.0}, {"Kundreskontra", 10.0}, {"Faktor", std::int64_t{1}}});
        for (const char* supplier : {"L2", "L1"}) {
            const std::string number = std::string("P") + supplier;
            add("Produkt", {{"Nummer", number},
                            {"Söknamn", "NAMN" + number},
                            {"Leverantör", supplier},
                            {"Levartikelnr", "X"},
                            {"1Pålägg", 25.0},
                            {"Valutakod", "EUR"}});
            add("Prodaltprodnr", {{"Produktnr", number}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "M" + number}});
            add("Prodaltprodnr", {{"Produktnr", number}, {"Nummer", std::int64_t{2}}, {"Alternativnr", "gone"}});
        }
        add("LevrabattBrev", {{"Leverantör", "L1"}, {"Rabattgrupp", "G1"}, {"1Rabatt", 10.0}});
        job.supplier = "L1";
    }
    [[nodiscard]] std::string everything() const {
        return rows("Produkt", "Nummer, Söknamn, Leverantör, Levartikelnr, Inpris, 1Utpris, Förändringsdatum") +
               "--\n" + rows("Prodaltprodnr", "Produktnr, Nummer, Alternativnr") + "--\n" +
               rows("Levprislista", "Produktnr, Leverantör, Levartikelnr, Rabatt, RabattKod, Inpris") + "--\n" +
               rows("Proddokument", "Produktnr, Dokument");
    }
};

TEST(ServerRun, LeavesTheSameRowsAsAFile) {
    const struct {
        const char* fault;
        const char* key;
        bool createNew;
        const char* file;  // key, Inpris, code, document, alternative 1, 2 and 3
        const char* mustHold;
    } cases[] = {
        {"by number", "Nummer", true,
         "PL1\t80\tG1\td.pdf\tM'1\t\tnew\r\nPL1\t90\tG1\td.pdf\tM2\t\tnewer\r\nNY\t5\t\t\t\t\t\r\n", "PL1 3 newer"},
        {"by search name", "Söknamn", true, "NAMNPL2\t80\tG1\td.pdf\tM1\t\tnew\r\n", "PL2 L1 X 10 G1 72"},
        {"by article number", "Levartikelnr", true, "X\t80\tG1\td.pdf\tM1\t\tnew\r\nY\t80\t\t\t\t\t\r\n",
         "PL1 L1 X 10 G1 72"},
        {"by article number through the price list", "Levartikelnr", false, "X\t80\tG1\td.pdf\tM1\t\tnew\r\n",
         "PL2 NAMNPL2 L2 X 0 0 -"},
        {"by alternative number", "Alternativ 1", true, "MPL2\t80\tG1\td.pdf\tMPL2\t\tnew\r\n", "PL2 1 MPL2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        std::string results[2];
        RunSummary summaries[2];
        for (const bool server : {false, true}) {
            RichWorld world;
            world.mask({.createNew = c.createNew,
                        .supplierPrices = true,
                        .relations = {{1, c.key, 'S'},
                                      {2, "Inpris"},
                                      {3, "0", 'R'},
                                      {4, "Dokument"},
                                      {5, "Alternativ 1"},
                                      {6, "Alternativ 2"},
                                      {7, "Alternativ 3"}}});
            world.priceFile(c.file);
            if (server) world.moveToServer();
            summaries[server] = world.run();
            EXPECT_EQ(world.state.sql.ÄrSQLFöretag, server);
            EXPECT_THAT(world.port.passedOver, IsEmpty());
            results[server] = world.everything();
        }
        EXPECT_EQ(results[1], results[0]);
        EXPECT_THAT(results[1], ::testing::HasSubstr(c.mustHold));
        EXPECT_EQ(summaries[1].alternatives, summaries[0].alternatives);
        EXPECT_EQ(summaries[1].skipped, summaries[0].skipped);
    }
}

}  // namespace
}  // namespace kolmera::test
