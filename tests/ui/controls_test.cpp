#include <gtest/gtest.h>

#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include "lang/errortext.h"
#include "lang/keys/shared.h"
#include "platform/printable.h"
#include "support/qt/formworld.h"
#include "ui/filedialogs.h"
#include "ui/forms.h"
#include "ui/qtmessageport.h"
#include "ui/qttext.h"
#include "ui/windowsystemtexts.h"

namespace kolmera {
namespace {

using namespace test;

TEST(Forms, TahomaOnlyWhenTheSuiteAsksForIt) {
    QWidget form;
    QLabel label("text", &form);
    const QString before = label.font().family();
    SättTypsnitt(form, false);
    EXPECT_EQ(label.font().family(), before);
    SättTypsnitt(form, true);
    EXPECT_EQ(label.font().families(), QStringList({"Tahoma", before}));
    EXPECT_EQ(form.font().families().value(0), "Tahoma");
}

TEST(Forms, VisaFormulärShowsTheHourglassOnlyWhileLoading) {
    FormWorld world;
    QDialog form;
    form.setObjectName("Provform");
    bool waiting = true;
    const WhenShown shown("Provform", [&](QDialog& dialog) {
        waiting = world.boxPort.waiting;
        dialog.accept();
    });
    EXPECT_TRUE(VisaFormulär(world.program, form, true));
    EXPECT_TRUE(shown.came());
    EXPECT_FALSE(waiting);
}

TEST(Forms, VisaFormulärTellsOfMissingMemory) {
    class Heavy : public QDialog {
        void setVisible(bool visible) override {
            if (visible) throw std::bad_alloc();
        }
    };
    FormWorld world;
    world.boxPort.answers = {Answer::OK};
    Heavy form;
    EXPECT_FALSE(VisaFormulär(world.program, form, false));
    EXPECT_EQ(world.boxPort.shown.back(), "Kolmera|" + world.texts.ResText(text::shared::kOutOfMemory));
}

/// Shows a message box and lets `act` work on it.
Answer answered(FormWorld& world, const Message& message, const std::function<void(QMessageBox& box)>& act) {
    QtMessagePort port(world.texts);
    const WhenShown shown("Meddelanderuta", [&](QDialog& dialog) { act(dynamic_cast<QMessageBox&>(dialog)); });
    const Answer answer = port.show(message);
    EXPECT_TRUE(shown.came());
    return answer;
}

QPushButton& boxButton(QMessageBox& box, const char* caption) {
    for (QAbstractButton* button : box.buttons()) {
        if (button->text() == QString::fromUtf8(caption)) return dynamic_cast<QPushButton&>(*button);
    }
    throw std::runtime_error(caption);
}

TEST(QtMessagePortTest, ButtonsAnswerInTheProgramsLanguage) {
    const struct {
        const char *fault, *language;
        Buttons buttons;
        const char* caption;
        Answer answer;
    } cases[] = {
        {"Yes", "SE", Buttons::YesNo, "&Ja", Answer::Yes},
        {"No", "SE", Buttons::YesNo, "&Nej", Answer::No},
        {"English Yes", "EN", Buttons::YesNo, "&Yes", Answer::Yes},
        {"OK", "SE", Buttons::OK, "OK", Answer::OK},
        {"Cancel", "SE", Buttons::OKCancel, "Avbryt", Answer::Cancel},
        {"English Cancel", "EN", Buttons::OKCancel, "Cancel", Answer::Cancel},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        FormWorld world(Data::Empty, c.language);
        Message message;
        message.text = "Rad 1\r\nRad 2";
        message.title = "Titel";
        message.buttons = c.buttons;
        EXPECT_EQ(answered(world, message,
                           [&](QMessageBox& box) {
                               EXPECT_EQ(box.text(), "Rad 1\nRad 2");
                               EXPECT_EQ(box.windowTitle(), "Titel");
                               QTest::mouseClick(&boxButton(box, c.caption), Qt::LeftButton);
                           }),
                  c.answer);
    }
}

TEST(QtMessagePortTest, EnterTakesTheDefaultAndEscTheLast) {
    FormWorld world;
    Message question;
    question.text = "<b>Ta bort?</b>";
    question.buttons = Buttons::YesNo;
    const auto enter = [](QMessageBox& box) {
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        QTest::keyClick(&box, Qt::Key_Return);
    };
    EXPECT_EQ(answered(world, question, enter), Answer::Yes);
    question.secondIsDefault = true;
    EXPECT_EQ(answered(world, question, enter), Answer::No);
    question.secondIsDefault = false;
    EXPECT_EQ(answered(world, question, [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }), Answer::No);
}

TEST(QtMessagePortTest, HelpLeavesTheBoxOpen) {
    FormWorld world;
    Message question;
    question.text = "Ta bort?";
    question.buttons = Buttons::YesNo;
    question.helpButton = true;
    question.helpFile = "/finns/inte/Dorvik.chm";
    const Answer answer = answered(world, question, [](QMessageBox& box) {
        QString missing;
        QTimer::singleShot(100, &box, [&box, &missing] {
            auto* inner = dynamic_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (inner == nullptr || inner == &box) return;
            missing = inner->text();
            inner->buttons().front()->click();
        });
        QTest::mouseClick(&boxButton(box, "&Hjälp"), Qt::LeftButton);
        EXPECT_EQ(missing, "Hittar inte hjälpfilen /finns/inte/Dorvik.chm.");
        EXPECT_TRUE(box.isVisible());
        QTest::mouseClick(&boxButton(box, "&Ja"), Qt::LeftButton);
    });
    EXPECT_EQ(answer, Answer::Yes);
}

TEST(QtMessagePortTest, UnfoldsTheWordsOfTheErrorsInItsText) {
    FormWorld world;
    const PlatformError full = PlatformError(errors::kDiskFull, "database or disk is full").about("FTG1.mdb");
    const PlatformError server = PlatformError(errors::kServerGone, "server\nclosed the connection").ofSystem(104);
    (void)errorText(world.texts, PlatformError(errors::kDamaged, "of another message"));
    std::string told = errorText(world.texts, full);
    told += "\r\n" + printable(errorText(world.texts, server), 1000);
    const struct {
        const char* fault;
        std::string text, details;
    } cases[] = {
        {"words left out, or of another message", told,
         "3026: FTG1.mdb: database or disk is full\n3151, errno 104: server\nclosed the connection"},
        {"details where no error is told", "Ta bort?", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        Message message;
        message.text = c.text;
        answered(world, message, [&](QMessageBox& box) {
            EXPECT_EQ(box.detailedText().toStdString(), c.details);
            QTest::keyClick(&box, Qt::Key_Escape);
        });
    }
}

TEST(FileDialogs, SaveUnderTheEndingOfTheirKind) {
    const TemporaryFolder folder;
    folder.write("there.xlsx", "");
    FileQuestion question;
    question.filters = "Text (*.txt);;Blad (*.xlsx)";
    question.filter = 1;
    question.path = toQt((folder / "brev.xlsx").string());
    const WhenShown shown("Fildialog", [](QDialog& dialog) {
        EXPECT_EQ(dynamic_cast<QFileDialog&>(dialog).selectedNameFilter(), "Blad (*.xlsx)");
        auto& name = control<QLineEdit>(dialog, "fileNameEdit");
        EXPECT_EQ(name.text(), "brev.xlsx");
        name.setText("there");
        control<QDialogButtonBox>(dialog, "buttonBox").button(QDialogButtonBox::Save)->click();
    });
    const QString file = askForFileToSave(nullptr, question, [](const QString&) { return true; });
    EXPECT_EQ(file, toQt((folder / "there.xlsx").string())) << "asked though the sheet is added";
    EXPECT_TRUE(shown.came());
}

TEST(WindowSystemTextsTest, FileDialogSpeaksSwedish) {
    WindowSystemTexts texts;
    QCoreApplication::installTranslator(&texts);
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.show();
    for (const QLabel* label : dialog.findChildren<QLabel*>()) {
        const QString text = label->text();
        EXPECT_TRUE(text.isEmpty() || text == "Leta i:" || text == "Fil&namn:" || text == "Filer av typen:")
            << fromQt(text);
    }
    for (const QPushButton* button : dialog.findChildren<QPushButton*>()) {
        EXPECT_TRUE(button->text() == "&Öppna" || button->text() == "Avbryt") << fromQt(button->text());
    }
    takePicture(dialog, "filedialog-SE");
    EXPECT_EQ(QCoreApplication::translate("Kolmera", "Open"), "Open") << "a text of the program's own was changed";
    QCoreApplication::removeTranslator(&texts);
}

/// What stands on a form, also behind its "more".
QStringList textsOn(const QWidget& form) {
    QStringList texts;
    for (const QWidget* child : form.findChildren<QWidget*>()) {
        if (const auto* label = dynamic_cast<const QLabel*>(child)) texts += label->text();
        if (const auto* button = dynamic_cast<const QAbstractButton*>(child)) texts += button->text();
        if (const auto* group = dynamic_cast<const QGroupBox*>(child)) texts += group->title();
        if (const auto* tabs = dynamic_cast<const QTabWidget*>(child)) {
            for (int tab = 0; tab < tabs->count(); ++tab) texts += tabs->tabText(tab);
        }
    }
    texts.removeAll(QString());
    return texts;
}

TEST(WindowSystemTextsTest, PrintDialogSpeaksSwedish) {
    QPrinter printer;
    const QStringList english = textsOn(QPrintDialog(&printer));
    WindowSystemTexts texts;
    QCoreApplication::installTranslator(&texts);
    const QStringList swedish = textsOn(QPrintDialog(&printer));
    QCoreApplication::removeTranslator(&texts);
    ASSERT_EQ(english.size(), swedish.size());
    EXPECT_GT(english.size(), 20);
    for (qsizetype i = 0; i < english.size(); ++i) {
        EXPECT_TRUE(english[i] != swedish[i] || english[i].size() <= 3) << fromQt(english[i]);
    }
}

}  // namespace
}  // namespace kolmera
