#include "discounts/window/prisrab.h"

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressDialog>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "definitions/jobfile.h"
#include "lang/keys/company.h"
#include "lang/keys/letter.h"
#include "support/qt/formworld.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

class PrisRabTest : public testing::Test {
  protected:
    explicit PrisRabTest(const char* language = "SE") : world(Data::Demo, language) {
        Job job;
        job.name = "Brev";
        job.company = "FTG1.mdb";
        job.supplier = "1010";
        JobbNr = JobFile(world.data).save(job);
    }

    void open(int number) {
        form.reset();
        form.emplace(world.program, number, nullptr);
        form->fileToRead = form->fileToWrite = [this](const FileQuestion& question) {
            asked = question;
            return toQt(file);
        };
        form->show();
        form->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&*form));
    }
    QTreeView& view(const char* name) { return control<QTreeView>(*form, name); }
    QLineEdit& field(int number) {
        return control<QLineEdit>(*form, QStringLiteral("Fält_%1").arg(number).toUtf8().constData());
    }
    QString total() { return control<QLabel>(*form, "TotalRabatt").text(); }
    void press(const char* name) { control<QPushButton>(*form, name).click(); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(form->focusWidget() != nullptr ? form->focusWidget() : &*form, key, modifiers);
    }
    void type(const char* text) { QTest::keyClicks(form->focusWidget(), QString::fromUtf8(text)); }
    QString cell(int row, int column) { return view("Lista").model()->index(row, column).data().toString(); }
    int rows() { return view("Lista").model()->rowCount(); }
    bool enabled(const char* name) { return control(*form, name).isEnabled(); }

    FormWorld world;
    std::string file;
    FileQuestion asked;
    int JobbNr = 0;
    std::optional<PrisRab> form;
};

class PrisRabInEnglishTest : public PrisRabTest {
  protected:
    PrisRabInEnglishTest() : PrisRabTest("EN") {}
};

TEST_F(PrisRabTest, WaitsForALockedCompanyWithACancelButton) {
    open(JobbNr);
    const auto other = openFileDatabase(world.data / "FTG1.mdb", OpenOptions());
    other->begin();
    field(0).setFocus();
    type("NY1");
    QString said;
    QTimer::singleShot(0, &*form, [&] {
        auto* dialog = form->findChild<QProgressDialog*>(QStringLiteral("Väntar"));
        if (dialog == nullptr) return;
        said = dialog->labelText();
        dialog->cancel();
    });
    press("Spara");
    EXPECT_EQ(said, toQt(world.program.texts.ModulTextMed(text::company::kWaiting, "FTG1.MDB")))
        << "the window is frozen";
    EXPECT_EQ(field(0).text(), "NY1") << "what was typed is gone";
    EXPECT_EQ(form->findChild<QProgressDialog*>(), nullptr);
    other->rollback();
    press("Spara");
    EXPECT_EQ(field(0).text(), "");
}

TEST_F(PrisRabTest, FollowsCompanyAndSupplier) {
    open(0);
    EXPECT_EQ(view("Lev_Lista").model()->rowCount(), 0) << "a company without a job";
    EXPECT_FALSE(enabled("SkapaFil"));
    world.boxPort.answers = {Answer::OK};
    press("LäsFil");
    EXPECT_TRUE(asked.title.isEmpty()) << "asked for a file without a supplier";
    control<QListWidget>(*form, "FTG_Lista").setCurrentRow(0);
    selectRow(view("Lev_Lista"), 1);
    EXPECT_EQ(form->windowTitle(), "Rabattbrev - 1020 - LYSHYTTAN");
    EXPECT_GT(rows(), 0);
    EXPECT_TRUE(enabled("SkapaFil"));
    open(JobbNr);
    EXPECT_EQ(view("Lev_Lista").currentIndex().row(), 0);
    EXPECT_FALSE(view("Lista").currentIndex().isValid());
}

TEST_F(PrisRabTest, SavesAndDeletesByKeys) {
    open(JobbNr);
    const int before = rows();
    field(0).setFocus();
    type("NY1");
    key(Qt::Key_Return);
    EXPECT_EQ(form->focusWidget(), &field(1)) << "Enter is Tab";
    type("1a0,,5-");
    EXPECT_EQ(field(1).text(), "10,5-") << "keys that no number has";
    world.boxPort.answers = {Answer::OK};
    key(Qt::Key_F7);
    EXPECT_EQ(world.boxPort.shown.back(), "Kolmera|" + world.texts.ModulTextMed(text::letter::kNoNumber, "10,5-"));
    EXPECT_EQ(form->focusWidget(), &field(1));
    field(1).selectAll();
    type("10");
    key(Qt::Key_Return);
    type("5");
    key(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(form->focusWidget(), &field(1));
    EXPECT_EQ(total(), "14,50");
    key(Qt::Key_F7);
    ASSERT_EQ(rows(), before + 1);
    EXPECT_EQ(cell(before, 0) + cell(before, LetterRows::kTotalColumn), "NY114,50");
    EXPECT_EQ(view("Lista").currentIndex().row(), before);
    EXPECT_EQ(field(0).text() + field(1).text() + total(), "") << "the selected row has filled the fields";
    EXPECT_EQ(form->focusWidget(), &field(0));

    // F7 in the code's own field first shows what the code stands for.
    type("ny1");
    key(Qt::Key_F7);
    EXPECT_EQ(cell(before, LetterRows::kTotalColumn), "14,50") << "the discounts of the group are gone";

    type("NY1");
    key(Qt::Key_Tab);
    EXPECT_EQ(field(2).text(), "5");
    EXPECT_TRUE(enabled("TaBort"));
    world.boxPort.answers = {Answer::Yes};
    key(Qt::Key_F9);
    EXPECT_EQ(rows(), before);
    EXPECT_FALSE(enabled("TaBort"));

    selectRow(view("Lista"), 1);
    const QString code = field(0).text();
    EXPECT_EQ(code, cell(1, 0));
    key(Qt::Key_Escape);
    EXPECT_TRUE(form->isVisible()) << "Esc has closed the window";
    EXPECT_EQ(field(0).text(), "");
    QTest::mouseClick(view("Lista").viewport(), Qt::LeftButton, {},
                      view("Lista").visualRect(view("Lista").currentIndex()).center());
    EXPECT_EQ(field(0).text(), code) << "the chosen group is not shown again";
    key(Qt::Key_F8);
    EXPECT_EQ(field(0).text(), "");
    key(Qt::Key_L, Qt::AltModifier);
    EXPECT_EQ(form->focusWidget(), &view("Lista"));
    key(Qt::Key_F12);
    EXPECT_FALSE(form->isVisible());
}

TEST_F(PrisRabTest, AsksForFiles) {
    open(JobbNr);
    const int groups = rows();
    press("SkapaFil");  // cancelled
    EXPECT_EQ(asked.title, "Spara rabattbrev");
    EXPECT_EQ(asked.filters.split(";;").value(asked.filter), "Textfiler (*.txt)");
    EXPECT_EQ(asked.path, toQt((world.data / "Rabattbrev1.txt").string()));
    file = (world.folder / "brev.xlsx").string();
    press("SkapaFil");
    selectRow(view("Lev_Lista"), 9);
    world.boxPort.answers.assign(rows() > 0 ? 1 : 0, Answer::OK);
    press("LäsFil");
    EXPECT_EQ(asked.title, "Läs in rabattbrev");
    EXPECT_EQ(asked.path, toQt(world.folder.path().string())) << "the folder of the last file";
    EXPECT_EQ(rows(), groups);
    EXPECT_FALSE(world.boxPort.waiting);
}

TEST_F(PrisRabTest, ShowsSwedishTexts) {
    open(0);
    expectTextsInBothLanguages(*form, world);
    takePicture(*form, "prisrab-se");
}

TEST_F(PrisRabInEnglishTest, ShowsEnglishTexts) {
    open(JobbNr);
    EXPECT_EQ(view("Lista").model()->headerData(1, Qt::Horizontal).toString(), "Disc. % 1");
    EXPECT_EQ(view("Lev_Lista").accessibleName(), "From supplier") << "a screen reader says nothing";
    EXPECT_EQ(control<QListWidget>(*form, "FTG_Lista").accessibleName(), "To company");
    form->resize(form->minimumSizeHint());
    QTest::qWait(0);
    EXPECT_LE(view("Lista").header()->length(), view("Lista").viewport()->width() + 1) << "the last column is cut";
    EXPECT_FALSE(view("Lev_Lista").horizontalScrollBar()->isVisible()) << "search names are cut";
    takePicture(*form, "prisrab-en");
}

}  // namespace
}  // namespace kolmera
