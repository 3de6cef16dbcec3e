#include "import/window/templatefiles.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <nlohmann/json.hpp>

#include "definitions/couplingfile.h"
#include "platform/tsv.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

class TemplateFiles : public testing::Test {
  protected:
    Job job(const char* name) { return JobFile(world.data).find(name).value(); }
    void save(const Job& saved) {
        world.boxPort.answers = {Answer::OK};
        saveTemplate(world.program, saved, [&](const FileQuestion& question) {
            proposed = fromQt(question.path);
            return toQt(file);
        });
    }
    int open(const std::function<void(QDialog& form)>& act, bool tellsOf) {
        world.boxPort.answers.clear();
        if (tellsOf) world.boxPort.answers = {Answer::OK};
        const WhenShown shown("TemplateWindow", act);
        const int made = openTemplate(world.program, nullptr, [&](const FileQuestion&) { return toQt(file); });
        EXPECT_TRUE(shown.came());
        return made;
    }
    static QPushButton& ok(QDialog& form) { return control<QPushButton>(form, "OK"); }

    FormWorld world{Data::Demo};
    std::string file = (world.folder / "mall.json").string();
    std::string proposed;
};

TEST_F(TemplateFiles, AskBeforeTheyWriteOverAJob) {
    const Job shown = job("Smedhult verktyg");
    save(shown);
    EXPECT_EQ(proposed, (world.data / "Smedhult verktyg.json").string());
    const int copied = open(
        [&](QDialog& form) {
            expectTextsInBothLanguages(form, world);
            expectUniqueMnemonics(form);
            expectNamesForScreenReaders(form);
            takePicture(form, "templatewindow");
            EXPECT_FALSE(ok(form).isEnabled()) << "a job is written over unasked";
            auto& name = control<QLineEdit>(form, "Namn");
            name.selectAll();
            QTest::keyClicks(&name, "(EIO)");
            EXPECT_FALSE(ok(form).isEnabled()) << "a mask job takes the name of a trade format";
            name.selectAll();
            QTest::keyClicks(&name, "Kopia");
            EXPECT_TRUE(ok(form).isEnabled());
            ok(form).click();
        },
        true);
    EXPECT_EQ(JobFile(world.data).read(copied)->name, "Kopia");
    EXPECT_EQ(JobFile(world.data).read(copied)->company, shown.company);
    const int written = open(
        [&](QDialog& form) {
            control<QCheckBox>(form, "SkrivÖver").click();
            ok(form).click();
        },
        true);
    EXPECT_EQ(written, shown.number);
    EXPECT_EQ(open([](QDialog& form) { control<QPushButton>(form, "Avbryt").click(); }, false), 0);
}

TEST_F(TemplateFiles, LeaveOptionsThatOthersHaveChangedMeanwhile) {
    const Job shown = job("Smedhult verktyg");
    save(shown);
    const Limits others{.largestChange = 5};
    const int written = open(
        [&](QDialog& form) {
            JobOptionsFile(world.data).setLimits(shown.name, others);
            control<QCheckBox>(form, "SkrivÖver").click();
            ok(form).click();
        },
        true);
    EXPECT_EQ(written, 0);
    EXPECT_EQ(JobOptionsFile(world.data).limits(shown.name), others) << "written over unseen";
}

TEST_F(TemplateFiles, AskForASupplierWhoHasAnotherNumberHere) {
    save(job("Bruknäs höstlista"));
    auto made = nlohmann::ordered_json::parse(readWholeFile(file));
    const std::string number = made["job"]["supplier"];
    const std::string name = made["supplierNames"][number];
    made["job"]["supplier"] = "77";
    made["supplierNames"] = {{"77", name}};
    made["job"]["name"] = "Ny";
    world.folder.write("mall.json", made.dump());
    const int kept = open(
        [&](QDialog& form) {
            auto& field = control<QLineEdit>(form, "Leverantör");
            EXPECT_EQ(fromQt(field.text()), number) << "the supplier of the same name is not proposed";
            field.selectAll();
            QTest::keyClicks(&field, "4711");
            EXPECT_FALSE(ok(form).isEnabled()) << "a supplier who is not there";
            field.selectAll();
            QTest::keyClicks(&field, toQt(number));
            EXPECT_TRUE(ok(form).isEnabled());
            ok(form).click();
        },
        true);
    EXPECT_EQ(JobFile(world.data).read(kept)->supplier, number);
}

}  // namespace
}  // namespace kolmera
