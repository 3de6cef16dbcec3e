#include "products/window/productwindow.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

#include "history/runrecord.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

class ProductWindowTest : public testing::Test {
  protected:
    explicit ProductWindowTest(const char* language = "SE") : world(Data::Demo, language) {
        RunHeader head;
        head.job = "Provet";
        head.companyFile = "FTG1.MDB";
        head.started = "2026-11-22T08:15:00";
        head.priceFile.path = "PRISER.TXT";
        RunRecord record(world.data / "Körningar", head);
        const auto company = openFileDatabase(world.data / "FTG1.mdb", {});
        company->listen(&record);
        const auto products = company->open("Produkt", RecordsetType::Table);
        product = textOf(products->value("Nummer"));
        products->edit();
        products->set("Inpris", 1234.5);
        products->update();
        company->listen(nullptr);
        record.close();
        form.emplace(world.program, nullptr);
        form->show();
        form->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*form));
    }
    void type(const std::string& text) {
        QTest::keyClicks(&control<QLineEdit>(*form, "Sök"), toQt(text));
        QTest::keyClick(&control<QLineEdit>(*form, "Sök"), Qt::Key_Down);
    }

    FormWorld world;
    std::string product;
    std::optional<ProductWindow> form;
};

class ProductWindowInEnglish : public ProductWindowTest {
  protected:
    ProductWindowInEnglish() : ProductWindowTest("EN") {}
};

TEST_F(ProductWindowTest, ShowsAProductAndItsChangesAndAsksWhy) {
    auto& list = control<QTreeWidget>(*form, "Hittade");
    type(product);
    ASSERT_GT(list.topLevelItemCount(), 0);
    EXPECT_TRUE(list.hasFocus());
    EXPECT_EQ(fromQt(list.currentItem()->text(0)), product);
    auto& changes = control<QTreeWidget>(*form, "history");
    ASSERT_TRUE(eventually([&] { return changes.topLevelItemCount() > 0; }));
    EXPECT_EQ(fromQt(changes.topLevelItem(0)->text(4)), "1234,5");
    std::string asked;
    world.program.explainPrice = [&](QWidget*, const RunHeader& run, const std::string& of, const std::string& column) {
        asked = run.job + " " + of + " " + column;
        EXPECT_EQ(world.state.sql.FtgDB, nullptr) << "the copy may miss what was written last";
    };
    changes.setCurrentItem(nullptr);
    changes.setCurrentItem(changes.topLevelItem(0));
    EXPECT_TRUE(control<QPushButton>(*form, "Varför").isEnabled());
    control<QPushButton>(*form, "Varför").click();
    EXPECT_EQ(asked, "Provet " + product + " Produkt.Inpris");
    EXPECT_NE(world.state.sql.FtgDB, nullptr) << "nothing can be found any more";
    expectTextsInBothLanguages(*form, world);
    expectNamesForScreenReaders(*form);
    expectUniqueMnemonics(*form);
    takePicture(*form, "productwindow");
    constexpr int kWide = 222;
    EXPECT_NE(list.columnWidth(0), list.header()->defaultSectionSize()) << "not as wide as what it shows";
    list.setColumnWidth(0, kWide);
    control<QLineEdit>(*form, "Sök").clear();
    type(product.substr(0, 2));
    EXPECT_EQ(list.columnWidth(0), kWide) << "the user's width is lost while he types";
    form.reset();
    EXPECT_EQ(world.state.sql.FtgDB, nullptr);
}

TEST_F(ProductWindowInEnglish, EmptiesTheSearchAndCloses) {
    type("no such product");
    EXPECT_EQ(control<QTreeWidget>(*form, "Hittade").topLevelItemCount(), 0);
    EXPECT_EQ(control<QTabWidget>(*form, "Flikar").count(), 0);
    QTest::keyClick(&control<QLineEdit>(*form, "Sök"), Qt::Key_Escape);
    EXPECT_TRUE(form->isVisible());
    type(product);
    expectTextsInBothLanguages(*form, world);
    expectUniqueMnemonics(*form);
    takePicture(*form, "productwindow_en");
    QTest::keyClick(&*form, Qt::Key_Escape);
    EXPECT_FALSE(form->isVisible());
}

}  // namespace
}  // namespace kolmera
