#include "import/window/resultpanel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "lang/keys/result.h"
#include "ui/controls.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

QString htmlOf(const RunResult& result) {
    QStringList cells;
    for (const RunResult::Figure& figure : result.figures) {
        const QString text = toQt(figure.label).toHtmlEscaped() + QStringLiteral(": <b>") +
                             toQt(figure.number).toHtmlEscaped() + QStringLiteral("</b>");
        // A figure is not broken over two lines.
        cells += QStringLiteral("<span style=\"white-space:nowrap\">%1</span>").arg(text);
    }
    return cells.join(QStringLiteral("&nbsp;&nbsp;&nbsp; "));
}

QPixmap outcomePicture(const QWidget& panel, const RunResult& result) {
    const QStyle& style = *panel.style();
    const auto icon = result.good ? QStyle::SP_MessageBoxInformation : QStyle::SP_MessageBoxWarning;
    return style.standardIcon(icon).pixmap(style.pixelMetric(QStyle::PM_LargeIconSize));
}

}  // namespace

ResultPanel::ResultPanel(Program& program, QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("Resultat"));
    setFrameShape(QFrame::StyledPanel);
    icon_ = new QLabel(this);
    heading_ = new QLabel(this);
    heading_->setTextFormat(Qt::PlainText);
    QFont bold = heading_->font();
    bold.setBold(true);
    heading_->setFont(bold);
    figures_ = new QLabel(this);
    figures_->setTextFormat(Qt::RichText);
    for (QLabel* text : {heading_, figures_}) {
        text->setWordWrap(true);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    changes_ = button(*this, "VisaÄndringar", "Visa än&dringar...");
    close_ = new QToolButton(this);
    close_->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    close_->setAutoRaise(true);
    close_->setFocusPolicy(Qt::TabFocus);
    close_->setToolTip(toQt(program.texts.ModulText(text::result::kClose)));
    close_->setAccessibleName(close_->toolTip());
    connect(changes_, &QPushButton::clicked, this, [this] { onShowChanges(); });
    connect(close_, &QToolButton::clicked, this, [this] { hide(); });

    auto* texts = new QVBoxLayout;
    texts->addWidget(heading_);
    texts->addWidget(figures_);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(icon_);
    layout->addLayout(texts, 1);
    layout->addWidget(changes_, 0, Qt::AlignVCenter);
    layout->addWidget(close_, 0, Qt::AlignTop);
    hide();
}

void ResultPanel::tell(const RunResult& result, bool recorded) {
    heading_->setText(toQt(result.heading));
    figures_->setText(htmlOf(result));
    changes_->setEnabled(recorded);
    icon_->setPixmap(outcomePicture(*this, result));
    setAccessibleName(toQt(result.line()));
    setVisible(!result.empty());
}

}  // namespace kolmera
