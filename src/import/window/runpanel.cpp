#include "import/window/runpanel.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "import/window/prisutfa.h"
#include "import/window/prisutfo.h"
#include "lang/keys/look.h"
#include "lang/keys/prismain.h"
#include "ui/forms.h"
#include "ui/plaintooltip.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

// A run asks after every few records, thousands of times a second: painting and events have their turn this often. The
// answer to Cancel is as quick.
constexpr int kPauseBetweenEvents = 40;  ///< milliseconds
constexpr int kPermille = 1000;

}  // namespace

RunPanel::RunPanel(Program& program, QWidget* parent)
    : QWidget(parent),
      program_(program),
      meddelande_(new QLabel(this)),
      bar_(new QProgressBar(this)),
      avbryt_(new QPushButton(QStringLiteral("Avbryt"), this)) {
    meddelande_->setObjectName(QStringLiteral("Meddelande"));
    meddelande_->setTextFormat(Qt::PlainText);
    // A long command must not widen the window: the line shows as much as there is room for.
    meddelande_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    bar_->setObjectName(QStringLiteral("Förlopp"));
    bar_->setRange(0, kPermille);
    bar_->setAccessibleName(toQt(program.texts.FormulärSträng(text::prismain::kRecordsRead)));
    avbryt_->setObjectName(QStringLiteral("Avbryt"));
    connect(avbryt_, &QPushButton::clicked, this, [this] { cancel(); });

    auto* left = new QVBoxLayout;
    left->addWidget(meddelande_);
    left->addWidget(bar_);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(left, 1);
    layout->addWidget(avbryt_, 0, Qt::AlignBottom);
    hide();
}

Answer RunPanel::show(const Message& message) { return program_.boxes.port().show(message); }

void RunPanel::tell(const Message& message) { program_.boxes.VisaMeddelande(message); }

void RunPanel::hourglass(bool on) { program_.boxes.port().hourglass(on); }

void RunPanel::letEventsRun() {
    present();
    QCoreApplication::processEvents();  // with clicks: Cancel is one
    sinceEvents_.start();
}

void RunPanel::status(std::string_view text) {
    status_ = text;
    // Before run mode only waiting for a locked company reports itself; it can be cancelled too.
    if (isHidden()) runMode(true);
}

void RunPanel::begin() {
    cancel_ = false;
    seconds_ = 0;
    running_.invalidate();
}

void RunPanel::runMode(bool on) {
    constexpr double kMilliseconds = 1000;
    if (running_.isValid() && isVisible()) seconds_ += static_cast<double>(running_.elapsed()) / kMilliseconds;
    setVisible(on);
    pace_.begin();
    running_.start();
    if (on) avbryt_->setFocus();
    present();
    if (onRunMode) onRunMode();
}

bool RunPanel::cancelled() {
    if (!sinceEvents_.isValid() || sinceEvents_.elapsed() >= kPauseBetweenEvents) letEventsRun();
    return cancel_;
}

ConfirmationAnswer RunPanel::confirm(const Confirmation& confirmation) {
    return confirmation.tradeFormat ? answerOf<PrisUtFa>(confirmation) : answerOf<PrisUtfö>(confirmation);
}

bool RunPanel::readsDoubtful(const DoubtfulFile& file) {
    const std::string question = program_.texts.ModulText(text::look::kReadAllTheSame);
    return program_.boxes.MeddelandeJaNejNej(file.text + "\r\n\r\n" + question, file.title) == Answer::Yes;
}

template <typename Form>
ConfirmationAnswer RunPanel::answerOf(const Confirmation& confirmation) {
    Form form(program_, confirmation, window());
    form.propose(std::exchange(proposed_, false));
    VisaFormulär(program_, form, true);
    previewWish_ = form.previewWish();
    return form.answer();
}

void RunPanel::progress(std::uint64_t position, std::uint64_t size, std::int64_t records) {
    pace_.at(position, size, records, RunPace::Time(running_.isValid() ? running_.elapsed() : 0));
}

void RunPanel::present() {
    const QString text = toQt(status_);
    meddelande_->setText(meddelande_->fontMetrics().elidedText(text, Qt::ElideMiddle, meddelande_->width()));
    meddelande_->setToolTip(meddelande_->text() == text ? QString() : plainToolTip(text));
    // Without an end while there is none to be told: the bar shows that the program is at it.
    bar_->setRange(0, pace_.unknown() ? 0 : kPermille);
    if (pace_.unknown()) return;
    bar_->setValue(static_cast<int>(pace_.done() * kPermille));
    bar_->setFormat(toQt(pace_.text(program_.texts, program_.state.locale)));
}

}  // namespace kolmera
