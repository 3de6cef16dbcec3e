#include "setup/window/startwindow.h"

#include <gtest/gtest.h>

#include <QCommandLinkButton>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "definitions/jobfile.h"
#include "setup/window/newcompanywindow.h"
#include "support/qt/formworld.h"

namespace kolmera {
namespace {

namespace fs = std::filesystem;
using namespace test;

class StartWindowTest : public testing::Test {
  protected:
    StartWindowTest() {
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString((world.folder / "share").string()));
        fs::create_directories(world.state.programFolder());
        fs::copy(fs::path(KOLMERA_SOURCE_DIR) / "data" / "demo", world.state.programFolder() / "demo",
                 fs::copy_options::recursive);
    }
    ~StartWindowTest() override { qunsetenv("XDG_DATA_HOME"); }

    FormWorld world;
};

TEST_F(StartWindowTest, MakesTheDemoOnce) {
    for (int times = 0; times < 2; ++times) {
        StartWindow window(world.program, false, nullptr);
        window.show();
        control<QCommandLinkButton>(window, "Demo").click();
        ASSERT_TRUE(window.answer());
        EXPECT_EQ(window.answer()->dataFolder, world.folder / "share" / "Kolmera" / "Demo");
        JobFile jobs(window.answer()->dataFolder);
        EXPECT_EQ(jobs.find("Smedhult verktyg").has_value(), times == 0) << "what the user did with the demo is gone";
        if (times == 0) jobs.remove({*jobs.find("Smedhult verktyg")});
    }
}

TEST_F(StartWindowTest, MakesANewCompanyWhereNothingIsYet) {
    const fs::path folder = world.folder / "Åkes el";
    StartWindow window(world.program, false, nullptr);
    window.show();
    const WhenShown asked("NewCompanyWindow", [&](QDialog& form) {
        EXPECT_FALSE(control<QPushButton>(form, "Skapa").isEnabled()) << "a company without a name";
        QTest::keyClicks(&control<QLineEdit>(form, "Namn"), "Akes/el");
        EXPECT_TRUE(control<QLineEdit>(form, "Mapp").text().endsWith("/Akes-el"));
        takePicture(form, "newcompany");
        control<QLineEdit>(form, "Mapp").setText(QString::fromStdString(world.data.parent_path().string()));
        world.boxPort.answers = {Answer::OK};
        control<QPushButton>(form, "Skapa").click();
        EXPECT_TRUE(form.isVisible()) << "a folder with other things in it was taken";
        control<QLineEdit>(form, "Mapp").setText(QString::fromStdString(folder.string()));
        control<QPushButton>(form, "Skapa").click();
    });
    control<QCommandLinkButton>(window, "Nytt").click();
    EXPECT_TRUE(asked.came());
    ASSERT_TRUE(window.answer());
    EXPECT_EQ(window.answer()->dataFolder, folder);
    EXPECT_TRUE(fs::exists(folder / "FTG1.mdb"));
}

TEST_F(StartWindowTest, OffersWhatWasOpenBefore) {
    world.program.recentFolders = {world.folder / "gone", world.data};
    StartWindow window(world.program, true, nullptr);
    window.show();
    auto& recent = control<QListWidget>(window, "Senaste");
    recent.setCurrentRow(0);
    world.boxPort.answers = {Answer::OK};
    QTest::keyClick(&recent, Qt::Key_Return);
    EXPECT_FALSE(window.answer()) << "a folder that is gone";
    recent.setCurrentRow(1);
    QTest::keyClick(&recent, Qt::Key_Return);
    ASSERT_TRUE(window.answer());
    EXPECT_EQ(window.answer()->dataFolder, world.data);
    StartWindow own(world.program, true, nullptr);
    own.show();
    control<QCommandLinkButton>(own, "Egen").click();
    ASSERT_TRUE(own.answer());
    EXPECT_TRUE(own.answer()->dataFolder.empty());
}

TEST(StartWindowTexts, InBothLanguages) {
    for (const std::string language : {"SE", "EN"}) {
        FormWorld world(Data::Empty, language);
        world.program.recentFolders = {world.data};
        StartWindow window(world.program, true, nullptr);
        window.show();
        expectTextsInBothLanguages(window, world);
        expectUniqueMnemonics(window);
        takePicture(window, "startwindow-" + language);
        NewCompanyWindow company(world.program, nullptr);
        company.show();
        expectTextsInBothLanguages(company, world);
        expectUniqueMnemonics(company);
        takePicture(company, "newcompany-" + language);
    }
}

}  // namespace
}  // namespace kolmera
