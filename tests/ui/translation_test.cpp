#include "ui/translation.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "lang/languagetexts.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

/// A form designed in Swedish, with texts for some of its controls.
class TranslationTest : public testing::Test {
  protected:
    TranslationTest() {
        folder.write("texts.tsv",
                     "key\tSE\tEN\n"
                     "SP_FRM_Blankett\tBlankett\tForm\n"
                     "SP_FRM_Blankett_Spara\t&Spara\t&Save<CRLF>\n"
                     "SP_FRM_Blankett_Spara_TT\tSparar\tSaves\n"
                     "SP_FRM_Blankett_Lbl_3\tEtikett\tLabel\n"
                     "SP_FRM_Blankett_Ram\tRam\tFrame\n"
                     "SP_FRM_Blankett_Val\tVal\tChoice\n"
                     "SP_FRM_Blankett_Tom\tTom\tEmpty\n"
                     "SP_FRM_Blankett_Namn\tNamn\tName\n"
                     "SP_FRM_Blankett_Namn_TT\tAnge namn\tEnter a name\n");
        buildLanguageDatabase(folder / "texts.tsv", folder / "DVLang.sys");
        texts.ÖppnaSpråk(folder.path(), {});
        form.setObjectName("Blankett");
        form.setWindowTitle("Blankett");
        for (QWidget* control :
             {static_cast<QWidget*>(&spara), static_cast<QWidget*>(&lbl), static_cast<QWidget*>(&ram),
              static_cast<QWidget*>(&tom), static_cast<QWidget*>(&namn), static_cast<QWidget*>(&okänd)}) {
            control->setParent(&form);
        }
        val.setParent(&ram);
        spara.setObjectName("Spara");
        spara.setToolTip("Sparar");
        lbl.setObjectName("Lbl_3");
        ram.setObjectName("Ram");
        val.setObjectName("Val");
        tom.setObjectName("Tom");
        namn.setObjectName("Namn");
        namn.setToolTip("Ange namn");
        okänd.setObjectName("Okänd");
    }

    test::TemporaryFolder folder;
    LanguageTexts texts;
    QWidget form;
    QPushButton& spara = *new QPushButton("&Spara");
    QLabel& lbl = *new QLabel("Etikett");
    QGroupBox& ram = *new QGroupBox("Ram");
    QRadioButton& val = *new QRadioButton("Val");
    QLabel& tom = *new QLabel;
    QLineEdit& namn = *new QLineEdit("Anna");
    QPushButton& okänd = *new QPushButton("Okänd");
};

TEST_F(TranslationTest, PlacesTheTextsAsStored) {
    texts.InitSpråkOrd("EN");
    ÖversättFormulär(form, texts);
    EXPECT_EQ(form.windowTitle(), "Form");
    EXPECT_EQ(spara.text(), "&Save<CRLF>") << "markers stay";
    EXPECT_EQ(spara.toolTip(), "Saves");
    EXPECT_EQ(lbl.text(), "Label") << "member 3 of a control array";
    EXPECT_EQ(ram.title(), "Frame");
    EXPECT_EQ(val.text(), "Choice") << "a control in a frame";
    EXPECT_EQ(tom.text(), "") << "a control without a caption gets none";
    EXPECT_EQ(namn.text(), "Anna") << "a text box keeps its contents";
    EXPECT_EQ(namn.toolTip(), "Enter a name");
    EXPECT_EQ(okänd.text(), "Okänd") << "the designed caption without a key";
}

TEST_F(TranslationTest, SwedishFormsStayAsDesigned) {
    texts.InitSpråkOrd("SE");
    spara.setText("Designad");
    ÖversättFormulär(form, texts);
    EXPECT_EQ(spara.text(), "Designad");
    ÖversättFormulärAlltid(form, texts);
    EXPECT_EQ(spara.text(), "&Spara");
}

}  // namespace
}  // namespace kolmera
