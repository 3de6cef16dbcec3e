#include "setup/window/accesswindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <fstream>

#include "platform/jet/jetmessages.h"
#include "platform/jet/jetreader.h"
#include "startup/newcompany.h"
#include "support/qt/formworld.h"

namespace kolmera {
namespace {

namespace fs = std::filesystem;
using namespace test;
using testing::HasSubstr;

/// A window over a data folder, and a program that stands for the reader.
class AccessWindowTest : public testing::Test {
  protected:
    AccessWindowTest() {
        fs::create_directories(world.state.programFolder());
        std::ofstream(file) << "of an older system";
        readerSays(jet::tableMessage(kTable) + jet::otherMessage(jet::OtherObject::Query, "Dyra varor") +
                   jet::beginningMessage(0) + jet::rowMessage({std::int64_t{3}}) + jet::endMessage());
    }
    void readerSays(const std::string& messages, const std::string& afterwards = "") const {
        const fs::path reader = world.state.programFolder() / jet::kReaderProgram;
        const std::string said = (world.folder / "said").string();
        std::ofstream(said, std::ios::binary) << messages;
        std::ofstream(reader) << "#!/bin/sh\n/bin/cat '" << said << "'\n" << afterwards << "\n";
        fs::permissions(reader, fs::perms::owner_all);
    }
    [[nodiscard]] bool hasOwnTable(const char* company) const {
        const auto names = openFileDatabase(world.data / company, {})->tableNames();
        return std::ranges::find(names, kTable.name) != names.end();
    }

    const jet::Table kTable{
        .name = "Egen", .rows = 1, .columns = {{.name = "Nr", .type = jet::ColumnType::Long}}, .indexes = {}};
    FormWorld world;
    std::string file = (world.folder / "gammal.mdb").string();
};

TEST_F(AccessWindowTest, MakesACompanyAndShowsWhatIsLeftOut) {
    createCompany(world.data, "FTG1.mdb", "Redan här");
    AccessWindow window(world.program, nullptr);
    window.show();
    auto& import = control<QPushButton>(window, "Importera");
    auto& company = control<QLineEdit>(window, "Företag");
    EXPECT_EQ(company.text(), "FTG2.mdb") << "the first one that is free";
    window.fileToRead = [this](const FileQuestion&) { return QString::fromStdString(file); };
    EXPECT_FALSE(import.isEnabled()) << "no file is chosen";
    control<QPushButton>(window, "Bläddra").click();
    company.setText("andra.mdb");
    EXPECT_FALSE(import.isEnabled()) << "a name that no list shows";
    company.setText("FTG2.mdb");
    import.click();
    EXPECT_TRUE(hasOwnTable("FTG2.mdb"));
    control<QPushButton>(window, "Kopiera").click();
    const std::string copied = QApplication::clipboard()->text().toStdString();
    EXPECT_THAT(copied, HasSubstr("Egen: 1"));
    EXPECT_THAT(copied, HasSubstr("Dyra varor: frågan utelämnad"));
    takePicture(window, "accesswindow-done");
}

TEST_F(AccessWindowTest, ReplacesACompanyOnlyWhenTheUserSaysSo) {
    createCompany(world.data, "FTG1.mdb", "Redan här");
    for (const Answer answer : {Answer::No, Answer::Yes}) {
        AccessWindow window(world.program, nullptr);
        window.show();
        control<QLineEdit>(window, "Fil").setText(QString::fromStdString(file));
        control<QLineEdit>(window, "Företag").setText("FTG1.mdb");
        world.boxPort.answers = {answer};
        control<QPushButton>(window, "Importera").click();
        EXPECT_EQ(hasOwnTable("FTG1.mdb"), answer == Answer::Yes);
    }
}

TEST_F(AccessWindowTest, CancelAndFailureLeaveNothing) {
    AccessWindow window(world.program, nullptr);
    window.show();
    control<QLineEdit>(window, "Fil").setText(QString::fromStdString(file));
    readerSays(jet::tableMessage(kTable) + jet::beginningMessage(0), "exec sleep 1000");
    QTimer::singleShot(0, &window, [&] { control<QPushButton>(window, "Stäng").click(); });
    control<QPushButton>(window, "Importera").click();
    EXPECT_TRUE(window.isVisible()) << "Cancel of an import closes the window";
    readerSays(jet::tableMessage(kTable), "kill -SEGV $$");
    world.boxPort.answers = {Answer::OK};
    control<QPushButton>(window, "Importera").click();
    EXPECT_EQ(world.boxPort.shown.size(), 1U);
    EXPECT_TRUE(control<QPushButton>(window, "Importera").isEnabled()) << "no second try";
    for (const auto& entry : fs::directory_iterator(world.data)) {
        EXPECT_FALSE(entry.path().filename().string().starts_with("FTG")) << entry.path();
    }
}

TEST_F(AccessWindowTest, IsNamedWhereSuchAFileIsOpenedAsACompany) {
    std::ofstream(world.data / "FTG5.mdb", std::ios::binary) << std::string("\0\1\0\0Standard Jet DB\0", 20);
    world.boxPort.answers = {Answer::OK};
    EXPECT_FALSE(world.companies.ÖppnaDatabas("FTG5.mdb"));
    ASSERT_EQ(world.boxPort.shown.size(), 1U);
    EXPECT_THAT(world.boxPort.shown.front(), HasSubstr("Företag från en Access-fil"));
    EXPECT_THAT(world.boxPort.shown.front(), HasSubstr("import-access"));
}

TEST(AccessWindowTexts, InBothLanguages) {
    for (const std::string language : {"SE", "EN"}) {
        FormWorld world(Data::Empty, language);
        AccessWindow window(world.program, nullptr);
        window.show();
        expectTextsInBothLanguages(window, world);
        expectUniqueMnemonics(window);
        takePicture(window, "accesswindow-" + language);
    }
}

}  // namespace
}  // namespace kolmera
