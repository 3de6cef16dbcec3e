#include "ui/ucuppner.h"

#include <gtest/gtest.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include "support/qt/formworld.h"

namespace kolmera::test {
namespace {

const Locale kSwedish(Locale::Kind::Swedish);

TEST(SpinSteps, StepsAndStopsAtTheBounds) {
    const struct {
        const char* fault;
        std::int16_t type;
        float min, max, increment;
        const char *mask, *text;
        bool up;
        const char* stepped;
    } cases[] = {
        {"number down in halves", 0, 0, 10, 0.5F, "", "4,5", false, "4"},
        {"above the maximum", 0, 1, 10, 1, "", "10", true, "10"},
        {"below the minimum", 0, 1, 10, 1, "", "1", false, "1"},
        {"a text that is no number", 0, 1, 10, 1, "", "abc", true, "1"},
        {"decimals of the mask", 0, -5, 10, 1, "0.00", "0,5", false, "-0,50"},
        {"leading zeros of the mask", 0, 1, 10, 1, "000", "4", true, "005"},
        {"minutes over the hour", 1, 0, 1, 5, "", "9:58", true, "10:03"},
        {"past midnight", 1, 0, 1, 30, "", "23:45", true, "23:59"},
        {"no time: from the minimum", 1, 0.25F, 1, 15, "", "25:00", true, "06:15"},
        {"letter past the last", 2, 65, 90, 1, "", "z", true, "Z"},
        {"a letter of two bytes", 2, 65, 255, 1, "", "ä", true, "Å"},
        {"no letter: from the minimum", 2, 65, 90, 1, "", "", false, "A"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        SpinSteps steps;
        steps.Min = c.min;
        steps.Max = c.max;
        steps.Increment = c.increment;
        steps.Mask = c.mask;
        steps.setTyp(c.type);
        EXPECT_EQ(steps.stepped(c.text, c.up, kSwedish), c.stepped);
    }
}

TEST(UCUppNerTest, StepsItsFieldOnceAndThenRepeats) {
    QWidget form;
    QHBoxLayout layout(&form);
    auto& field = *new QLineEdit("5", &form);
    auto& other = *new QLineEdit("7", &form);
    UCUppNer spin(kSwedish, field), otherSpin(kSwedish, other);
    for (QWidget* control : std::initializer_list<QWidget*>{&field, &spin, &other, &otherSpin}) {
        layout.addWidget(control);
    }
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    other.setFocus();
    std::string typed;
    QObject::connect(&field, &QLineEdit::textEdited, [&](const QString& text) { typed += text.toStdString() + " "; });
    auto& down = control<QLabel>(spin, "Ner");
    auto& otherUp = control<QLabel>(otherSpin, "Upp");
    QTest::mouseClick(&down, Qt::LeftButton);
    EXPECT_EQ(typed, "4 ") << "the form does not hear of it";
    EXPECT_TRUE(field.hasFocus());
    QTest::mousePress(&otherUp, Qt::LeftButton);
    EXPECT_EQ(other.text(), "8") << "one step at once";
    EXPECT_TRUE(QTest::qWaitFor([&] { return other.text() == "10"; }, 3000)) << "goes on while held";
    QTest::mouseRelease(&otherUp, Qt::LeftButton);
    EXPECT_EQ(field.text(), "4") << "goes on after release";
    QTest::mouseDClick(&down, Qt::LeftButton);
    EXPECT_EQ(field.text(), "3") << "a double click acts like a press";
    QTest::mouseRelease(&down, Qt::LeftButton);
    field.setEnabled(false);
    EXPECT_FALSE(spin.isEnabled());
    QTest::mousePress(&down, Qt::LeftButton);
    EXPECT_EQ(field.text(), "3") << "a field that cannot be changed";
}

}  // namespace
}  // namespace kolmera::test
