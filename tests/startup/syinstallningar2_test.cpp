#include "startup/syinstallningar2.h"

#include "startup/newcompany.h"
#include "startworld.h"

namespace kolmera::test {
namespace {

TEST(SyInställningar2, ReadsEveryKindOfColumn) {
    const TemporaryFolder folder;
    createCompany(folder.path(), "FTG1.mdb", "One");
    SqlLayer sql{Locale(Locale::Kind::Swedish)};
    sql.FtgDB = openFileDatabase(folder / "FTG1.mdb", OpenOptions());
    PassedOverSilently silent;
    ASSERT_TRUE(
        sql.SQLKör("UPDATE Syinställningar2 SET PPrisAvrund = '12,5 kr', PNoAvrundPLBM = 6, PFaktorValuta = 1, "
                   "PAutoUppdatUtpris = NULL, PDecInpris = NULL",
                   silent));
    ClsSyInställningar_2 settings(sql);
    EXPECT_EQ(settings.LngVal("pnoavrundplbm"), 6);
    EXPECT_EQ(settings.LngVal("PPrisAvrund"), 12);
    EXPECT_EQ(settings.DblVal("PNoAvrundPLBM"), 6);
    EXPECT_EQ(settings.SinVal("PNoAvrundPLBM"), 6.0F);
    EXPECT_EQ(settings.TxtVal("PPrisAvrund"), "12,5 kr");
    EXPECT_TRUE(settings.BoolVal("PFaktorValuta"));
    for (const char* none : {"PAutoUppdatUtpris", "PDecInpris", "PUtprisValuta", "Finns inte"}) {
        SCOPED_TRACE(none);
        EXPECT_EQ(settings.LngVal(none), 0);
        EXPECT_EQ(settings.DblVal(none), 0);
        EXPECT_EQ(settings.SinVal(none), 0.0F);
        EXPECT_EQ(settings.TxtVal(none), "");
        EXPECT_FALSE(settings.BoolVal(none));
    }
    sql.FtgDB->execute("UPDATE Syinställningar2 SET PNoAvrundPLBM = 4");
    ClsSyInställningar_2 later(sql);
    EXPECT_EQ(later.LngVal("PNoAvrundPLBM"), 4);
}

TEST(SyInställningar2, AnEmptyTableReadsAsZero) {
    const TemporaryFolder folder;
    createCompany(folder.path(), "FTG1.mdb", "One");
    SqlLayer sql{Locale(Locale::Kind::Swedish)};
    sql.FtgDB = openFileDatabase(folder / "FTG1.mdb", OpenOptions());
    sql.FtgDB->execute("DELETE FROM Syinställningar2");
    ClsSyInställningar_2 settings(sql);
    EXPECT_EQ(settings.LngVal("PDecInpris"), 0);
    EXPECT_EQ(settings.TxtVal("PPrisAvrund"), "");
}

}  // namespace
}  // namespace kolmera::test
