#include "signin/window/loggain.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "support/qt/formworld.h"

namespace kolmera {
namespace {

using namespace test;

class LoggainTest : public testing::Test {
  protected:
    LoggainTest() {
        form.show();
        static_cast<void>(QTest::qWaitForWindowActive(&form));
    }

    FormWorld world;
    std::vector<User> users = {{.sign = "AB", .name = "Anna Berg", .password = "ABC"},
                               {.sign = "NO", .name = "Bo Ek", .password = "ABC", .denied = true}};
    Loggain form{world.program, users};
    QLineEdit& namn = control<QLineEdit>(form, "Namn");
    QLineEdit& lösen = control<QLineEdit>(form, "Lösen");
    QPushButton& ok = control<QPushButton>(form, "CmdOK");
};

TEST_F(LoggainTest, SignsInByKeyboardAlone) {
    QTest::keyClicks(&namn, "ab");
    QTest::keyClick(&namn, Qt::Key_Return);
    EXPECT_EQ(namn.text(), "AB");
    EXPECT_TRUE(lösen.hasFocus()) << "Enter in the sign box";
    EXPECT_TRUE(form.isVisible());
    QTest::keyClicks(&lösen, "abc");
    QTest::keyClick(&lösen, Qt::Key_Return);
    EXPECT_EQ(form.result(), QDialog::Accepted);
    EXPECT_EQ(world.state.Signatur, "AB");
}

TEST_F(LoggainTest, TellsWhatIsWrongAndGoesThere) {
    const struct {
        const char *fault, *sign, *password, *message;
        QLineEdit& focus;
    } cases[] = {
        {"unknown sign", "xx", "abc", "Kolmera|Signaturen finns inte.", namn},
        {"wrong password", "ab", "abd", "Kolmera|Lösenordet är fel.", lösen},
        {"no right", "no", "abc", "Kolmera|Signaturen NO saknar rättighet för att använda Kolmera.", namn},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        world.boxPort.answers = {Answer::OK};
        namn.setText(c.sign);
        lösen.setText(c.password);
        QTest::mouseClick(&ok, Qt::LeftButton);
        EXPECT_EQ(world.boxPort.shown.back(), c.message);
        EXPECT_TRUE(c.focus.hasFocus());
        EXPECT_EQ(c.focus.selectedText(), c.focus.text());
        EXPECT_TRUE(form.isVisible());
        EXPECT_EQ(world.state.Signatur, "");
    }
}

TEST_F(LoggainTest, CancelSignsNobodyIn) {
    QTest::keyClicks(&namn, "ab");
    QTest::mouseClick(&control<QPushButton>(form, "CmdAvbryt"), Qt::LeftButton);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(form.result(), QDialog::Rejected);
    EXPECT_EQ(world.state.Signatur, "");
}

TEST_F(LoggainTest, TellsOfTheMissingRightWithoutLanguageTexts) {
    world.texts.StängSpråk();
    world.boxPort.answers = {Answer::OK};
    namn.setText("NO");
    lösen.setText("ABC");
    QTest::mouseClick(&ok, Qt::LeftButton);
    EXPECT_EQ(world.boxPort.shown.back(), "Kolmera|Signaturen NO saknar rättighet för att använda Kolmera.");
}

TEST(LoggainTexts, InBothLanguages) {
    for (const char* language : {"SE", "EN"}) {
        FormWorld world(Data::Empty, language);
        Loggain form(world.program, {});
        form.show();
        expectTextsInBothLanguages(form, world);
        takePicture(form, std::string("loggain-") + language);
    }
}

}  // namespace
}  // namespace kolmera
