#include "history/window/excerptwindow.h"

#include <fmt/format.h>

#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTextBlock>
#include <QVBoxLayout>

#include "lang/keys/changes.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

/// What has to be said of the file; empty for one that is as the run read it.
std::string remarkOn(LanguageTexts& texts, FileExcerpt::File file) {
    switch (file) {
        case FileExcerpt::File::Same:
            return {};
        case FileExcerpt::File::Changed:
            return texts.ModulText(text::changes::kFileChanged);
        case FileExcerpt::File::Shorter:
            return texts.ModulText(text::changes::kFileShorter);
        default:
            return texts.ModulText(text::changes::kFileMissing);
    }
}

}  // namespace

ExcerptWindow::ExcerptWindow(Program& program, RecordedPriceFile& file, PlaceOf placeOf,
                             std::vector<std::int64_t> records, std::size_t first, QWidget* parent)
    : QDialog(parent),
      program_(program),
      file_(file),
      placeOf_(std::move(placeOf)),
      records_(std::move(records)),
      path_(named(new QLabel(toQt(file.recorded().path), this), "Fil")),
      remark_(named(new QLabel(this), "Anmärkning")),
      count_(named(new QLabel(this), "Antal")),
      text_(named(new QPlainTextEdit(this), "Text")) {
    constexpr int kLetters = 110, kLines = 28;
    setObjectName(QStringLiteral("ExcerptWindow"));
    path_->setTextFormat(Qt::PlainText);
    path_->setWordWrap(true);
    remark_->setWordWrap(true);
    text_->setReadOnly(true);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
    before_ = button(*this, "Föregående", "&Föregående");
    next_ = button(*this, "Nästa", "&Nästa");
    close_ = button(*this, "Stäng", "S&täng");
    connect(before_, &QPushButton::clicked, this, [this] { show(at_ - 1); });
    connect(next_, &QPushButton::clicked, this, [this] { show(at_ + 1); });
    connect(close_, &QPushButton::clicked, this, [this] { reject(); });
    for (QWidget* each : std::initializer_list<QWidget*>{before_, next_, count_}) each->setVisible(records_.size() > 1);
    layOut();
    loadForm(program, *this);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QSize size(kLetters * fontMetrics().averageCharWidth(), kLines * fontMetrics().lineSpacing());
    resize(size.boundedTo(screen()->availableSize() - QSize(2, 4) * fontMetrics().averageCharWidth()));
    show(first);
    text_->setFocus();
}

void ExcerptWindow::layOut() {
    auto* buttons = new QHBoxLayout;
    for (QWidget* each : std::initializer_list<QWidget*>{before_, next_, count_}) buttons->addWidget(each);
    buttons->addStretch(1);
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(path_);
    layout->addWidget(remark_);
    layout->addWidget(text_, 1);
    layout->addLayout(buttons);
}

void ExcerptWindow::show(std::size_t at) {
    at_ = at;
    const std::int64_t record = records_.at(at);
    setWindowTitle(toQt(program_.texts.ModulTextMed(text::changes::kExcerptTitle, std::to_string(record))));
    text_->setAccessibleName(windowTitle());
    count_->setText(toQt(fmt::format("{} / {}", at + 1, records_.size())));
    before_->setEnabled(at > 0);
    next_->setEnabled(at + 1 < records_.size());
    std::string remark = program_.texts.ModulText(text::changes::kPlaceUnknown);
    FileExcerpt excerpt;
    if (const std::optional<RecordPlace> place = placeOf_(record)) {
        const Hourglass looking(program_.boxes.port());
        excerpt = file_.excerpt(*place);
        remark = remarkOn(program_.texts, excerpt.file);
    }
    remark_->setText(toQt(remark));
    remark_->setVisible(!remark.empty());
    showMarked(excerpt);
}

/// Shows the record between what surrounds it, in the colours of a selection, and puts the cursor before it.
void ExcerptWindow::showMarked(const FileExcerpt& excerpt) {
    text_->setPlainText(toQt(excerpt.before + excerpt.record + excerpt.after));
    const auto start = static_cast<int>(toQt(excerpt.before).size());
    QTextCursor record(text_->document());
    record.setPosition(start);
    record.setPosition(start + static_cast<int>(toQt(excerpt.record).size()), QTextCursor::KeepAnchor);
    QTextEdit::ExtraSelection mark;
    mark.cursor = record;
    mark.format.setBackground(text_->palette().highlight());
    mark.format.setForeground(text_->palette().highlightedText());
    text_->setExtraSelections({mark});
    record.setPosition(start);
    text_->setTextCursor(record);
    QMetaObject::invokeMethod(
        text_, [this] { text_->centerCursor(); }, Qt::QueuedConnection);
}

}  // namespace kolmera
