#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QStandardItemModel>
#include <QTreeView>

#include "db/fakedatabase.h"
#include "suite/captions.h"
#include "suite/cregtool.h"
#include "suite/currencies.h"
#include "suite/fieldrules.h"
#include "suite/folderpart.h"
#include "suite/pricesettings.h"
#include "suite/recordlists.h"
#include "suite/starttexts.h"
#include "suite/switchedtable.h"
#include "suite/theme.h"
#include "suite/wait.h"
#include "support/qt/formworld.h"
#include "support/testcompany.h"
#include "ui/qttext.h"

namespace kolmera::test {
namespace {

TEST(Suite, TextsOfFieldsPathsAndStart) {
    EXPECT_EQ(SpärraTangent('\''), 0);
    EXPECT_EQ(SpärraTangent('"'), '"');
    EXPECT_EQ(FyllUtText("5,00", 10), "5,00" + std::string(12, ' '));
    EXPECT_EQ(FyllUtText("-5,00", 10), "-5,00" + std::string(11, ' '));
    EXPECT_EQ(Mappdel("C:\\a\\b.txt"), "C:\\a\\");
    EXPECT_EQ(Mappdel("C:b.txt"), "C:");
    EXPECT_EQ(Mappdel("/srv/a.txt"), "/srv/");
    FormWorld world(Data::Empty, "EN");
    const StartTexts start(world.texts);
    EXPECT_EQ(start.Ordtabell(48), "cash register order");
    EXPECT_EQ(start.Ordtabell(16), "no") << "entry 12 in lower case";
    EXPECT_EQ(start.message(1), "") << "not one of the messages";
}

TEST(Suite, SettingsOfPricesAndLookUpsOfCurrencies) {
    TestCompany company;
    company.add("Syinställningar", {{"1OMomsproc", 25}});
    company.add("Syinställningar2", {{"PPrisAvrund", "0\r\n100"},
                                     {"PUtprisKopplaMot", "1=V;2=I"},
                                     {"PUtprisValuta", "2=EUR"},
                                     {"PFaktorValuta", true},
                                     {"PNoAvrundPLBM", 4}});
    company.add("Syvaluta", {{"Kod", "JPY"}, {"Kundreskontra", 7.5}, {"Faktor", 100}, {"Valutakonto", 7}});
    ClsSyInställningar_2 settings(company.sql);
    EXPECT_EQ(settings.DblVal("PNoAvrundPLBM") + settings.SinVal("Finns inte"), 4);
    ClsPrisAvrund prices(company.sql, company.passedOver);
    InitInstOBJ(prices, settings);
    EXPECT_TRUE(prices.BoolPFaktorValuta);
    EXPECT_EQ(StrPUtprisKopplaMot(prices) + " " + StrPUtprisValuta(prices) + " " + StrPUtprisMomsMot(prices),
              "1=V 2=EUR ");
    StrTom(prices, 1, "200");
    EXPECT_EQ(StrInställning(prices), "0\r\n200\r\n\r\n\r\n\r\n\r\n\r\n\r\n\r\n");
    EXPECT_EQ(prices.UtförAvrundning(150.26, 2, 1), 150.3);
    EXPECT_EQ(prices.UtförAvrundning(150.26, 2, 2), 150.26) << "list 2 is not rounded by ranges";
    VatRates rates(company.sql, company.passedOver);
    EXPECT_DOUBLE_EQ(VändMoms(rates, 1, 125), 100);
    EXPECT_EQ(VändMoms(rates, 4, 125), 125);

    CurrencyLookUps currency(company.sql, company.passedOver);
    currency.EndastFaktor("JPY", 8);
    EXPECT_EQ(currency.Kurs * currency.Faktor, 800);
    currency.ValutaKonto("JPY");
    EXPECT_EQ(currency.Konto, 7);
    std::vector<std::string> codes = {"old"};
    currency.FyllCombo(codes);
    EXPECT_EQ(codes, std::vector<std::string>{"JPY"});
}

TEST(Suite, SwitchesAndNumbersOfATable) {
    Asked asked;
    SqlLayer sql{Locale(Locale::Kind::Swedish)};
    sql.FtgDB = std::make_unique<FakeDatabase>(asked);
    sql.ÄrSQLFöretag = true;
    SwitchedTable table(sql);
    table.BoolUseVarKey1OneString = table.BoolUseOrderBy = true;
    table.BoolUseSQLPassThrough = table.BoolUsePopCursor = true;
    table.OpenRs("Levprislista", options::kReadOnly);
    table.StrIndex("Produktnr");
    table.SQLSeek("=", std::vector<Value>{std::string("P'1")});
    ASSERT_GE(asked.size(), 3U);
    EXPECT_EQ(asked[asked.size() - 3],
              "open  SELECT * FROM Levprislista WHERE Produktnr, Leverantör = \"P'1\" ORDER BY Produktnr, "
              "Leverantör 2 68");
    EXPECT_EQ(asked.back(), "first") << "recordset not filled";
    table.SQLCloseRs();
    EXPECT_EQ(table.Rs, nullptr);

    TestCompany company;
    company.add("Levprislista", {{"Produktnr", "P1"}, {"Leverantör", "S1"}, {"Inpris", 12.5}});
    SwitchedTable prices(company.sql);
    prices.OpenRs("Levprislista", options::kReadOnly);
    prices.StrIndex("Produktnr");
    prices.SQLSeek("=", std::vector<Value>{std::string("P1"), std::string("S1")});
    EXPECT_EQ(prices.NumVRs("Inpris") + prices.NumSRs("Inpris"), 25);
    EXPECT_EQ(prices.NumVRsInt(7), 12.5);
    EXPECT_EQ(prices.NumVRs("Produktnr"), 0) << "a text counts as a number";
    EXPECT_EQ(AntalPoster(*prices.Rs), 1);
}

TEST(Suite, RecordsInListsAndFields) {
    TestCompany company;
    for (const char* code : {"SEK", "D'X"}) company.add("Syvaluta", {{"Kod", code}, {"Kundreskontra", 2.5}});
    const auto records =
        company.sql.FtgDB->open("SELECT ID, Kod, Kundreskontra FROM Syvaluta ORDER BY ID", RecordsetType::Dynaset);
    QListWidget list;
    for (; !records->eof(); records->moveNext()) {
        auto* item = new QListWidgetItem(toQt(textOf(records->value("Kod"))), &list);
        item->setData(kIdRole, QVariant::fromValue<qlonglong>(recordId(*records)));
    }
    QLineEdit id, kod("D'X"), kurs;
    QLineEdit* const fields[] = {&id, &kod, &kurs};
    SökPost(1, 2, *records, fields, list, Locale(Locale::Kind::Swedish));
    EXPECT_EQ(list.currentRow(), 1);
    EXPECT_EQ(kurs.text(), "2,5");
    id.setText("1 OR 1 = 1");
    SökPost(0, 2, *records, fields, list, Locale(Locale::Kind::Swedish));
    EXPECT_EQ(list.currentRow(), 1) << "a text became part of the criterion";
    records->moveFirst();
    TaBortListradEfterId(*records, list);
    EXPECT_EQ(list.count(), 1);

    list.addItems({"Arken\tFTG1.MDB", "arken AB\tFTG2.MDB", "SQL;Dalen\tPå servern"});
    VäljListradEfterKod(list, "ftg2.mdb");
    EXPECT_EQ(list.currentRow(), 2);
    VäljListradEfterKod(list, "Sql;dalen");
    EXPECT_EQ(list.currentRow(), 3);
    VäljListradEfterKod(list, "D'X");
    EXPECT_EQ(list.currentRow(), 3) << "a row without a tab has no code";
    VäljListradEfterText(list, "ark");
    EXPECT_EQ(list.currentRow(), 2) << "letter case does not count";

    QStandardItemModel model(2, 1);
    model.setItem(0, new QStandardItem("a"));
    model.setItem(1, new QStandardItem("b"));
    QTreeView tree;
    tree.setModel(&model);
    SorteraKolumn(tree, 0);
    SorteraKolumn(tree, 0);
    EXPECT_EQ(model.item(0)->text(), "b");
}

TEST(Suite, CaptionsAndTheThemeOfAnotherDesktop) {
    FormWorld world(Data::Empty, "EN");
    QWidget form;
    form.setObjectName("PrisRab");
    SättFormulärRubrik(form, world.texts, " - A");
    EXPECT_EQ(form.windowTitle(), "Discount letters - A");
    auto& button = *new QGroupBox("x", &form);
    button.setObjectName("finns inte");
    SättKontrollTextMed(button, world.texts, "B");
    EXPECT_EQ(button.title(), "B");
    Vänta(1);

    const std::string key = R"([Software\Microsoft\Windows\CurrentVersion\ThemeManager])";
    world.folder.write("theme.ini", key + "\nThemeActive=1\nColorName=HomeStead\n");
    const SettingsStore settings(world.folder / "theme.ini");
    cRegTool registry(settings);
    ASSERT_TRUE(registry.OpenRegKey("HKEY_CURRENT_USER", "Software\\Microsoft"));
    EXPECT_EQ(registry.EnumRegKeys(), std::vector<std::string>{"WINDOWS"});
    DesktopFacts desktop;
    desktop.windowsNt = desktop.manifestExists = true;
    desktop.major = 5;
    desktop.minor = 1;
    const Theme olive = InitXP(desktop, registry);
    EXPECT_TRUE(olive.XPStil);
    EXPECT_EQ(olive.colour(1), (Colour{164, 185, 127}));
    EXPECT_EQ(olive.picture(1), 202);
    desktop.manifestExists = false;
    EXPECT_FALSE(InitXP(desktop, registry).XPStil);
    EXPECT_EQ(BlandaFärger({0, 255, 10}, {1, 255, 20}), (Colour{0, 255, 15}));
}

}  // namespace
}  // namespace kolmera::test
