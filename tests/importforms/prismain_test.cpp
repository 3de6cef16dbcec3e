#include "import/window/prismain.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QUrl>
#include <fstream>

#include "db/conversions.h"
#include "definitions/datafolder.h"
#include "definitions/jobfile.h"
#include "import/window/prisutfa.h"
#include "import/window/prisutfo.h"
#include "lang/keys/definitions.h"
#include "lang/keys/look.h"
#include "lang/keys/prismain.h"
#include "startup/newcompany.h"
#include "support/qt/formworld.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

namespace fs = std::filesystem;
using namespace test;

const char* const kMaskJob = "Smedhult verktyg";

/// The main window over the demo's jobs: three trade formats, then masks.
class PrisMainTest : public testing::Test {
  protected:
    PrisMainTest() {
        world.program.showPrisRab = [this](QWidget* /*parent*/, int JobbNr) { discountLettersFor = JobbNr; };
        open();
    }

    void open() {
        window = std::make_unique<PrisMain>(world.program);
        window->show();
        static_cast<void>(QTest::qWaitForWindowActive(window.get()));
    }
    QPushButton& button(const char* name) { return control<QPushButton>(*window, name); }
    QTreeView& list() { return control<QTreeView>(*window, "Lista"); }
    void press(const char* name) { QTest::mouseClick(&button(name), Qt::LeftButton); }

    std::string cell(int row, int column) { return fromQt(list().model()->index(row, column).data().toString()); }
    std::string selectedJob() { return fromQt(list().currentIndex().siblingAtColumn(0).data().toString()); }
    std::string enabledButtons() {
        std::string names;
        for (const char* name : {"Ny", "Öppna", "TaBort", "Utför", "CmdRabattbrev", "Avsluta"}) {
            if (button(name).isEnabled()) names += std::string(names.empty() ? "" : " ").append(name);
        }
        return names;
    }
    void select(const std::string& job) {
        for (int row = 0; row < list().model()->rowCount(); ++row) {
            if (cell(row, 0) == job) selectRow(list(), row);
        }
        ASSERT_EQ(selectedJob(), job);
    }
    std::int64_t products(const std::string& condition = "") {
        const auto company = openFileDatabase(world.data / "FTG1.mdb", {});
        const auto rows = company->open("SELECT COUNT(*) FROM Produkt" + condition, RecordsetType::Snapshot);
        return TillLng(rows->value(0), world.state.locale);
    }
    /// Makes the price file of the job "Smedhult verktyg" as long as that.
    void enlargePriceFile(int times) {
        const std::filesystem::path file = world.data / "Prisfiler" / "VERKTYG.TXT";
        std::ifstream in(file, std::ios::binary);
        const std::string once{std::istreambuf_iterator<char>(in), {}};
        std::ofstream out(file, std::ios::binary | std::ios::app);
        for (int i = 1; i < times; ++i) out << once;
    }
    /// Runs the job behind Utför. Does something, once, when the status line begins with a text.
    void runAndWhen(const char* beginning, const std::function<void(const QString& status)>& action) {
        const WhenShown asked("PrisUtfö", confirm);
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            const QString text = control<QLabel>(*window, "Meddelande").text();
            if (!text.startsWith(QString::fromUtf8(beginning))) return;
            watch.stop();
            action(text);
        });
        watch.start(20);
        world.boxPort.answers = {Answer::OK};  // what was read until then may have zeros
        press("Utför");
        world.boxPort.answers.clear();
        EXPECT_FALSE(watch.isActive()) << "the run never showed itself";
    }
    /// Answers the confirmation of the next run with Utför.
    static void confirm(QDialog& form) { QTest::mouseClick(&control<QPushButton>(form, "Utför"), Qt::LeftButton); }

    FormWorld world{Data::Demo};
    std::unique_ptr<PrisMain> window;
    int discountLettersFor = -1;
};

TEST_F(PrisMainTest, EnablesWhatTheSelectedJobAllows) {
    EXPECT_TRUE(list().hasFocus());
    EXPECT_EQ(enabledButtons(), "Ny Öppna Utför CmdRabattbrev Avsluta") << "the first row is a trade format";
    EXPECT_EQ(cell(3, 0) + cell(3, 1) + cell(3, 2), kMaskJob + std::string("MaskPrisfiler\\VERKTYG.TXT"));
    EXPECT_EQ(cell(3, 3), world.state.locale.formatDate(Date::today()));
    select(kMaskJob);
    EXPECT_EQ(enabledButtons(), "Ny Öppna TaBort Utför CmdRabattbrev Avsluta");
    world.state.settings.set("Start", "Kolmera", "no such job");
    window->FyllJobbLista(0);
    EXPECT_EQ(selectedJob(), "");
    EXPECT_EQ(enabledButtons(), "Ny CmdRabattbrev Avsluta");
    press("CmdRabattbrev");
    EXPECT_EQ(discountLettersFor, 0);
    select(kMaskJob);
    press("CmdRabattbrev");
    EXPECT_EQ(discountLettersFor, 4);
}

TEST(PrisMainOfANewCompany, LeadsOnUntilThereIsSomethingToImportBy) {
    for (const std::string language : {"SE", "EN"}) {
        SCOPED_TRACE(language);
        FormWorld world(Data::Empty, language);
        createDataFolder(world.data);
        createCompany(world.data, kFirstCompany, "Nytt", {}, FirstRows::Filled);
        world.state.StandardFöretag = "FTG1.MDB";
        PrisMain window(world.program);
        window.show();
        const auto& panel = control<QFrame>(window, "FörstaStegen");
        ASSERT_TRUE(panel.isVisible());
        expectTextsInBothLanguages(window, world);
        takePicture(window, "firststeps-" + language);
        const WhenShown registers("RegistersWindow", [&](QDialog& form) {
            EXPECT_EQ(control<QListWidget>(form, "Register").currentItem()->text(),
                      language == "SE" ? "Leverantörer" : "Suppliers");
            form.close();
        });
        control<QPushButton>(window, "StegLeverantör").click();
        EXPECT_TRUE(registers.came());
        world.program.showPrisStyr = [&](QWidget* /*parent*/, int job, bool /*trade*/) -> std::optional<int> {
            EXPECT_EQ(job, 0) << "not a new job";
            Job own;
            own.name = "Egen";
            return JobFile(world.data).save(own);
        };
        control<QPushButton>(window, "StegInläsning").click();
        EXPECT_FALSE(panel.isVisible()) << "stays when it is done";
    }
}

TEST_F(PrisMainTest, PreviewsARunAndThenDoesIt) {
    select(kMaskJob);
    const auto look = [&](const char* button) {
        return [&, button, before = products()](QDialog& changes) {
            EXPECT_GT(control<QTableView>(changes, "Lista").model()->rowCount(), 0);
            EXPECT_EQ(products(), before) << "the preview wrote into the company";
            takePicture(changes, "preview");
            control<QPushButton>(changes, button).click();
        };
    };
    const std::int64_t before = products();
    {
        const WhenShown shown("ChangeWindow", look("Utför"));
        const WhenShown asked("PrisUtfö", confirm);
        world.boxPort.answers = {Answer::OK};  // what was skipped
        QTest::keyClick(&list(), Qt::Key_F5);
        world.boxPort.answers.clear();
        EXPECT_TRUE(shown.came() && asked.came());
    }
    EXPECT_GT(products(), before);
    // Everything is emptied and read anew in this one, so that it has something to show.
    const WhenShown asked("PrisUtfö", [](QDialog& form) {
        control<QCheckBox>(form, "Tabort").setChecked(true);
        control<QPushButton>(form, "Förhandsgranska").click();
    });
    const WhenShown shown("ChangeWindow", look("Stäng"));
    press("Utför");
    EXPECT_TRUE(asked.came() && shown.came());
    const WhenShown runs("RunsWindow", [](QDialog& form) {
        EXPECT_EQ(control<QTableView>(form, "Lista").model()->rowCount(), 1)
            << "the run left no record, or a preview did";
        form.reject();
    });
    press("TidigareKörningar");
    EXPECT_TRUE(runs.came());
}

TEST_F(PrisMainTest, APreviewSaysOnceWhatItsRecordRemarks) {
    select("Ekhult semikolonlista");
    QStringList notices;
    const WhenShown shown("ChangeWindow", [&](QDialog& changes) {
        const auto& list = control<QListWidget>(changes, "Notiser");
        for (int row = 0; row < list.count(); ++row) notices << list.item(row)->text();
        changes.reject();
    });
    press("Förhandsgranska");
    EXPECT_TRUE(shown.came());
    const std::string told = fromQt(notices.join("\n"));
    EXPECT_EQ(notices.filter("Rader som utelämnades").size(), 1) << told;
    EXPECT_EQ(notices.filter("ring oss").size(), 1) << "what stands in the file is kept back: " << told;
}

TEST_F(PrisMainTest, DeletesEveryJobOfTheNameWhenTheUserSaysYes) {
    Job twin = *JobFile(world.data).find(kMaskJob);
    twin.number = 0;
    JobFile(world.data).save(twin);
    window->FyllJobbLista(twin.number);
    const int before = list().model()->rowCount();
    select(kMaskJob);
    world.boxPort.answers = {Answer::No, Answer::Yes};
    press("TaBort");
    EXPECT_EQ(world.boxPort.shown.back(), "Ta bort inläsningen|Ta bort inläsningen Smedhult verktyg ?\r\n\r\n" +
                                              world.texts.ModulTextMed(text::definitions::kSeveralImports, "2"));
    EXPECT_EQ(list().model()->rowCount(), before);
    QTest::keyClick(&list(), Qt::Key_F9);
    EXPECT_EQ(list().model()->rowCount(), before - 2);
    EXPECT_EQ(JobFile(world.data).find(kMaskJob), std::nullopt);
    EXPECT_EQ(selectedJob(), "(EIO)");
    QTest::keyClick(&list(), Qt::Key_F9);
    EXPECT_EQ(list().model()->rowCount(), before - 2) << "a trade format was deleted";
}

TEST_F(PrisMainTest, DoesNothingWithAJobThatOthersHaveChanged) {
    world.program.showPrisStyr = [](QWidget*, int, bool) -> std::optional<int> {
        ADD_FAILURE() << "opened another job";
        return std::nullopt;
    };
    for (const char* name : {"Utför", "Öppna", "TaBort"}) {
        SCOPED_TRACE(name);
        Job job = *JobFile(world.data).find(kMaskJob);
        select(kMaskJob);
        job.command += "x";
        JobFile(world.data).save(job);
        const bool asks = std::string_view(name) == "TaBort";
        if (asks) world.boxPort.answers = {Answer::Yes};
        world.boxPort.answers.push_back(Answer::OK);
        press(name);
        EXPECT_TRUE(world.boxPort.shown.back().ends_with(
            world.texts.ModulTextMed(text::definitions::kImportChangedNothingDone, kMaskJob)));
        EXPECT_EQ(JobFile(world.data).find(kMaskJob), job);
        EXPECT_TRUE(asks || selectedJob() == kMaskJob) << "not selected again";
    }
}

TEST_F(PrisMainTest, OffersTheTradeFormatsThatAreGone) {
    const std::vector<Job> jobs = JobFile(world.data).all();
    JobFile(world.data).remove({jobs[1]});
    window->FyllJobbLista(0);
    int opened = 0;
    world.program.showPrisStyr = [&](QWidget*, int, bool) -> std::optional<int> {
        ++opened;
        return std::nullopt;
    };
    world.boxPort.answers = {Answer::No, Answer::Yes};
    press("Ny");
    EXPECT_EQ(world.boxPort.shown.back(),
              "Kolmera|" + world.texts.ModulTextMed(text::definitions::kAskToAddTradeFormats, "(RSK)"));
    EXPECT_EQ(opened, 1);
    press("Ny");
    EXPECT_EQ(selectedJob(), "(RSK)");
    press("Ny");
    EXPECT_EQ(opened, 2) << "asked again";
}

TEST_F(PrisMainTest, OpensJobSettingsByButtonEnterAndDoubleClick) {
    std::string opened;
    std::optional<int> saved;
    world.program.showPrisStyr = [&](QWidget* parent, int JobbNr, bool ÄrStandardJobb) {
        EXPECT_EQ(parent, window.get());
        opened += std::to_string(JobbNr) + (ÄrStandardJobb ? "s " : " ");
        return saved;
    };
    press("Ny");
    press("Öppna");
    select(kMaskJob);
    list().setFocus();
    QTest::keyClick(&list(), Qt::Key_Return);
    const QPoint row = list().visualRect(list().model()->index(1, 0)).center();
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(opened, "0 1s 4 ") << "a single click opened";
    QTest::mouseDClick(list().viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(opened, "0 1s 4 2s ");
    saved = 6;
    press("Öppna");
    EXPECT_EQ(selectedJob(), "Lindåsby färg") << "the saved job is selected";
}

TEST_F(PrisMainTest, HeaderClicksSortAndKeepTheSelectedJob) {
    select(kMaskJob);
    QHeaderView& header = *list().header();
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, QPoint(header.sectionViewportPosition(0) + 5, 5));
    EXPECT_EQ(cell(list().model()->rowCount() - 1, 0), "Tassby julkampanj");
    EXPECT_EQ(selectedJob(), kMaskJob);
    world.program.showPrisStyr = [](QWidget*, int JobbNr, bool) {
        EXPECT_EQ(JobbNr, 4) << "the row's number, not its place";
        return std::nullopt;
    };
    press("Öppna");
}

TEST_F(PrisMainTest, ASessionEndsWithTheSelectedJobKept) {
    select(kMaskJob);
    press("Avsluta");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(SettingsStore(world.folder / "settings.ini").get("Start", "Kolmera"), kMaskJob);
    open();
    EXPECT_EQ(selectedJob(), kMaskJob);
    QTest::keyClick(&list(), Qt::Key_F12);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(PrisMainTest, RunsAMaskJob) {
    const std::int64_t before = products();
    select(kMaskJob);
    const WhenShown asked("PrisUtfö", [&](QDialog& form) {
        EXPECT_EQ(form.windowTitle(), "Utför : Smedhult verktyg");
        EXPECT_EQ(control<QCheckBox>(form, "Tabort").text(),
                  "Ta bort alla tidigare produkter och leverantörspriser i företaget Ftg1.Mdb");
        EXPECT_EQ(enabledButtons(), "") << "a second run could be started";
        confirm(form);
    });
    world.boxPort.answers = {Answer::OK};
    press("Utför");
    EXPECT_TRUE(asked.came());
    EXPECT_GT(products(), before);
    ASSERT_EQ(world.boxPort.shown.size(), 1U) << "one message for everything";
    EXPECT_TRUE(world.boxPort.shown[0].starts_with("Inläsningen är klar, men läs detta|Värden som inte är tal"));
    EXPECT_EQ(enabledButtons(), "Ny Öppna TaBort Utför CmdRabattbrev Avsluta");
    EXPECT_FALSE(control(*window, "Meddelande").isVisible());
    EXPECT_FALSE(button("Avbryt").isVisible());
    EXPECT_FALSE(world.boxPort.waiting) << "the hourglass stayed";
    EXPECT_EQ(window->focusWidget(), &list());

    takePicture(*window, "result-SE");
    EXPECT_TRUE(control(*window, "Resultat").accessibleName().startsWith("Smedhult verktyg: Klar, med anmärkningar, "));
    const WhenShown changes("ChangeWindow", [](QDialog& form) { form.reject(); });
    press("VisaÄndringar");
    EXPECT_TRUE(changes.came());
    EXPECT_TRUE(eventually([&] { return cell(3, 4).ends_with(" Klar"); })) << cell(3, 4);
    EXPECT_EQ(cell(2, 4), "") << "another job's run";
}

TEST_F(PrisMainTest, ShowsWhatOthersDoInTheFolder) {
    select(kMaskJob);
    fs::remove(world.data / "Prisfiler" / "VERKTYG.TXT");
    EXPECT_TRUE(eventually([&] { return cell(3, 3) == "Saknas"; }));
    JobFile jobs(world.data);
    jobs.remove({jobs.all()[0]});
    EXPECT_TRUE(eventually([&] { return cell(0, 0) == "(RSK)"; }));
    EXPECT_EQ(selectedJob(), kMaskJob) << "another job came under the hand of the user";
    jobs.remove({*jobs.find(kMaskJob)});
    EXPECT_TRUE(eventually([&] { return selectedJob().empty(); })) << "a job that nobody chose is selected";
}

TEST_F(PrisMainTest, CommandsAreInMenusAndUnderKeys) {
    std::string opened;
    world.program.showPrisStyr = [&](QWidget*, int JobbNr, bool) -> std::optional<int> {
        const auto job = JobFile(world.data).read(JobbNr);
        opened += (job ? job->name : "new") + " ";
        return std::nullopt;
    };
    QTest::keyClick(&list(), Qt::Key_N, Qt::ControlModifier);
    select(kMaskJob);
    world.boxPort.answers = {Answer::No, Answer::Yes};
    QTest::keyClick(&list(), Qt::Key_Delete);
    QTest::keyClick(&list(), Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(opened, "new Smedhult verktyg (kopia) ");
    EXPECT_EQ(selectedJob(), "Smedhult verktyg (kopia)");
    const auto mask = JobFile(world.data).find(selectedJob())->mask;
    EXPECT_TRUE(mask.ends_with(" (kopia)")) << mask;
    QTest::keyClick(&list(), Qt::Key_F, Qt::ControlModifier);
    auto& search = control<QLineEdit>(*window, "Sök");
    EXPECT_TRUE(search.hasFocus());
    QTest::keyClicks(&search, "rheinh");
    EXPECT_EQ(selectedJob(), "Direktimport") << "not found by its supplier's name";
    search.setText("bruknäs");
    EXPECT_EQ(selectedJob(), "Bruknäs skruv och beslag");
    const int verktyg = JobFile(world.data).find(kMaskJob)->number;
    window->FyllJobbLista(verktyg);
    EXPECT_EQ(selectedJob(), kMaskJob);
    EXPECT_EQ(fromQt(search.text()), "") << "the job that was saved is not to be seen";
    EXPECT_EQ(window->next(), std::nullopt);
    for (QAction* action : window->findChildren<QAction*>()) {
        if (action->text() == "&English") action->trigger();
    }
    ASSERT_TRUE(window->next());
    EXPECT_EQ(window->next()->language, "EN");
    EXPECT_FALSE(window->isVisible());
}

TEST_F(PrisMainTest, ReadsAFileThatIsDraggedOntoAJob) {
    const fs::path other = world.folder / "ny & lista.txt";
    fs::copy_file(world.data / "Prisfiler" / "VERKTYG.TXT", other);
    fs::remove(world.data / "Prisfiler" / "VERKTYG.TXT");
    select("(EIO)");
    QMimeData dragged;
    dragged.setUrls({QUrl::fromLocalFile(toQt(other.string()))});
    const QPoint row = list().visualRect(list().model()->index(3, 0)).center();
    QDragEnterEvent enter(row, Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list().viewport(), &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop(row, Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list().viewport(), &drop);
    const auto menu = [] { return dynamic_cast<QMenu*>(QApplication::activePopupWidget()); };
    QTimer chooses;
    QObject::connect(&chooses, &QTimer::timeout, [&] {
        if (menu() == nullptr) return;
        chooses.stop();
        EXPECT_EQ(fromQt(menu()->actions()[1]->text()), "&Utför med filen ny && lista.txt...");
        menu()->setActiveAction(menu()->actions()[1]);
        QTest::keyClick(menu(), Qt::Key_Return);
    });
    chooses.start(20);
    const std::int64_t before = products();
    const WhenShown asked("PrisUtfö", confirm);
    world.boxPort.answers = {Answer::OK};
    EXPECT_TRUE(eventually([&] { return world.boxPort.shown.size() == 1; }));
    EXPECT_TRUE(asked.came());
    EXPECT_EQ(selectedJob(), kMaskJob);
    EXPECT_GT(products(), before);
    EXPECT_EQ(JobFile(world.data).find(kMaskJob)->priceFile, "Prisfiler\\VERKTYG.TXT") << "the job was changed";
}

TEST_F(PrisMainTest, EmptiesTheTablesOnlyBehindASecondYes) {
    select(kMaskJob);
    world.boxPort.answers = {Answer::No, Answer::Yes, Answer::OK};
    const std::string notOfTheFile = " WHERE Nummer NOT LIKE 'V%'";
    EXPECT_GT(products(notOfTheFile), 0);
    const WhenShown asked("PrisUtfö", [&](QDialog& form) {
        control<QCheckBox>(form, "Tabort").click();
        confirm(form);
        EXPECT_TRUE(form.isVisible()) << "No must lead back to the form";
        confirm(form);
    });
    press("Utför");
    EXPECT_TRUE(asked.came());
    EXPECT_TRUE(world.boxPort.shown.at(1).starts_with("Ta bort alla produkter|Alla produkter,"));
    EXPECT_EQ(products(notOfTheFile), 0);
}

TEST_F(PrisMainTest, AsksBeforeItReadsADoubtfulFile) {
    std::ofstream(world.data / "Prisfiler" / "VERKTYG.TXT", std::ios::binary) << "PK\3\4";
    select(kMaskJob);
    world.boxPort.answers = {Answer::No};
    const WhenShown asked("PrisUtfö", confirm);
    press("Utför");
    EXPECT_TRUE(world.boxPort.shown.back().starts_with("Prisfilen ser inte ut som väntat|"));
    EXPECT_TRUE(world.boxPort.shown.back().ends_with(world.texts.ModulText(text::look::kReadAllTheSame)));
    EXPECT_TRUE(world.boxPort.answers.empty());
}

TEST_F(PrisMainTest, ListsTheCouplingsOfATradeFormat) {
    select("(EIO)");
    const WhenShown asked("PrisUtFa", [&](QDialog& form) {
        EXPECT_EQ(control<QListWidget>(form, "LevFastLista").item(0)->text(), "GR\t-->\t1010\tHuvudlev.\tGRANÅSA EL");
        takePicture(form, "prisutfa-SE");
        QTest::mouseClick(&control<QPushButton>(form, "Avbryt"), Qt::LeftButton);
    });
    press("Utför");
    EXPECT_TRUE(asked.came());
}

TEST_F(PrisMainTest, CancelsALongRun) {
    enlargePriceFile(1000);
    select(kMaskJob);
    const std::int64_t before = products();
    runAndWhen("Lästa poster: ", [&](const QString&) {
        EXPECT_EQ(window->focusWidget(), &button("Avbryt"));
        takePicture(*window, "run-SE");
        QTest::keyClick(&button("Avbryt"), Qt::Key_Space);
    });
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(button("Avbryt").isVisible());

    select("Bruknäs skruv och beslag");
    const WhenShown again("PrisUtfö", confirm);
    world.boxPort.answers = {Answer::OK};
    press("Utför");
    EXPECT_GT(products(), before + 25) << "what was cancelled cancels the next run";
}

TEST_F(PrisMainTest, ClosingDuringARunCancelsItFirst) {
    enlargePriceFile(1000);
    select(kMaskJob);
    runAndWhen("Lästa poster: ", [&](const QString&) {
        window->close();
        EXPECT_TRUE(window->isVisible()) << "closed with tables open";
    });
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(world.state.sql.FtgDB) << "the company stayed open";
}

TEST_F(PrisMainTest, CancelEndsTheWaitForALockedCompany) {
    const auto other = openFileDatabase(world.data / "FTG1.mdb", {});
    other->begin();
    other->execute("UPDATE Syinställningar SET Produktnummer = '1'");
    select(kMaskJob);
    runAndWhen("Väntar på att ett annat program", [&](const QString&) { press("Avbryt"); });
    EXPECT_EQ(world.boxPort.shown, std::vector<std::string>()) << "a wait that was ended is no failure";
    EXPECT_FALSE(button("Avbryt").isVisible());
    EXPECT_FALSE(world.state.sql.FtgDB) << "the company stayed open";
}

TEST_F(PrisMainTest, AJobToBeMendedIsOpenedFromTheRun) {
    Job job = *JobFile(world.data).find(kMaskJob);
    job.mask = "finns inte";
    JobFile(world.data).save(job);
    window->FyllJobbLista(job.number);
    int opened = 0;
    world.program.showPrisStyr = [&](QWidget*, int JobbNr, bool) {
        opened = JobbNr;
        return std::nullopt;
    };
    world.boxPort.answers = {Answer::Yes};
    press("Utför");
    EXPECT_EQ(opened, job.number);
    EXPECT_EQ(enabledButtons(), "Ny Öppna TaBort Utför CmdRabattbrev Avsluta");
}

TEST(PrisMainEmpty, StartsWithoutAJobFileAndWithoutTexts) {
    FormWorld world;
    world.texts.StängSpråk();
    PrisMain window(world.program);
    window.show();
    EXPECT_EQ(window.windowTitle(), "Kolmera - Inläsning av prisfiler");
    auto& list = control<QTreeView>(window, "Lista");
    EXPECT_EQ(list.model()->rowCount(), 3) << "the trade formats";
    EXPECT_EQ(list.model()->headerData(0, Qt::Horizontal).toString(), "Inläsning");
}

template <typename Form>
void checkConfirmation(FormWorld& world, const std::string& picture) {
    const Confirmation confirmation{
        .captionSuffix = {},
        .runText = world.texts.FormulärSträngMed2(text::prismain::kConfirm, "A.TXT", "Demo"),
        .numbers = world.texts.ModulTextMed(text::look::kNumberForm, "12,50"),
        .warning = {},
        .emptyTablesSuffix = {},
        .emptyTablesEnabled = false,
        .couplings = {"GR\t-->\t1010\tHuvudlev.\tGRANÅSA EL"},
        .tradeFormat = std::is_same_v<Form, PrisUtFa>};
    Form form(world.program, confirmation, nullptr);
    form.show();
    expectTextsInBothLanguages(form, world);
    EXPECT_FALSE(control(form, "Tabort").isEnabled());
    takePicture(form, picture);
}

TEST(PrisMainTexts, InBothLanguages) {
    for (const std::string language : {"SE", "EN"}) {
        FormWorld world(Data::Demo, language);
        PrisMain window(world.program);
        window.show();
        expectTextsInBothLanguages(window, world);
        expectUniqueMnemonics(window);
        takePicture(window, "prismain-" + language);
        checkConfirmation<PrisUtfö>(world, "prisutfo-" + language);
        checkConfirmation<PrisUtFa>(world, "prisutfa-" + language);
    }
}

}  // namespace
}  // namespace kolmera
