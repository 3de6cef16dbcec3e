#include <gtest/gtest.h>

#include <QLineEdit>
#include <QListWidget>

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
#include "support/qt/formworld.h"
#include "support/testcompany.h"
#include "ui/qttext.h"

namespace kolmera::test {
namespace {

TEST(Suite, TextsOfFieldsPathsAndStart) {
    EXPECT_EQ(SpärraTangent('\''), 0);
    EXPECT_EQ(FyllUtText("5,00", 10), "5,00" + std::string(12, ' '));
    EXPECT_EQ(Mappdel("C:\\a\\b.txt"), "C:\\a\\");
    FormWorld world(Data::Empty, "EN");
    EXPECT_EQ(StartTexts(world.texts).Ordtabell(48), "cash register order");
}

TEST(Suite, SettingsOfPricesAndLookUpsOfCurrencies) {
    TestCompany company;
    company.add("Syinställningar", {{"1OMomsproc", 25}});
    company.add("Syinställningar2", {{"PPrisAvrund", "0\r\n100"}, {"PUtprisKopplaMot", "1=V;2=I"}});
    company.add("Syvaluta", {{"Kod", "JPY"}, {"Kundreskontra", 7.5}, {"Faktor", 100}});
    ClsSyInställningar_2 settings(company.sql);
    ClsPrisAvrund prices(company.sql, company.passedOver);
    InitInstOBJ(prices, settings);
    EXPECT_EQ(StrPUtprisKopplaMot(prices), "1=V");
    StrTom(prices, 1, "200");
    EXPECT_EQ(StrInställning(prices), "0\r\n200\r\n\r\n\r\n\r\n\r\n\r\n\r\n\r\n");
    VatRates rates(company.sql, company.passedOver);
    EXPECT_DOUBLE_EQ(VändMoms(rates, 1, 125), 100);
    CurrencyLookUps currency(company.sql, company.passedOver);
    currency.EndastFaktor("JPY", 8);
    EXPECT_EQ(currency.Kurs * currency.Faktor, 800);
}

TEST(Suite, SwitchesAndNumbersOfATable) {
    TestCompany company;
    company.add("Levprislista", {{"Produktnr", "P1"}, {"Leverantör", "S1"}, {"Inpris", 12.5}});
    SwitchedTable prices(company.sql);
    prices.OpenRs("Levprislista", options::kReadOnly);
    prices.StrIndex("Produktnr");
    prices.SQLSeek("=", std::vector<Value>{std::string("P1"), std::string("S1")});
    EXPECT_EQ(prices.NumVRs("Inpris"), 12.5);
}

TEST(Suite, RecordsInListsAndFields) {
    TestCompany company;
    for (const char* code : {"SEK", "NOK"}) company.add("Syvaluta", {{"Kod", code}, {"Kundreskontra", 2.5}});
    const auto records =
        company.sql.FtgDB->open("SELECT ID, Kod, Kundreskontra FROM Syvaluta ORDER BY ID", RecordsetType::Dynaset);
    QListWidget list;
    for (; !records->eof(); records->moveNext()) {
        auto* item = new QListWidgetItem(toQt(textOf(records->value("Kod"))), &list);
        item->setData(kIdRole, QVariant::fromValue<qlonglong>(recordId(*records)));
    }
    QLineEdit id, kod("NOK"), kurs;
    QLineEdit* const fields[] = {&id, &kod, &kurs};
    SökPost(1, 2, *records, fields, list, Locale(Locale::Kind::Swedish));
    EXPECT_EQ(list.currentRow(), 1);
    EXPECT_EQ(kurs.text(), "2,5");
    list.addItems({"Arken\tFTG1.MDB", "SQL;Dalen\tPå servern"});
    VäljListradEfterKod(list, "ftg1.mdb");
    EXPECT_EQ(list.currentRow(), 2);
}

TEST(Suite, CaptionsAndTheThemeOfAnotherDesktop) {
    FormWorld world(Data::Empty, "EN");
    QWidget form;
    form.setObjectName("PrisRab");
    SättFormulärRubrik(form, world.texts, " - A");
    EXPECT_EQ(form.windowTitle(), "Discount letters - A");
    const std::string key = R"([Software\Microsoft\Windows\CurrentVersion\ThemeManager])";
    world.folder.write("theme.ini", key + "\nThemeActive=1\nColorName=HomeStead\n");
    const SettingsStore settings(world.folder / "theme.ini");
    cRegTool registry(settings);
    DesktopFacts desktop;
    desktop.windowsNt = desktop.manifestExists = true;
    desktop.major = 5;
    desktop.minor = 1;
    EXPECT_EQ(InitXP(desktop, registry).colour(1), (Colour{164, 185, 127}));
}

}  // namespace
}  // namespace kolmera::test
