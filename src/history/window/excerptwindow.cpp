#include "history/window/excerptwindow.h"

#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
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

/// Shows the record between what surrounds it, in the colours of a selection, and puts the cursor before it.
void showMarked(QPlainTextEdit& view, const FileExcerpt& excerpt) {
    view.setPlainText(toQt(excerpt.before + excerpt.record + excerpt.after));
    const auto start = static_cast<int>(toQt(excerpt.before).size());
    QTextCursor record(view.document());
    record.setPosition(start);
    record.setPosition(start + static_cast<int>(toQt(excerpt.record).size()), QTextCursor::KeepAnchor);
    QTextEdit::ExtraSelection mark;
    mark.cursor = record;
    mark.format.setBackground(view.palette().highlight());
    mark.format.setForeground(view.palette().highlightedText());
    view.setExtraSelections({mark});
    record.setPosition(start);
    view.setTextCursor(record);
}

}  // namespace

ExcerptWindow::ExcerptWindow(Program& program, const RecordedFile& file, std::int64_t record,
                             const FileExcerpt& excerpt, QWidget* parent)
    : QDialog(parent) {
    constexpr int kLetters = 110, kLines = 28;
    setObjectName(QStringLiteral("ExcerptWindow"));
    auto* path = named(new QLabel(toQt(file.path), this), "Fil");
    path->setTextFormat(Qt::PlainText);
    auto* remark = named(new QLabel(toQt(remarkOn(program.texts, excerpt.file)), this), "Anmärkning");
    remark->setWordWrap(true);
    remark->setVisible(!remark->text().isEmpty());
    auto* view = named(new QPlainTextEdit(this), "Text");
    view->setReadOnly(true);
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    view->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
    QPushButton* close = button(*this, "Stäng", "S&täng");
    connect(close, &QPushButton::clicked, this, [this] { reject(); });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(path);
    layout->addWidget(remark);
    layout->addWidget(view, 1);
    layout->addLayout(buttons);
    loadForm(program, *this);
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setWindowTitle(toQt(program.texts.ModulTextMed(text::changes::kExcerptTitle, std::to_string(record))));
    view->setAccessibleName(windowTitle());
    resize(kLetters * fontMetrics().averageCharWidth(), kLines * fontMetrics().lineSpacing());
    showMarked(*view, excerpt);
    QMetaObject::invokeMethod(
        view, [view] { view->centerCursor(); }, Qt::QueuedConnection);
    view->setFocus();
}

}  // namespace kolmera
