#include "import/window/confirmationform.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "history/runfolder.h"
#include "import/window/jobicons.h"
#include "lang/keys/prismain.h"
#include "platform/lettercase.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

QString withLineFeeds(const std::string& text) { return toQt(text).replace("\r\n", "\n").trimmed(); }

QLabel* iconLabel(QWidget& form, bool tradeFormat) {
    const int size = form.style()->pixelMetric(QStyle::PM_LargeIconSize);
    auto* label = new QLabel(&form);
    label->setPixmap((tradeFormat ? tradeFormatJobIcon : maskJobIcon)(form.palette()).pixmap(size));
    label->setAlignment(Qt::AlignTop);
    return label;
}

QLabel* runTextLabel(QWidget& form, const Confirmation& confirmation) {
    constexpr int kLetters = 60;
    auto* label = new QLabel(withLineFeeds(confirmation.runText), &form);
    label->setObjectName(QStringLiteral("Ledtext"));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(kLetters * form.fontMetrics().averageCharWidth());
    return label;
}

QLabel* numbersLabel(QWidget& form, const Confirmation& confirmation) {
    const std::string warning = confirmation.warning.empty() ? "" : "\r\n\r\n" + confirmation.warning;
    auto* label = new QLabel(withLineFeeds(confirmation.numbers + warning), &form);
    label->setObjectName(QStringLiteral("Talform"));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

}  // namespace

ConfirmationForm::ConfirmationForm(Program& program, const char* name, const EmptyingQuestion& emptying,
                                   const Confirmation& confirmation, QWidget* parent)
    : QDialog(parent),
      program_(program),
      emptying_(emptying),
      contents_(new QVBoxLayout),
      tabort_(new QCheckBox(this)) {
    setObjectName(QString::fromUtf8(name));
    setWindowTitle(QStringLiteral("Utför :"));
    setWindowIcon((confirmation.tradeFormat ? tradeFormatJobIcon : maskJobIcon)(palette()));

    tabort_->setObjectName(QStringLiteral("Tabort"));
    tabort_->setText(QStringLiteral("Ta bort alla tidigare produkter och leverantörspriser i företaget"));
    tabort_->setEnabled(confirmation.emptyTablesEnabled);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* utför = buttons->addButton(QStringLiteral("&Utför"), QDialogButtonBox::AcceptRole);
    utför->setObjectName(QStringLiteral("Utför"));
    utför->setDefault(true);
    utför->setFocus();
    QPushButton* avbryt = buttons->addButton(QStringLiteral("&Avbryt"), QDialogButtonBox::RejectRole);
    avbryt->setObjectName(QStringLiteral("Avbryt"));
    QPushButton* preview = buttons->addButton(QStringLiteral("&Förhandsgranska..."), QDialogButtonBox::ActionRole);
    preview->setObjectName(QStringLiteral("Förhandsgranska"));
    preview->setAutoDefault(false);
    pressOnKey(*this, QKeySequence(Qt::Key_F5), *preview);
    connect(preview, &QPushButton::clicked, this, [this] {
        previewWish_ = tabort_->isChecked();
        reject();
    });
    connect(utför, &QPushButton::clicked, this, [this] { carryOut(); });
    connect(avbryt, &QPushButton::clicked, this, [this] { reject(); });

    auto* top = new QHBoxLayout;
    top->addWidget(iconLabel(*this, confirmation.tradeFormat));
    top->addWidget(runTextLabel(*this, confirmation), 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(numbersLabel(*this, confirmation));
    layout->addLayout(contents_, 1);
    layout->addWidget(tabort_);
    layout->addWidget(buttons);
}

void ConfirmationForm::load(const Confirmation& confirmation) {
    loadForm(program_, *this);
    setWindowTitle(windowTitle() + toQt(confirmation.captionSuffix));
    // A company's file name is no caption: an ampersand in it is one.
    tabort_->setText(tabort_->text() + toQt(confirmation.emptyTablesSuffix).replace("&", "&&"));
}

void ConfirmationForm::propose(bool emptyTables) {
    if (tabort_->isEnabled()) tabort_->setChecked(emptyTables);
}

void ConfirmationForm::carryOut() {
    LanguageTexts& texts = program_.texts;
    if (tabort_->isChecked()) {
        const RunFolder runs(program_.state.dataFolder());
        const std::string undoing = runs.takesRecords()
                                        ? texts.ModulText(text::prismain::kCanBeTakenBack)
                                        : texts.ModulTextMed(text::prismain::kCannotBeTakenBack, runs.path().string());
        if (program_.boxes.MeddelandeJaNejNej(texts.FormulärSträngMed1(emptying_.question, undoing),
                                              texts.FormulärSträng(emptying_.title)) != Answer::Yes) {
            return;
        }
        answer_.emptyTables = true;
    }
    answer_.confirmed = true;
    accept();
}

}  // namespace kolmera
