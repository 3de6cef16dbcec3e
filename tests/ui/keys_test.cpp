#include "ui/keys.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "ui/keyrules.h"

namespace kolmera {
namespace {

TEST(KeyRules, NumberFieldTakesDigitsOneSignAndOneMinus) {
    const struct {
        const char *fault, *field;
        int key;
        bool decimals, minus, accepted;
    } cases[] = {
        {"decimal sign taken though not allowed", "12", ',', false, false, false},
        {"the other locale's sign taken", "12", '.', true, true, false},
        {"second minus taken", "-1", '-', true, true, false},
        {"minus taken though not allowed", "", '-', true, false, false},
        {"Backspace refused", "1", keys::kBackspace, false, false, true},
        {"Enter refused", "1", keys::kEnter, false, false, true},
        {"Esc taken", "1", keys::kEscape, true, true, false},
        {"a digit of another script taken", "1", 0x0661, true, true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(NumeriskTangent(c.field, c.key, ',', c.decimals, c.minus), c.accepted ? c.key : keys::kRejected);
    }
}

/// A form of three fields and two buttons, the second the default.
class KeysTest : public testing::Test {
  protected:
    KeysTest() {
        auto* layout = new QVBoxLayout(&form);
        for (QWidget* control :
             std::initializer_list<QWidget*>{&first, &choice, &check, &last, &button, &defaultButton}) {
            layout->addWidget(control);
        }
        defaultButton.setDefault(true);
        QObject::connect(&button, &QPushButton::clicked, [this] { ++pressed; });
        QObject::connect(&defaultButton, &QPushButton::clicked, [this] { ++defaultPressed; });
        installEnterSomTab(form);
        form.show();
        static_cast<void>(QTest::qWaitForWindowActive(&form));
        first.setFocus();
    }

    QDialog form;
    QLineEdit& first = *new QLineEdit(&form);
    QComboBox& choice = *new QComboBox(&form);
    QCheckBox& check = *new QCheckBox(&form);
    QLineEdit& last = *new QLineEdit(&form);
    QPushButton& button = *new QPushButton(&form);
    QPushButton& defaultButton = *new QPushButton(&form);
    int pressed = 0, defaultPressed = 0;
};

TEST_F(KeysTest, EnterGoesThroughTheFieldsAndBack) {
    QWidget* const order[] = {&first, &choice, &check, &last};
    for (QWidget* field : order) {
        EXPECT_TRUE(field->hasFocus());
        QTest::keyClick(field, field == &check ? Qt::Key_Enter : Qt::Key_Return,
                        field == &check ? Qt::KeypadModifier : Qt::NoModifier);
    }
    EXPECT_TRUE(button.hasFocus());
    EXPECT_EQ(defaultPressed, 0) << "Enter in a field pressed the default button";
    last.setFocus();
    QTest::keyClick(&last, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_TRUE(check.hasFocus());
    QTest::keyClick(&check, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(check.hasFocus()) << "other shift states move nothing";
    QTest::keyClick(&button, Qt::Key_Return);
    EXPECT_EQ(pressed, 1) << "a button keeps its Enter";
}

TEST_F(KeysTest, NumberFieldDropsKeysButLetsASelectionBeReplaced) {
    allowNumbersOnly(first, ',', true, true);
    QTest::keyClicks(&first, "1a2,5,.-x-");
    EXPECT_EQ(first.text(), "12,5-");
    first.selectAll();
    QTest::keyClicks(&first, ".7");
    EXPECT_EQ(first.text(), ",7") << "a point that is dropped makes 0.7 into 7";
    QTest::keyClick(&first, Qt::Key_Backspace);
    EXPECT_EQ(first.text(), ",");
    QTest::keyClick(&first, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(first.selectedText(), ",") << "editing keys were stopped";
}

TEST_F(KeysTest, FunctionKeyPressesAButtonThatIsShownAndEnabled) {
    pressOnKey(form, QKeySequence(Qt::Key_F7), button);
    QTest::keyClick(&first, Qt::Key_F7);
    EXPECT_EQ(pressed, 1);
    button.setEnabled(false);
    QTest::keyClick(&first, Qt::Key_F7);
    button.setEnabled(true);
    button.hide();
    QTest::keyClick(&first, Qt::Key_F7);
    EXPECT_EQ(pressed, 1);
}

}  // namespace
}  // namespace kolmera
